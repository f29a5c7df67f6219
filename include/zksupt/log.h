/**
 * @file
 * Event logs: the UCS-2 text event log "zksys32.log" with its size limit and single backup, the XML event log
 * "zksys32.xml", and plain-text logs rotated through numbered generations.
 *
 * The event logs live in the suite's log directory from the registry. Each append holds the log's cross-process
 * file lock, so processes and threads may log at once; an XML log is a whole document after every append. Size
 * limits are kept per log path in a process-wide table, in memory only. Every function may be called from any thread.
 */
#ifndef ZKSUPT_LOG_H
#define ZKSUPT_LOG_H

#include <zksupt/types.h>

ZKSUPT_BEGIN_DECLS

/** Log target: the system log (a bit of the target set). */
#define SM_LOG_TARGET_OS 2
/** Log target: the text event log. */
#define SM_LOG_TARGET_TEXT 4
/** Log target: the XML event log. */
#define SM_LOG_TARGET_XML 8
/** Event type: none. */
#define SM_LOG_TYPE_NONE 0
/** Event type: error. */
#define SM_LOG_TYPE_ERROR 1
/** Event type: warning. */
#define SM_LOG_TYPE_WARNING 2
/** Event type: information. */
#define SM_LOG_TYPE_INFORMATION 4
/** Event type: successful audit. */
#define SM_LOG_TYPE_AUDIT_SUCCESS 8
/** Event type: failed audit. */
#define SM_LOG_TYPE_AUDIT_FAILURE 16
/** Event category of the Lodestar engine. */
#define SM_LOG_CATEGORY_LODESTAR_ENGINE 1
/** Event category of the Meridian service. */
#define SM_LOG_CATEGORY_MERIDIAN_SERVICE 2
/** Event category of the Pell service. */
#define SM_LOG_CATEGORY_PELL_SERVICE 3
/** Event category of the Quillon connections service. */
#define SM_LOG_CATEGORY_QUILLON_CONNECTIONS_SERVICE 4
/** Event category of the Tessel framework. */
#define SM_LOG_CATEGORY_TESSEL_FRAMEWORK 5
/** Event category of Varve management. */
#define SM_LOG_CATEGORY_VARVE_MANAGEMENT 6
/** Default size limit of an event log in bytes. */
#define SM_LOG_DEFAULT_MAX_SIZE 1048576u
/** Default size limit of an event log on a VMware ESX service host. */
#define SM_LOG_ESX_DEFAULT_MAX_SIZE 131072u
/** Largest size limit of an event log. */
#define SM_LOG_MAX_SIZE_UPPER_BOUND 4194304u
/** SMFileLogMsgToRotatedLog() prefix flag: the local time. */
#define SM_ROTATED_LOG_TIME 1
/** SMFileLogMsgToRotatedLog() prefix flag: "[pid:thread]". */
#define SM_ROTATED_LOG_PROCESS_THREAD 2
/** SMFileLogMsgToRotatedLog() flag: a line feed after the message. */
#define SM_ROTATED_LOG_NEWLINE 4

/**
 * Records an event in the system log (#SM_LOG_TARGET_OS), the text log (#SM_LOG_TARGET_TEXT) and the XML log
 * (#SM_LOG_TARGET_XML).
 * @param data bytes recorded with the event; null with dataLength 0 for none.
 * @return #SM_STATUS_BAD_ARGUMENT for targets 0; the path lookup's status; the XML log's status when it is a target
 * (see SMAppendToXMLLog()); else #SM_STATUS_SUCCESS.
 * @note The text log's own status is not reported.
 */
ZKSUPT_API int32_t SMAppendToLog(uint32_t targets, uint32_t type, uint16_t category, int32_t eventID,
                                 const char *source, const char *description, const void *data,
                                 uint32_t dataLength) ZKSUPT_NOEXCEPT;
/**
 * Deletes the text and XML logs among targets and records "Log was cleared" in each.
 * @return #SM_STATUS_SUCCESS; #SM_STATUS_BAD_ARGUMENT for targets 0; #SM_STATUS_NOT_SERVED with
 * #SM_LOG_TARGET_OS; #SM_STATUS_FAILURE when a log cannot be deleted (a missing one included); or the path lookup's
 * status.
 */
ZKSUPT_API int32_t SMClearLog(uint32_t targets, uint16_t category, const char *source) ZKSUPT_NOEXCEPT;
/**
 * Copies the path of the text or XML log (#SM_LOG_TARGET_XML wins when both are given); *size in/out.
 * @return #SM_STATUS_SUCCESS; #SM_STATUS_BAD_ARGUMENT for target 0; #SM_STATUS_NOT_SERVED with #SM_LOG_TARGET_OS;
 * #SM_STATUS_BUFFER_TOO_SMALL (*size 256) for a null buffer or one under 256 bytes; the registry's status when the
 * log directory is unknown. A target with neither bit leaves buffer and *size as they were.
 */
ZKSUPT_API int32_t SMGetLogPathFileName(uint32_t target, char *buffer, uint32_t *size) ZKSUPT_NOEXCEPT;
/**
 * Copies the backup name of that log (its last character replaced by '_').
 * @warning Returns the path lookup's status only: a buffer too small gives #SM_STATUS_SUCCESS with the needed size
 * in *size and nothing copied.
 */
ZKSUPT_API int32_t SMGetBackupLogPathFileName(uint32_t target, char *buffer, uint32_t *size) ZKSUPT_NOEXCEPT;
/**
 * The size limit of a log path, entering the default for a path that has none.
 * @return #SM_STATUS_SUCCESS; #SM_STATUS_INVALID_PARAMETER for a null or empty path or null maxSize;
 * #SM_STATUS_NOT_READY while the library is not attached.
 */
ZKSUPT_API int32_t SMGetLogMaxSize(const char *path, uint32_t *maxSize) ZKSUPT_NOEXCEPT;
/**
 * Sets a path's size limit once: a path that has one keeps it, and the result is still #SM_STATUS_SUCCESS.
 * @param maxSize from #SM_LOG_DEFAULT_MAX_SIZE to #SM_LOG_MAX_SIZE_UPPER_BOUND.
 * @param lockFlag 1 takes the table's mutex; any other value leaves the locking to the caller.
 * @return #SM_STATUS_SUCCESS, or #SM_STATUS_INVALID_PARAMETER for a limit out of range or a path of 0 or 256 bytes
 * or more.
 */
ZKSUPT_API int32_t SMSetLogMaxSize(const char *path, uint32_t maxSize, int32_t lockFlag) ZKSUPT_NOEXCEPT;
/**
 * When the file is larger than maxSize, moves it to "<path>.1" and the older generations up by one, up to count
 * (count 0 deletes it).
 * @return #SM_STATUS_SUCCESS or #SM_STATUS_FAILURE.
 */
ZKSUPT_API int32_t SMFileRotateCheck(const char *path, uint32_t maxSize, uint32_t count) ZKSUPT_NOEXCEPT;
/**
 * Rotates as SMFileRotateCheck(), then appends the prefix the flags ask for (SM_ROTATED_LOG_*) and the message.
 * @return #SM_STATUS_SUCCESS, #SM_STATUS_INVALID_PARAMETER, #SM_STATUS_FAILURE, or #SM_STATUS_LIMIT_REACHED for a
 * message written in part.
 */
ZKSUPT_API int32_t SMFileLogMsgToRotatedLog(const char *message, const char *path, uint32_t maxSize, uint32_t count,
                                            uint32_t flags) ZKSUPT_NOEXCEPT;
/**
 * Deletes the generations count down to 1 (when deleteGenerations is 1), then the file.
 * @return the file's deletion: #SM_STATUS_SUCCESS, or #SM_STATUS_FAILURE (a missing file included).
 */
ZKSUPT_API int32_t SMFileDeleteRotated(const char *path, int32_t deleteGenerations, uint32_t count) ZKSUPT_NOEXCEPT;

/**
 * Appends one LogEntry before the closing root tag of the XML log at path, moving the log to its backup first when
 * it would pass maxSize. Null texts give empty elements; only the link is escaped.
 * @return #SM_STATUS_SUCCESS; #SM_STATUS_BAD_ARGUMENT for a null path, missing or oversized data, or texts of the
 * wrong length; #SM_STATUS_FAILURE for an unknown category or a log that cannot be opened; #SM_STATUS_BAD_OBJECT for
 * a log without its closing tag; #SM_STATUS_LIMIT_REACHED for an entry written in part; #SM_STATUS_NO_MEMORY.
 */
ZKSUPT_API int32_t SMAppendToXMLLog(const char *path, uint16_t type, uint16_t category, int32_t eventID,
                                    const char *userInfo, const char *source, const char *description, const char *link,
                                    const void *data, uint32_t dataLength, uint32_t maxSize) ZKSUPT_NOEXCEPT;
/**
 * Deletes the XML log and records "Log was cleared" with the help link.
 * @return #SM_STATUS_FAILURE when the log cannot be deleted (a missing one included); else the append's status.
 */
ZKSUPT_API int32_t SMClearXMLLog(const char *path, uint16_t category, const char *userInfo,
                                 const char *source) ZKSUPT_NOEXCEPT;
/** Asks for the file's size and ignores it: always #SM_STATUS_SUCCESS, and nothing is created. */
ZKSUPT_API int32_t SMForceXMLLogExists(const char *path) ZKSUPT_NOEXCEPT;
/**
 * Copies path with its last character replaced by '_'; *size in/out.
 * @return #SM_STATUS_SUCCESS, #SM_STATUS_BUFFER_TOO_SMALL, or #SM_STATUS_INVALID_PARAMETER for a path under 2 bytes.
 */
ZKSUPT_API int32_t SMGetBackupXMLLogPathFileName(const char *path, char *buffer, uint32_t *size) ZKSUPT_NOEXCEPT;

ZKSUPT_END_DECLS

#endif /* ZKSUPT_LOG_H */
