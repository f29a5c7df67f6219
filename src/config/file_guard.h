// The lock an INI or property file call holds on its data file from its
// first look at the file to its last: the cross-process file lock, shared
// for reads, exclusive for writes.
#pragma once

#include <cstdint>

#include "lock/file_lock.h"

namespace zksupt::config {

enum class FileAccess { read, write };

class FileGuard {
  public:
    // Takes the lock of path. lockWait 1 waits as long as it takes; any
    // other value tries once.
    FileGuard(const char *path, FileAccess access, int16_t lockWait) noexcept;

    // 0 when the lock is held, else the status that refused it: 3 when a
    // single try found it taken, 0x110 when no lock object could be had.
    int32_t status() const noexcept { return hold_.status(); }

  private:
    lock::FileLockHold hold_;
};

}  // namespace zksupt::config
