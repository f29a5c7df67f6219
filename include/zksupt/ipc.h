/*
 * Named synchronisation objects: mutexes, semaphores, critical sections,
 * shared memory, events and reader-writer locks. A name (any UTF-8 text) makes an object that every
 * process naming it shares; a null name makes one private to the process.
 * Handles are records that begin with their kind: a null handle gives
 * 0x10F, a handle of another kind 0x101. Time-outs are in milliseconds,
 * -1 waits without limit and 0 tries once. A permission is -1 (mode 0664),
 * 0 (0600) or three packed nibbles, owner in bits 24-27, group 16-19, others
 * 8-11, each bit 0 all, bit 1 read, bit 2 write, bit 3 execute.
 */
#ifndef ZKSUPT_IPC_H
#define ZKSUPT_IPC_H

#include <zksupt/types.h>

ZKSUPT_BEGIN_DECLS

/* A function run by SMCriticalSectionExecute. */
typedef int32_t (*SMCriticalSectionFunction)(void *argument);

/* A mutex: named (its lock file made with mode 0664) or unnamed (null name, 0600); null on failure. */
ZKSUPT_API void *SMMutexCreate(const char *name) ZKSUPT_NOEXCEPT;
/* A mutex whose lock file, when made now, gets the mode of permission; null on failure. */
ZKSUPT_API void *SMMutexCreate_s(const char *name, int32_t permission) ZKSUPT_NOEXCEPT;
/* A named mutex whose lock file exists; null otherwise. */
ZKSUPT_API void *SMMutexOpen(const char *name) ZKSUPT_NOEXCEPT;
/* Locks a mutex: 0, 0x3 when the time-out ran out, -1 on a system failure. */
ZKSUPT_API int32_t SMMutexLock(void *mutex, int32_t timeout) ZKSUPT_NOEXCEPT;
/* Unlocks a mutex this thread holds: 0. */
ZKSUPT_API int32_t SMMutexUnLock(void *mutex) ZKSUPT_NOEXCEPT;
/* Frees a mutex handle (a named mutex's lock file stays); null and other kinds are ignored. */
ZKSUPT_API void SMMutexDestroy(void *mutex) ZKSUPT_NOEXCEPT;

/* A semaphore with initial value 0-32767, named (mode 0664) or unnamed; an existing named one keeps its value. */
ZKSUPT_API void *SMSemaphoreCreate(const char *name, int32_t initialValue) ZKSUPT_NOEXCEPT;
/* As SMSemaphoreCreate, a new named semaphore getting the mode of permission. */
ZKSUPT_API void *SMSemaphoreCreate_s(const char *name, int32_t initialValue, int32_t permission) ZKSUPT_NOEXCEPT;
/* The existing named semaphore of name; null when there is none. */
ZKSUPT_API void *SMSemaphoreOpen(const char *name) ZKSUPT_NOEXCEPT;
/* Takes one unit: 0, 0x3 when the time-out ran out, -1 on a system failure. */
ZKSUPT_API int32_t SMSemaphoreAcquireWait(void *semaphore, int32_t timeout) ZKSUPT_NOEXCEPT;
/* Adds count (1-32767) units; previous (may be null) receives the value before. */
ZKSUPT_API int32_t SMSemaphoreRelease(void *semaphore, int32_t count, int32_t *previous) ZKSUPT_NOEXCEPT;
/* Frees a handle; the creator's handle also removes the semaphore. Null and other kinds are ignored. */
ZKSUPT_API void SMSemaphoreDestroy(void *semaphore) ZKSUPT_NOEXCEPT;

/* Runs function(argument), one thread at a time per function: 0 once run; only timeout -1 is served, else 0x10F. */
ZKSUPT_API int32_t SMCriticalSectionExecute(SMCriticalSectionFunction function, void *argument,
                                            int32_t timeout) ZKSUPT_NOEXCEPT;

/* A shared-memory segment of size bytes (mode 0664); null for a null name or while its creator lives. */
ZKSUPT_API void *SMSharedMemCreate(const char *name, uint32_t size) ZKSUPT_NOEXCEPT;
/* As SMSharedMemCreate with the mode of permission; a segment whose creator ended is taken over as it is. */
ZKSUPT_API void *SMSharedMemCreate_s(const char *name, uint32_t size, int32_t permission) ZKSUPT_NOEXCEPT;
/* The segment of name while its creator lives; null otherwise. */
ZKSUPT_API void *SMSharedMemOpen(const char *name) ZKSUPT_NOEXCEPT;
/* Where the segment is attached in this process; null for a null handle or another kind. */
ZKSUPT_API void *SMSharedMemGetAddressPtr(void *sharedMemory) ZKSUPT_NOEXCEPT;
/* Detaches; the creator's handle also removes the segment. Null and other kinds are ignored. */
ZKSUPT_API void SMSharedMemFree(void *sharedMemory) ZKSUPT_NOEXCEPT;

/* An event, manual reset when manualReset is 1, signalled when initiallySignalled is 1; named (0664) or unnamed. */
ZKSUPT_API void *SMEventCreate(const char *name, int32_t manualReset, int32_t initiallySignalled) ZKSUPT_NOEXCEPT;
/* As SMEventCreate, a new named event getting the mode of permission. */
ZKSUPT_API void *SMEventCreate_s(const char *name, int32_t manualReset, int32_t initiallySignalled,
                                 int32_t permission) ZKSUPT_NOEXCEPT;
/* The existing named event of name, with the reset mode it was created with; null when there is none. */
ZKSUPT_API void *SMEventOpen(const char *name) ZKSUPT_NOEXCEPT;
/* Signals the event (each set adds one to its value): 0, or -1 on a system failure. */
ZKSUPT_API int32_t SMEventSet(void *event) ZKSUPT_NOEXCEPT;
/* Makes the event not signalled: 0, or -1 on a system failure. */
ZKSUPT_API int32_t SMEventReset(void *event) ZKSUPT_NOEXCEPT;
/* Lets the waiters already blocked through, then leaves the event not signalled: 0. */
ZKSUPT_API int32_t SMEventPulse(void *event) ZKSUPT_NOEXCEPT;
/* Waits until signalled (automatic reset then clears it): 0, 0x3 when the time-out ran out, -1 on failure. */
ZKSUPT_API int32_t SMEventWait(void *event, int32_t timeout) ZKSUPT_NOEXCEPT;
/* Frees a handle; the creator's handle also removes the event. Null and other kinds are ignored. */
ZKSUPT_API void SMEventDestroy(void *event) ZKSUPT_NOEXCEPT;

/* A reader-writer lock, writers first (counters kept in the creating process); null on failure. */
ZKSUPT_API void *SMRWLCreate(const char *name) ZKSUPT_NOEXCEPT;
/* Waits for a read lock, looking again every waitPeriod ms: 0, -1 on failure or unload, 0x13 at the limit. */
ZKSUPT_API int32_t SMRWLReadLockGet(void *rwLock, int32_t waitPeriod) ZKSUPT_NOEXCEPT;
/* Gives a read lock back, waking a waiting writer first, else the waiting readers. */
ZKSUPT_API int32_t SMRWLReadLockRelease(void *rwLock) ZKSUPT_NOEXCEPT;
/* Waits for the write lock, looking again every waitPeriod ms: 0, -1 on failure or unload, 0x13 at the limit. */
ZKSUPT_API int32_t SMRWLWriteLockGet(void *rwLock, int32_t waitPeriod) ZKSUPT_NOEXCEPT;
/* Gives the write lock back, waking a waiting writer first, else the waiting readers. */
ZKSUPT_API int32_t SMRWLWriteLockRelease(void *rwLock) ZKSUPT_NOEXCEPT;
/* Wakes any waiters (which then fail) and frees the lock; null and other kinds are ignored. */
ZKSUPT_API void SMRWLDestroy(void *rwLock) ZKSUPT_NOEXCEPT;

ZKSUPT_END_DECLS

#endif /* ZKSUPT_IPC_H */
