#include "ipc/rw_lock.h"

#include <sched.h>

#include <climits>
#include <cstdlib>

#include <zksupt/status.h>

#include "frame/lifecycle.h"

namespace zksupt::ipc {
namespace {

// What differs between readers and writers.
struct Side {
    int32_t RwLockRecord::*waiting;
    void *RwLockRecord::*gate;
    bool (*mayEnter)(const RwLockRecord &);
    void (*enter)(RwLockRecord &);
};

// Waiting writers keep new readers out: writers come first.
constexpr Side kReader{&RwLockRecord::waitingReaders, &RwLockRecord::readerGate,
                       [](const RwLockRecord &lock) { return lock.writerActive == 0 && lock.waitingWriters == 0; },
                       [](RwLockRecord &lock) { ++lock.activeReaders; }};
constexpr Side kWriter{&RwLockRecord::waitingWriters, &RwLockRecord::writerGate,
                       [](const RwLockRecord &lock) { return lock.activeReaders == 0 && lock.writerActive == 0; },
                       [](RwLockRecord &lock) { lock.writerActive = 1; }};

int32_t getLock(void *handle, int32_t waitMs, const Side &side) noexcept
{
    int32_t status = SM_STATUS_SUCCESS;
    RwLockRecord *lock = lock::recordOf<RwLockRecord>(handle, lock::kRwLockKind, status);
    if (lock == nullptr)
        return status;
    if (lockMutex(lock->guard, -1) != SM_STATUS_SUCCESS)
        return SM_STATUS_FAILURE;
    int32_t &waiting = lock->*side.waiting;
    if (waiting == INT32_MAX) {
        unlockMutex(lock->guard);
        return SM_STATUS_LIMIT_REACHED;
    }
    ++waiting;
    for (;;) {
        if (side.mayEnter(*lock)) {
            side.enter(*lock);
            --waiting;
            unlockMutex(lock->guard);
            return SM_STATUS_SUCCESS;
        }
        unlockMutex(lock->guard);
        acquireSemaphore(lock->*side.gate, waitMs);  // a wake-up or the period's end: look again
        if (lockMutex(lock->guard, -1) != SM_STATUS_SUCCESS)
            return SM_STATUS_FAILURE;  // destroyed meanwhile; the count stays as it is
        if (frame::unloading() == 1) {
            unlockMutex(lock->guard);
            return SM_STATUS_FAILURE;
        }
    }
}

// Called with the guard held; gives it up. A waiting writer is woken first,
// else every waiting reader (and two more posts, for good measure).
int32_t wakeNext(RwLockRecord &lock) noexcept
{
    const int32_t writers = lock.waitingWriters;
    const int32_t readers = lock.waitingReaders;
    if (writers > 0) {
        unlockMutex(lock.guard);
        return releaseSemaphore(lock.writerGate, 1, nullptr);
    }
    if (readers > 0) {
        unlockMutex(lock.guard);
        return releaseSemaphore(lock.readerGate, readers + 2, nullptr);
    }
    return unlockMutex(lock.guard);
}

int32_t releaseLock(void *handle, void (*leave)(RwLockRecord &)) noexcept
{
    if (handle == nullptr)
        return SM_STATUS_SUCCESS;
    int32_t status = SM_STATUS_SUCCESS;
    RwLockRecord *lock = lock::recordOf<RwLockRecord>(handle, lock::kRwLockKind, status);
    if (lock == nullptr)
        return status;
    status = lockMutex(lock->guard, -1);
    if (status != SM_STATUS_SUCCESS)
        return status;
    leave(*lock);
    return wakeNext(*lock);
}

// Wakes count + 2 waiters of a gate with the guard given up meanwhile.
void wakeAll(void *guard, void *gate, int32_t count) noexcept
{
    if (count <= 0)
        return;
    unlockMutex(guard);
    releaseSemaphore(gate, count + 2, nullptr);
    ::sched_yield();
    lockMutex(guard, -1);
}

}  // namespace

void *createRwLock(const char *name) noexcept
{
    auto lock = lock::buildRecord<RwLockRecord>(name, lock::kRwLockKind);
    if (!lock)
        return nullptr;
    // The guard and both gates carry the lock's own key name.
    const char *objectName = lock->header.name;
    lock->guard = createMutex(objectName, 0);
    lock->readerGate = lock->guard != nullptr ? createSemaphore(objectName, 0, 0) : nullptr;
    lock->writerGate = lock->readerGate != nullptr ? createSemaphore(objectName, 0, 0) : nullptr;
    if (lock->writerGate == nullptr) {
        destroySemaphore(lock->readerGate);
        destroyMutex(lock->guard);
        return nullptr;
    }
    return lock.release();
}

int32_t getReadLock(void *rwLock, int32_t waitMs) noexcept
{
    return getLock(rwLock, waitMs, kReader);
}

int32_t getWriteLock(void *rwLock, int32_t waitMs) noexcept
{
    return getLock(rwLock, waitMs, kWriter);
}

int32_t releaseReadLock(void *rwLock) noexcept
{
    return releaseLock(rwLock, [](RwLockRecord &lock) { --lock.activeReaders; });
}

int32_t releaseWriteLock(void *rwLock) noexcept
{
    return releaseLock(rwLock, [](RwLockRecord &lock) { lock.writerActive = 0; });
}

void destroyRwLock(void *rwLock) noexcept
{
    int32_t status = SM_STATUS_SUCCESS;
    lock::OwnedRecord<RwLockRecord> lock(lock::recordOf<RwLockRecord>(rwLock, lock::kRwLockKind, status));
    if (!lock)
        return;
    void *guard = lock->guard;
    lockMutex(guard, -1);
    lock->guard = nullptr;  // waiters that wake now fail on it
    wakeAll(guard, lock->writerGate, lock->waitingWriters);
    wakeAll(guard, lock->readerGate, lock->waitingReaders);
    destroySemaphore(lock->readerGate);
    destroySemaphore(lock->writerGate);
    unlockMutex(guard);
    destroyMutex(guard);
    ::sched_yield();
}

}  // namespace zksupt::ipc
