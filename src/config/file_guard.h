// The lock an INI or property file call holds on its data file from its
// first look at the file to its last: shared for reads, exclusive for
// writes. This first form serialises only the threads of this process; the
// cross-process file lock takes its place here, and nowhere else.
#pragma once

#include <cstdint>

namespace zksupt::config {

enum class FileAccess { read, write };

class FileGuard {
  public:
    // Takes the lock of path. lockWait 1 waits as long as it takes; any
    // other value tries once.
    FileGuard(const char *path, FileAccess access, int16_t lockWait) noexcept;
    ~FileGuard();
    FileGuard(const FileGuard &) = delete;
    FileGuard &operator=(const FileGuard &) = delete;

    // 0 when the lock is held, else the status that refused it (3 when a
    // single try found it taken).
    int32_t status() const noexcept { return status_; }

  private:
    void *lock_ = nullptr;
    int32_t status_;
};

}  // namespace zksupt::config
