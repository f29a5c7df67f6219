/**
 * @file
 * Operating-system services: reference ticks, system type, console, system log, long file names, caller threads, shared
 * libraries and the process-wide library table, environment copies.
 *
 * Reference ticks and time-outs are in milliseconds. Every function may be called from any thread; the process-wide
 * library table has a lock of its own. Memory handed out is freed with SMFreeMem(), thread and library records with
 * their stop and unload functions.
 */
#ifndef ZKSUPT_OS_H
#define ZKSUPT_OS_H

#include <pthread.h>

#include <zksupt/types.h>

ZKSUPT_BEGIN_DECLS

/** Reference ticks that mean "no time". */
#define SM_REF_TICKS_NONE ((int64_t)-1)
/** SMOSTypeGet(): Linux. */
#define SM_OS_TYPE_LINUX 3
/** SMOSTypeGet(): a VMware ESX service host. */
#define SM_OS_TYPE_VMWARE_ESX 4
/** SMAppendToOSSysLog() type: error (any type other than these two logs as information). */
#define SM_SYSLOG_TYPE_ERROR 1
/** SMAppendToOSSysLog() type: warning. */
#define SM_SYSLOG_TYPE_WARNING 2
/** SMAppendToOSSysLog() source: the Lodestar engine. */
#define SM_SYSLOG_SOURCE_LODESTAR_ENGINE 1
/** SMAppendToOSSysLog() source: the Meridian service. */
#define SM_SYSLOG_SOURCE_MERIDIAN_SERVICE 2
/** SMAppendToOSSysLog() source: the Pell service. */
#define SM_SYSLOG_SOURCE_PELL_SERVICE 3
/** SMAppendToOSSysLog() source: the Quillon connections service. */
#define SM_SYSLOG_SOURCE_QUILLON_CONNECTIONS_SERVICE 4
/** SMAppendToOSSysLog() source: the Tessel framework. */
#define SM_SYSLOG_SOURCE_TESSEL_FRAMEWORK 5
/** SMAppendToOSSysLog() source: Varve management. */
#define SM_SYSLOG_SOURCE_VARVE_MANAGEMENT 6

/** The routine a caller thread runs; what it returns is not kept. */
typedef void (*SMThreadRoutine)(void *argument);
/** A joinable thread started by SMThreadStart(); ended and freed by SMThreadStop() or SMThreadKill(). */
typedef struct SMThread SMThread;
/** A library loaded by SMLibLoad() and freed by SMLibUnLoad(); like every handle of the library it begins with a 32-bit
 * kind word (0). */
typedef struct SMLibrary SMLibrary;

/** Milliseconds since 1970-01-01 00:00 UTC; -1 when the clock cannot be read. */
ZKSUPT_API int64_t SMRefTicksGet(void) ZKSUPT_NOEXCEPT;
/** Ticks from start to now (0 if the clock went back) against a time-out (-1 none): passed and expired are 1 once the
 * difference is above the time-out (with none, passed once it is above 0); 1, or 0 when start or now is -1. */
ZKSUPT_API int32_t SMRefTicksDiffCheckTimer(int64_t start, int64_t now, int64_t timeout, int64_t *difference,
                                            uint16_t *passed, uint16_t *expired) ZKSUPT_NOEXCEPT;
/** 4 on a VMware ESX service host (kernel "VMkernel"), else 3. */
ZKSUPT_API int32_t SMOSTypeGet(void) ZKSUPT_NOEXCEPT;
/** 1 when standard input can be read without waiting, else 0; nothing is read. */
ZKSUPT_API int32_t SMkbhit(void) ZKSUPT_NOEXCEPT;
/** Logs `<source name> EventID: <id>  <message>` (at most 2047 bytes, CR as space) under ident, facility daemon;
 * #SM_STATUS_SUCCESS, or #SM_STATUS_FAILURE for a source outside 1-6 (nothing logged). */
ZKSUPT_API int32_t SMAppendToOSSysLog(int32_t type, int32_t source, uint32_t eventID, const char *ident,
                                      const char *message, const void *unused1, uint32_t unused2) ZKSUPT_NOEXCEPT;
/** File names are always long on this platform: does nothing and returns 0. */
ZKSUPT_API int32_t SMLongFileNamesEnable(void) ZKSUPT_NOEXCEPT;
/** File names are always long on this platform: does nothing and returns 0. */
ZKSUPT_API int32_t SMLongFileNamesDisable(void) ZKSUPT_NOEXCEPT;

/** Starts a joinable thread (stack 0x20000 bytes) running routine(argument); null on failure or a null routine. */
ZKSUPT_API SMThread *SMThreadStart(SMThreadRoutine routine, void *argument) ZKSUPT_NOEXCEPT;
/** Starts a detached thread running routine(argument); #SM_STATUS_SUCCESS, #SM_STATUS_FAILURE on failure,
 * #SM_STATUS_INVALID_PARAMETER for a null routine. */
ZKSUPT_API int32_t SMThreadStartAndRelease(SMThreadRoutine routine, void *argument) ZKSUPT_NOEXCEPT;
/** Waits for the thread to end and frees its record; #SM_STATUS_SUCCESS, #SM_STATUS_FAILURE when it cannot be joined,
 * #SM_STATUS_INVALID_PARAMETER for null. */
ZKSUPT_API int32_t SMThreadStop(SMThread *thread) ZKSUPT_NOEXCEPT;
/** Sends signal 9 to the thread, which ends the whole process, and frees the record; #SM_STATUS_INVALID_PARAMETER for
 * null. */
ZKSUPT_API int32_t SMThreadKill(SMThread *thread) ZKSUPT_NOEXCEPT;
/** Yields the processor; the result of sched_yield. */
ZKSUPT_API int32_t SMThreadYield(void) ZKSUPT_NOEXCEPT;
/** The calling thread's identifier. */
ZKSUPT_API pthread_t SMThreadGetID(void) ZKSUPT_NOEXCEPT;
/** Names the calling thread (the kernel keeps 15 bytes); #SM_STATUS_SUCCESS, #SM_STATUS_FAILURE on failure,
 * #SM_STATUS_INVALID_PARAMETER for null. */
ZKSUPT_API int32_t SMThreadSetName(const char *name) ZKSUPT_NOEXCEPT;

/** Loads a shared library with every symbol bound now; null on failure. */
ZKSUPT_API SMLibrary *SMLibLoad(const char *path) ZKSUPT_NOEXCEPT;
/** Unloads the library and frees its record; #SM_STATUS_FAILURE if the loader refuses (record kept),
 * #SM_STATUS_INVALID_PARAMETER null, #SM_STATUS_BAD_OBJECT not a library.
 */
ZKSUPT_API int32_t SMLibUnLoad(SMLibrary *library) ZKSUPT_NOEXCEPT;
/** The address of a symbol of the library; null when not found or for a null or invalid record or null name. */
ZKSUPT_API void *SMLibLinkToExportFN(SMLibrary *library, const char *symbol) ZKSUPT_NOEXCEPT;
/** Checks its arguments only: #SM_STATUS_INVALID_PARAMETER for a null record or address, #SM_STATUS_BAD_OBJECT for an
 * invalid record, else #SM_STATUS_SUCCESS. */
ZKSUPT_API int32_t SMLibUnLinkFromExportFN(SMLibrary *library, const void *address) ZKSUPT_NOEXCEPT;
/** Loads file once per process for user and returns symbol's address (the SMLibrary for a null symbol); null on
 * failure. Symbols are looked up once per library. */
ZKSUPT_API void *SMFLibLinkToExportFN(const char *user, const char *file, const char *symbol) ZKSUPT_NOEXCEPT;
/** Lets go of file for user; the library is unloaded once its user count drops below 1 (each call counts once, listed
 * user or not); #SM_STATUS_SUCCESS, #SM_STATUS_FAILURE when that unload fails, #SM_STATUS_INVALID_PARAMETER for a null
 * user or file. */
ZKSUPT_API int32_t SMFLibUnLoad(const char *user, const char *file) ZKSUPT_NOEXCEPT;
/** A copy of the variable's value (free with SMFreeMem()) and its size with the NUL in *size (may be null); null,
 * *size untouched, when the variable is not set. */
ZKSUPT_API char *SMEnvDup(const char *name, uint32_t *size) ZKSUPT_NOEXCEPT;

ZKSUPT_END_DECLS

#endif /* ZKSUPT_OS_H */
