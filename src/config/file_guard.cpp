#include "config/file_guard.h"

#include <array>
#include <functional>
#include <mutex>
#include <string_view>

#include <zksupt/status.h>

namespace zksupt::config {
namespace {

// One mutex per stripe of paths: a path always maps to the same stripe, so
// the calls on one file are serialised, and no table has to grow or be freed.
// Readers are serialised too, as the per-file thread mutex of the file lock
// will do.
constexpr std::size_t kStripes = 64;
std::array<std::mutex, kStripes> stripes;

}  // namespace

FileGuard::FileGuard(const char *path, FileAccess /*access*/, int16_t lockWait) noexcept : status_(SM_STATUS_SUCCESS)
{
    std::mutex &stripe = stripes[std::hash<std::string_view>{}(path) % kStripes];
    if (lockWait == 1)
        stripe.lock();
    else if (!stripe.try_lock()) {
        status_ = SM_STATUS_TIMEOUT;
        return;
    }
    lock_ = &stripe;
}

FileGuard::~FileGuard()
{
    if (lock_ != nullptr)
        static_cast<std::mutex *>(lock_)->unlock();
}

}  // namespace zksupt::config
