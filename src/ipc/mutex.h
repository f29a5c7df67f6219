// Mutexes. An unnamed mutex is an in-process mutex; a named one pairs an
// in-process mutex (the process's threads) with a record lock on a lock file
// in the IPC directory (the processes), since record locks belong to a
// process, not a thread.
#pragma once

#include <cstdint>

#include "lock/object_record.h"
#include "sync/mutex.h"

namespace zksupt::ipc {

struct MutexRecord {
    lock::ObjectHeader header;  // kind 1; the lock file path, or null
    int32_t fd;                 // the lock file, -1 when unnamed
    sync::Mutex *threadMutex;   // on the heap
    uint16_t lockType;          // 1: the lock file is writable and locked exclusively; 0: shared
};

// SMMutexCreate_s: null name for an unnamed mutex; a named one creates its
// lock file with the mode of permission when missing.
void *createMutex(const char *name, int32_t permission) noexcept;
// SMMutexOpen: a named mutex whose lock file exists.
void *openMutex(const char *name) noexcept;
// SMMutexLock: -1 waits without limit; otherwise the poll counter's rule,
// for the thread mutex and then, afresh, for the record lock.
int32_t lockMutex(void *mutex, int32_t timeoutMs) noexcept;
// SMMutexUnLock: 0 whatever the unlock calls report.
int32_t unlockMutex(void *mutex) noexcept;
// SMMutexDestroy: the lock file stays on disk.
void destroyMutex(void *mutex) noexcept;

}  // namespace zksupt::ipc
