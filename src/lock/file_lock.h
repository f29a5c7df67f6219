// File locks: how the library guards a data file (an INI file, the key file)
// against every process of the suite. Each data-file path has one lock
// object per process, kept in a process-wide table until the library stops
// (module 1), so the pointers handed out stay valid. The object pairs an
// unnamed mutex, for the process's threads, with a record lock on a lock file
// named by the digest of the data-file path in the IPC directory, for the
// processes.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "lock/object_name.h"
#include "sync/mutex.h"

namespace zksupt::lock {

enum FileLockMode : uint32_t {
    kNotHeld = 0,
    kShared = 1,
    kExclusive = 2,
};

struct FileLock {
    FileLock(std::string_view lock, std::string_view data) : lockPath(lock), dataPath(data) {}
    ~FileLock();
    FileLock(const FileLock &) = delete;
    FileLock &operator=(const FileLock &) = delete;

    uint32_t kind = kFileLockKind;  // first, as in every object
    std::string lockPath;
    std::string dataPath;
    // Held by the thread that holds the lock, from acquire to release.
    sync::Mutex threadMutex;
    uint32_t mode = kNotHeld;
    int fd = -1;  // the lock file while held
};

// Module 1's table: start makes it ready, stop frees every object.
bool startFileLocks() noexcept;
void stopFileLocks() noexcept;

// The lock object of a data file, made on first use (with its lock file,
// whose permission bits follow the data file's). Null when the table is not
// started, the lock file's name does not fit, or memory runs out.
FileLock *getFileLock(const char *dataPath) noexcept;

// Takes the lock shared (1) or exclusive (2). wait 1 waits without limit;
// anything else tries once. SUCCESS, TIMEOUT (a single try found it taken),
// ACCESS_DENIED (the lock file may not be opened), INVALID_PARAMETER (null
// object, another kind or a bad mode), or FAILURE.
int32_t acquireFileLock(FileLock *lock, uint32_t mode, int32_t wait) noexcept;
// Gives the lock up; after an exclusive hold the lock file's permission
// bits follow the data file's again. INVALID_PARAMETER for null or another
// kind, else SUCCESS.
int32_t releaseFileLock(FileLock *lock) noexcept;
// Objects stay in the table until the library stops; freeing one does nothing.
inline void freeFileLock(FileLock *) noexcept {}

// Holds the file lock of a data file for a scope.
class FileLockHold {
  public:
    FileLockHold(const char *dataPath, uint32_t mode, int32_t wait) noexcept;
    ~FileLockHold();
    FileLockHold(const FileLockHold &) = delete;
    FileLockHold &operator=(const FileLockHold &) = delete;

    // SUCCESS while held; NO_MEMORY when no lock object could be had; else
    // what acquiring answered.
    int32_t status() const noexcept { return status_; }

  private:
    FileLock *lock_ = nullptr;
    int32_t status_;
};

}  // namespace zksupt::lock
