// Reader-writer locks: many readers or one writer, writers first. The
// counters live in the record, in the creating process; a named lock's
// guard mutex and gates are cross-process objects named by the record's key
// name. Both gates share that name, so they are one System V set and a post
// meant for writers can wake readers and the reverse: every waiter checks
// its condition again after waking.
#pragma once

#include <cstdint>

#include "ipc/mutex.h"
#include "ipc/semaphore.h"

namespace zksupt::ipc {

struct RwLockRecord {
    lock::ObjectHeader header;  // kind 5; the key name, or null
    void *guard;                // mutex guarding the counters
    void *readerGate;           // semaphore readers wait on
    void *writerGate;           // semaphore writers wait on
    int32_t activeReaders;
    int32_t waitingWriters;
    int32_t waitingReaders;
    uint16_t writerActive;
};

// SMRWLCreate: null name for an unnamed lock.
void *createRwLock(const char *name) noexcept;
// SMRWLReadLockGet / SMRWLWriteLockGet: wait until the lock is free for the
// reader (no writer active or waiting) or the writer (nobody active). The
// wait period only sets how often the condition is checked again. FAILURE
// when the guard fails or the library is being unloaded, LIMIT_REACHED when
// the waiting count is at its maximum.
int32_t getReadLock(void *rwLock, int32_t waitMs) noexcept;
int32_t getWriteLock(void *rwLock, int32_t waitMs) noexcept;
// SMRWLReadLockRelease / SMRWLWriteLockRelease: wake a waiting writer, else
// the waiting readers. A null record gives 0.
int32_t releaseReadLock(void *rwLock) noexcept;
int32_t releaseWriteLock(void *rwLock) noexcept;
// SMRWLDestroy: wakes the waiters, which then fail, and frees the lock.
void destroyRwLock(void *rwLock) noexcept;

}  // namespace zksupt::ipc
