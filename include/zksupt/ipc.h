/**
 * @file
 * Named synchronisation objects: mutexes, semaphores, critical sections, shared memory, events and reader-writer
 * locks.
 *
 * A name (any UTF-8 text) makes an object that every process naming it shares; a null name makes one private to the
 * process. The creators return an opaque handle, null on any failure; handles are records that begin with their
 * kind, so a null handle gives #SM_STATUS_INVALID_PARAMETER and a handle of another kind #SM_STATUS_BAD_OBJECT. Free
 * each handle with the destroy or free function of its kind; only the creator's handle removes a semaphore, event or
 * shared-memory segment from the system, and a named mutex's lock file stays on disk.
 *
 * Time-outs are in milliseconds: -1 waits without limit and 0 tries once. A permission is -1 (mode 0664), 0 (0600)
 * or three packed nibbles, owner in bits 24-27, group 16-19, others 8-11, each with bit 0 all, bit 1 read, bit 2
 * write, bit 3 execute. The creators without "_s" use -1 for a named object and 0 for an unnamed one.
 *
 * Every function may be called from any thread; one handle may be shared by the threads of its process.
 */
#ifndef ZKSUPT_IPC_H
#define ZKSUPT_IPC_H

#include <zksupt/types.h>

ZKSUPT_BEGIN_DECLS

/** A function run by SMCriticalSectionExecute(); its result is not passed on. */
typedef int32_t (*SMCriticalSectionFunction)(void *argument);

/**
 * Creates a mutex: named (shared by the processes through a lock file, made with mode 0664) or unnamed (null name,
 * private to the process).
 * @return the handle (free with SMMutexDestroy()), or null on failure.
 */
ZKSUPT_API void *SMMutexCreate(const char *name) ZKSUPT_NOEXCEPT;
/** As SMMutexCreate(), a lock file made now getting the mode of permission. */
ZKSUPT_API void *SMMutexCreate_s(const char *name, int32_t permission) ZKSUPT_NOEXCEPT;
/** Opens the named mutex whose lock file exists; null otherwise (free with SMMutexDestroy()). */
ZKSUPT_API void *SMMutexOpen(const char *name) ZKSUPT_NOEXCEPT;
/**
 * Locks a mutex, first against the process's other threads, then (a named one) against other processes, each within
 * the time-out.
 * @return #SM_STATUS_SUCCESS, #SM_STATUS_TIMEOUT when the time-out ran out, #SM_STATUS_FAILURE on a system failure,
 * #SM_STATUS_INVALID_PARAMETER or #SM_STATUS_BAD_OBJECT for a bad handle.
 */
ZKSUPT_API int32_t SMMutexLock(void *mutex, int32_t timeout) ZKSUPT_NOEXCEPT;
/** Unlocks a mutex the calling thread holds; #SM_STATUS_SUCCESS whatever the system reports, or a bad handle's status.
 */
ZKSUPT_API int32_t SMMutexUnLock(void *mutex) ZKSUPT_NOEXCEPT;
/** Frees a mutex handle (a named mutex's lock file stays); null and other kinds are ignored. */
ZKSUPT_API void SMMutexDestroy(void *mutex) ZKSUPT_NOEXCEPT;

/**
 * Creates a counting semaphore with an initial value of 0-32767, named (mode 0664) or unnamed; a named one that
 * exists already is opened with its value unchanged.
 * @return the handle (free with SMSemaphoreDestroy()), or null on failure.
 */
ZKSUPT_API void *SMSemaphoreCreate(const char *name, int32_t initialValue) ZKSUPT_NOEXCEPT;
/** As SMSemaphoreCreate(), a new named semaphore getting the mode of permission. */
ZKSUPT_API void *SMSemaphoreCreate_s(const char *name, int32_t initialValue, int32_t permission) ZKSUPT_NOEXCEPT;
/** Opens the existing named semaphore of name; null when there is none. */
ZKSUPT_API void *SMSemaphoreOpen(const char *name) ZKSUPT_NOEXCEPT;
/**
 * Takes one unit within the time-out.
 * @return #SM_STATUS_SUCCESS, #SM_STATUS_TIMEOUT, #SM_STATUS_FAILURE on a system failure, or a bad handle's status.
 */
ZKSUPT_API int32_t SMSemaphoreAcquireWait(void *semaphore, int32_t timeout) ZKSUPT_NOEXCEPT;
/**
 * Adds count units.
 * @param count 1-32767.
 * @param previous receives the value before the release; may be null.
 * @return #SM_STATUS_SUCCESS, #SM_STATUS_FAILURE, or #SM_STATUS_INVALID_PARAMETER for a null handle or a count out
 * of range (#SM_STATUS_BAD_OBJECT for another kind).
 */
ZKSUPT_API int32_t SMSemaphoreRelease(void *semaphore, int32_t count, int32_t *previous) ZKSUPT_NOEXCEPT;
/** Frees a handle; the creator's handle also removes the semaphore. Null and other kinds are ignored. */
ZKSUPT_API void SMSemaphoreDestroy(void *semaphore) ZKSUPT_NOEXCEPT;

/**
 * Runs function(argument) under a mutex of that function, so the threads of the process run it one at a time.
 * @param timeout only -1 is served.
 * @return #SM_STATUS_SUCCESS once it has run; #SM_STATUS_INVALID_PARAMETER, without running it, for a null function
 * or another time-out.
 */
ZKSUPT_API int32_t SMCriticalSectionExecute(SMCriticalSectionFunction function, void *argument,
                                            int32_t timeout) ZKSUPT_NOEXCEPT;

/**
 * Creates a named shared-memory segment of size bytes (mode 0664). A segment whose creator has ended is taken over
 * as it is (contents and size).
 * @return the handle (free with SMSharedMemFree()); null for a null name, while a live creator holds the name, or
 * on failure.
 */
ZKSUPT_API void *SMSharedMemCreate(const char *name, uint32_t size) ZKSUPT_NOEXCEPT;
/** As SMSharedMemCreate(), a new segment getting the mode of permission. */
ZKSUPT_API void *SMSharedMemCreate_s(const char *name, uint32_t size, int32_t permission) ZKSUPT_NOEXCEPT;
/** Opens the segment of name while its creator lives; null otherwise. */
ZKSUPT_API void *SMSharedMemOpen(const char *name) ZKSUPT_NOEXCEPT;
/** Where the segment is attached in this process; null for a null handle or another kind. */
ZKSUPT_API void *SMSharedMemGetAddressPtr(void *sharedMemory) ZKSUPT_NOEXCEPT;
/** Detaches and frees the handle; the creator's handle also removes the segment. Null and other kinds are ignored. */
ZKSUPT_API void SMSharedMemFree(void *sharedMemory) ZKSUPT_NOEXCEPT;

/**
 * Creates an event, named (mode 0664) or unnamed; a named one that exists already is opened, state unchanged.
 * @param manualReset 1: stays signalled until SMEventReset(); else a wait clears it.
 * @param initiallySignalled 1: starts signalled.
 * @return the handle (free with SMEventDestroy()), or null on failure.
 */
ZKSUPT_API void *SMEventCreate(const char *name, int32_t manualReset, int32_t initiallySignalled) ZKSUPT_NOEXCEPT;
/** As SMEventCreate(), a new named event getting the mode of permission. */
ZKSUPT_API void *SMEventCreate_s(const char *name, int32_t manualReset, int32_t initiallySignalled,
                                 int32_t permission) ZKSUPT_NOEXCEPT;
/** Opens the existing named event of name, with the reset mode it was created with; null when there is none. */
ZKSUPT_API void *SMEventOpen(const char *name) ZKSUPT_NOEXCEPT;
/** Signals the event (each set adds one to its value): #SM_STATUS_SUCCESS or #SM_STATUS_FAILURE. */
ZKSUPT_API int32_t SMEventSet(void *event) ZKSUPT_NOEXCEPT;
/** Makes the event not signalled: #SM_STATUS_SUCCESS or #SM_STATUS_FAILURE. */
ZKSUPT_API int32_t SMEventReset(void *event) ZKSUPT_NOEXCEPT;
/** Lets the waiters already blocked through, then leaves the event not signalled: #SM_STATUS_SUCCESS. */
ZKSUPT_API int32_t SMEventPulse(void *event) ZKSUPT_NOEXCEPT;
/**
 * Waits until the event is signalled; an automatic-reset event is then cleared, so one wait consumes the signal.
 * @return #SM_STATUS_SUCCESS, #SM_STATUS_TIMEOUT or #SM_STATUS_FAILURE.
 */
ZKSUPT_API int32_t SMEventWait(void *event, int32_t timeout) ZKSUPT_NOEXCEPT;
/** Frees a handle; the creator's handle also removes the event. Null and other kinds are ignored. */
ZKSUPT_API void SMEventDestroy(void *event) ZKSUPT_NOEXCEPT;

/**
 * Creates a reader-writer lock, writers first: many readers or one writer. Its counters live in the handle, in the
 * creating process; a name only names the guard mutex and gates the lock waits on.
 * @return the handle (free with SMRWLDestroy()), or null on failure.
 */
ZKSUPT_API void *SMRWLCreate(const char *name) ZKSUPT_NOEXCEPT;
/**
 * Waits for a read lock (no writer active or waiting), looking again every waitPeriod milliseconds.
 * @return #SM_STATUS_SUCCESS; #SM_STATUS_FAILURE on failure or while the library unloads; #SM_STATUS_LIMIT_REACHED
 * when the count of waiters is at its maximum.
 */
ZKSUPT_API int32_t SMRWLReadLockGet(void *rwLock, int32_t waitPeriod) ZKSUPT_NOEXCEPT;
/** Gives a read lock back, waking a waiting writer first, else the waiting readers; a null handle gives 0. */
ZKSUPT_API int32_t SMRWLReadLockRelease(void *rwLock) ZKSUPT_NOEXCEPT;
/** Waits for the write lock (nobody active), looking again every waitPeriod milliseconds; as SMRWLReadLockGet(). */
ZKSUPT_API int32_t SMRWLWriteLockGet(void *rwLock, int32_t waitPeriod) ZKSUPT_NOEXCEPT;
/** Gives the write lock back, waking a waiting writer first, else the waiting readers; a null handle gives 0. */
ZKSUPT_API int32_t SMRWLWriteLockRelease(void *rwLock) ZKSUPT_NOEXCEPT;
/** Wakes any waiters (which then fail) and frees the lock; null and other kinds are ignored. */
ZKSUPT_API void SMRWLDestroy(void *rwLock) ZKSUPT_NOEXCEPT;

ZKSUPT_END_DECLS

#endif /* ZKSUPT_IPC_H */
