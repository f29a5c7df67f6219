/* Event logs: the UCS-2 text event log "zksys32.log" with its size limit and single backup, the XML event log
 * "zksys32.xml", and plain-text logs rotated through numbered generations. */
#ifndef ZKSUPT_LOG_H
#define ZKSUPT_LOG_H

#include <zksupt/types.h>

ZKSUPT_BEGIN_DECLS

/* Log targets, a bit set. */
#define SM_LOG_TARGET_OS 2
#define SM_LOG_TARGET_TEXT 4
#define SM_LOG_TARGET_XML 8
/* Event types. */
#define SM_LOG_TYPE_NONE 0
#define SM_LOG_TYPE_ERROR 1
#define SM_LOG_TYPE_WARNING 2
#define SM_LOG_TYPE_INFORMATION 4
#define SM_LOG_TYPE_AUDIT_SUCCESS 8
#define SM_LOG_TYPE_AUDIT_FAILURE 16
/* Event categories, each naming a component of the suite. */
#define SM_LOG_CATEGORY_LODESTAR_ENGINE 1
#define SM_LOG_CATEGORY_MERIDIAN_SERVICE 2
#define SM_LOG_CATEGORY_PELL_SERVICE 3
#define SM_LOG_CATEGORY_QUILLON_CONNECTIONS_SERVICE 4
#define SM_LOG_CATEGORY_TESSEL_FRAMEWORK 5
#define SM_LOG_CATEGORY_VARVE_MANAGEMENT 6
/* Size limits of the event logs in bytes: the default, the default on a VMware ESX host, the largest. */
#define SM_LOG_DEFAULT_MAX_SIZE 1048576u
#define SM_LOG_ESX_DEFAULT_MAX_SIZE 131072u
#define SM_LOG_MAX_SIZE_UPPER_BOUND 4194304u
/* Prefix flags of SMFileLogMsgToRotatedLog: local time, "[pid:thread]", and a line feed after the message. */
#define SM_ROTATED_LOG_TIME 1
#define SM_ROTATED_LOG_PROCESS_THREAD 2
#define SM_ROTATED_LOG_NEWLINE 4

/* Sends an event to the system log (2), the text log (4) and the XML log (8): 2 for targets 0; the path lookup's
 * status; the XML log's status with 8; else 0 (the text log's own status is not reported). */
ZKSUPT_API int32_t SMAppendToLog(uint32_t targets, uint32_t type, uint16_t category, int32_t eventID,
                                 const char *source, const char *description, const void *data,
                                 uint32_t dataLength) ZKSUPT_NOEXCEPT;
/* Deletes the text (4) and XML (8) logs and records "Log was cleared"; 2 for targets 0, 1 with target 2, -1 when a
 * log cannot be deleted (a missing one included). */
ZKSUPT_API int32_t SMClearLog(uint32_t targets, uint16_t category, const char *source) ZKSUPT_NOEXCEPT;
/* The path of the text (4) or XML (8, which wins) log; *size in/out, at least 256; 2 for 0, 1 for target 2. */
ZKSUPT_API int32_t SMGetLogPathFileName(uint32_t target, char *buffer, uint32_t *size) ZKSUPT_NOEXCEPT;
/* The backup name of that log (its last character replaced by '_'); the path lookup's status only, so a buffer too
 * small gives 0 with the needed size in *size. */
ZKSUPT_API int32_t SMGetBackupLogPathFileName(uint32_t target, char *buffer, uint32_t *size) ZKSUPT_NOEXCEPT;
/* The size limit of a log path (the default, entered now, when it has none); 0x10F for a null or empty path. */
ZKSUPT_API int32_t SMGetLogMaxSize(const char *path, uint32_t *maxSize) ZKSUPT_NOEXCEPT;
/* Sets a path's limit once (a second setting is ignored and gives 0); lockFlag 1 takes the table's mutex; 0x10F for
 * a limit outside the default to the upper bound or a path of 0 or 256+ bytes. */
ZKSUPT_API int32_t SMSetLogMaxSize(const char *path, uint32_t maxSize, int32_t lockFlag) ZKSUPT_NOEXCEPT;
/* When the file is larger than maxSize, moves it to "<path>.1" and older generations up to count (count 0 deletes
 * it); 0 or -1. */
ZKSUPT_API int32_t SMFileRotateCheck(const char *path, uint32_t maxSize, uint32_t count) ZKSUPT_NOEXCEPT;
/* Rotates as SMFileRotateCheck, then appends the prefix the flags ask for and the message; 0x10F, -1, 0x13. */
ZKSUPT_API int32_t SMFileLogMsgToRotatedLog(const char *message, const char *path, uint32_t maxSize, uint32_t count,
                                            uint32_t flags) ZKSUPT_NOEXCEPT;
/* Deletes the generations count to 1 (deleteGenerations 1), then the file: that delete's result, -1 when missing. */
ZKSUPT_API int32_t SMFileDeleteRotated(const char *path, int32_t deleteGenerations, uint32_t count) ZKSUPT_NOEXCEPT;

/* Appends one LogEntry before the closing root tag of the XML log at path (null texts give empty elements; only the
 * link is escaped); 2, -1, 0x101, 0x13, 0x110. */
ZKSUPT_API int32_t SMAppendToXMLLog(const char *path, uint16_t type, uint16_t category, int32_t eventID,
                                    const char *userInfo, const char *source, const char *description, const char *link,
                                    const void *data, uint32_t dataLength, uint32_t maxSize) ZKSUPT_NOEXCEPT;
/* Deletes the XML log and records "Log was cleared" with the help link; -1 when it cannot be deleted. */
ZKSUPT_API int32_t SMClearXMLLog(const char *path, uint16_t category, const char *userInfo,
                                 const char *source) ZKSUPT_NOEXCEPT;
/* Asks for the file's size and ignores it: always 0, and nothing is created. */
ZKSUPT_API int32_t SMForceXMLLogExists(const char *path) ZKSUPT_NOEXCEPT;
/* The path with its last character replaced by '_'; *size in/out; 0x10F for a path under 2 bytes. */
ZKSUPT_API int32_t SMGetBackupXMLLogPathFileName(const char *path, char *buffer, uint32_t *size) ZKSUPT_NOEXCEPT;

ZKSUPT_END_DECLS

#endif /* ZKSUPT_LOG_H */
