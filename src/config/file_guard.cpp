#include "config/file_guard.h"

namespace zksupt::config {

FileGuard::FileGuard(const char *path, FileAccess access, int16_t lockWait) noexcept
    : hold_(path, access == FileAccess::read ? lock::kShared : lock::kExclusive, lockWait)
{
}

}  // namespace zksupt::config
