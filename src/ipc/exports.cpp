// Exported entries of the named objects. The creators without "_s" supply
// their permission: -1 (mode 0664) with a name, 0 (0600) without.
#include <zksupt/ipc.h>

#include "ipc/critical_section.h"
#include "ipc/event.h"
#include "ipc/mutex.h"
#include "ipc/rw_lock.h"
#include "ipc/semaphore.h"
#include "ipc/shared_memory.h"

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

void *SMSharedMemCreate(const char *name, uint32_t size) noexcept { return ipc::createSharedMemory(name, size, defaultPermission(name)); }
void *SMSharedMemCreate_s(const char *name, uint32_t size, int32_t permission) noexcept { return ipc::createSharedMemory(name, size, permission); }
void *SMSharedMemOpen(const char *name) noexcept { return ipc::openSharedMemory(name); }
void *SMSharedMemGetAddressPtr(void *sharedMemory) noexcept { return ipc::sharedMemoryAddress(sharedMemory); }
void SMSharedMemFree(void *sharedMemory) noexcept { ipc::freeSharedMemory(sharedMemory); }

void *SMEventCreate(const char *name, int32_t manualReset, int32_t initiallySignalled) noexcept { return ipc::createEvent(name, manualReset, initiallySignalled, defaultPermission(name)); }
void *SMEventCreate_s(const char *name, int32_t manualReset, int32_t initiallySignalled, int32_t permission) noexcept { return ipc::createEvent(name, manualReset, initiallySignalled, permission); }
void *SMEventOpen(const char *name) noexcept { return ipc::openEvent(name); }
int32_t SMEventSet(void *event) noexcept { return ipc::setEvent(event); }
int32_t SMEventReset(void *event) noexcept { return ipc::resetEvent(event); }
int32_t SMEventPulse(void *event) noexcept { return ipc::pulseEvent(event); }
int32_t SMEventWait(void *event, int32_t timeout) noexcept { return ipc::waitEvent(event, timeout); }
void SMEventDestroy(void *event) noexcept { ipc::destroyEvent(event); }

}  // extern "C"
// clang-format on
