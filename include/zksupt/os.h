/* Operating-system services: reference ticks, system type, console, system log, long file names. */
#ifndef ZKSUPT_OS_H
#define ZKSUPT_OS_H

#include <zksupt/types.h>

ZKSUPT_BEGIN_DECLS

/* Reference ticks that mean "no time". */
#define SM_REF_TICKS_NONE ((int64_t)-1)
/* Operating-system types of SMOSTypeGet. */
#define SM_OS_TYPE_LINUX 3
#define SM_OS_TYPE_VMWARE_ESX 4
/* Types of SMAppendToOSSysLog (any other type logs as information). */
#define SM_SYSLOG_TYPE_ERROR 1
#define SM_SYSLOG_TYPE_WARNING 2
/* Sources of SMAppendToOSSysLog, each naming a component of the suite. */
#define SM_SYSLOG_SOURCE_LODESTAR_ENGINE 1
#define SM_SYSLOG_SOURCE_MERIDIAN_SERVICE 2
#define SM_SYSLOG_SOURCE_PELL_SERVICE 3
#define SM_SYSLOG_SOURCE_QUILLON_CONNECTIONS_SERVICE 4
#define SM_SYSLOG_SOURCE_TESSEL_FRAMEWORK 5
#define SM_SYSLOG_SOURCE_VARVE_MANAGEMENT 6

/* Milliseconds since 1970-01-01 00:00 UTC; -1 when the clock cannot be read. */
ZKSUPT_API int64_t SMRefTicksGet(void) ZKSUPT_NOEXCEPT;
/* Ticks from start to now (0 if the clock went back) against a time-out (-1 none): passed and expired are 1 once the
 * difference is above the time-out (with none, passed once it is above 0); 1, or 0 when start or now is -1. */
ZKSUPT_API int32_t SMRefTicksDiffCheckTimer(int64_t start, int64_t now, int64_t timeout, int64_t *difference,
                                            uint16_t *passed, uint16_t *expired) ZKSUPT_NOEXCEPT;
/* 4 on a VMware ESX service host (kernel "VMkernel"), else 3. */
ZKSUPT_API int32_t SMOSTypeGet(void) ZKSUPT_NOEXCEPT;
/* 1 when standard input can be read without waiting, else 0; nothing is read. */
ZKSUPT_API int32_t SMkbhit(void) ZKSUPT_NOEXCEPT;
/* Logs "<source name> EventID: <id>  <message>" (at most 2047 bytes, CR as space) under ident, facility daemon;
 * 0, or -1 for a source outside 1-6 (nothing logged). */
ZKSUPT_API int32_t SMAppendToOSSysLog(int32_t type, int32_t source, uint32_t eventID, const char *ident,
                                      const char *message, const void *unused1, uint32_t unused2) ZKSUPT_NOEXCEPT;
/* File names are always long on this platform: does nothing and returns 0. */
ZKSUPT_API int32_t SMLongFileNamesEnable(void) ZKSUPT_NOEXCEPT;
/* File names are always long on this platform: does nothing and returns 0. */
ZKSUPT_API int32_t SMLongFileNamesDisable(void) ZKSUPT_NOEXCEPT;

ZKSUPT_END_DECLS

#endif /* ZKSUPT_OS_H */
