// Exported entries of the named objects. The creators without "_s" supply
// their permission: -1 (mode 0664) with a name, 0 (0600) without.
#include <zksupt/ipc.h>

#include "ipc/critical_section.h"
#include "ipc/mutex.h"
#include "ipc/rw_lock.h"
#include "ipc/semaphore.h"

namespace ipc = zksupt::ipc;

namespace {

constexpr int32_t defaultPermission(const char *name) noexcept
{
    return name != nullptr ? -1 : 0;
}

}  // namespace

// clang-format off
extern "C" {

void *SMMutexCreate(const char *name) noexcept { return ipc::createMutex(name, defaultPermission(name)); }
void *SMMutexCreate_s(const char *name, int32_t permission) noexcept { return ipc::createMutex(name, permission); }
void *SMMutexOpen(const char *name) noexcept { return ipc::openMutex(name); }
int32_t SMMutexLock(void *mutex, int32_t timeout) noexcept { return ipc::lockMutex(mutex, timeout); }
int32_t SMMutexUnLock(void *mutex) noexcept { return ipc::unlockMutex(mutex); }
void SMMutexDestroy(void *mutex) noexcept { ipc::destroyMutex(mutex); }

void *SMSemaphoreCreate(const char *name, int32_t initialValue) noexcept { return ipc::createSemaphore(name, initialValue, defaultPermission(name)); }
void *SMSemaphoreCreate_s(const char *name, int32_t initialValue, int32_t permission) noexcept { return ipc::createSemaphore(name, initialValue, permission); }
void *SMSemaphoreOpen(const char *name) noexcept { return ipc::openSemaphore(name); }
int32_t SMSemaphoreAcquireWait(void *semaphore, int32_t timeout) noexcept { return ipc::acquireSemaphore(semaphore, timeout); }
int32_t SMSemaphoreRelease(void *semaphore, int32_t count, int32_t *previous) noexcept { return ipc::releaseSemaphore(semaphore, count, previous); }
void SMSemaphoreDestroy(void *semaphore) noexcept { ipc::destroySemaphore(semaphore); }

int32_t SMCriticalSectionExecute(SMCriticalSectionFunction function, void *argument, int32_t timeout) noexcept { return ipc::executeCritical(function, argument, timeout); }

void *SMRWLCreate(const char *name) noexcept { return ipc::createRwLock(name); }
int32_t SMRWLReadLockGet(void *rwLock, int32_t waitPeriod) noexcept { return ipc::getReadLock(rwLock, waitPeriod); }
int32_t SMRWLReadLockRelease(void *rwLock) noexcept { return ipc::releaseReadLock(rwLock); }
int32_t SMRWLWriteLockGet(void *rwLock, int32_t waitPeriod) noexcept { return ipc::getWriteLock(rwLock, waitPeriod); }
int32_t SMRWLWriteLockRelease(void *rwLock) noexcept { return ipc::releaseWriteLock(rwLock); }
void SMRWLDestroy(void *rwLock) noexcept { ipc::destroyRwLock(rwLock); }

}  // extern "C"
// clang-format on
