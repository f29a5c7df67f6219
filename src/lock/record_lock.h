// Record locks on a whole lock file: the cross-process half of named mutexes
// and file locks. The kernel drops a process's record locks when the process
// ends, however it ends, so a killed holder never blocks anyone.
#pragma once

#include <fcntl.h>

#include <cstdint>

namespace zksupt::lock {

struct RecordLockResult {
    int32_t status;
    // The descriptor was not open: the caller may reopen the file and retry.
    bool badDescriptor;
};

// Locks the whole file behind fd with type F_RDLCK or F_WRLCK. Time-out -1
// blocks; otherwise each refusal is retried under the poll counter's rule
// and TIMEOUT ends the wait. Interruptions and deadlock reports retry at
// once; other errors give FAILURE.
RecordLockResult lockWholeFile(int fd, short type, int32_t timeoutMs) noexcept;

// Unlocks the whole file, retrying while interrupted.
void unlockWholeFile(int fd) noexcept;

}  // namespace zksupt::lock
