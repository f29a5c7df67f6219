/**
 * @file
 * Status codes returned by libzksupt: 0 is success, anything else names the failure.
 *
 * Each function's comment names the statuses it returns; the meanings below are the common ones. A few functions
 * return a status beside the data they copied (a default value, a needed size): read their comments.
 */
#ifndef ZKSUPT_STATUS_H
#define ZKSUPT_STATUS_H

#include <zksupt/types.h>

/** Success. */
#define SM_STATUS_SUCCESS 0
/** A system call failed, or the operation could not be done for no finer reason. */
#define SM_STATUS_FAILURE (-1)
/** The target was not served (for example a number format a converter does not support). */
#define SM_STATUS_NOT_SERVED 1
/** A required argument is null or unusable (older families). */
#define SM_STATUS_BAD_ARGUMENT 2
/** A bounded wait ran out. */
#define SM_STATUS_TIMEOUT 3
/** The named file does not exist. */
#define SM_STATUS_FILE_NOT_FOUND 7
/** The status of the source could not be read. */
#define SM_STATUS_SOURCE_UNREADABLE 9
/** The addressed item is not present. */
#define SM_STATUS_NOT_PRESENT 0xC
/** The caller's buffer is too small; an in/out size receives the size needed. */
#define SM_STATUS_BUFFER_TOO_SMALL 0x10
/** The network module is not started. */
#define SM_STATUS_NOT_READY 0x11
/** A count or size limit was reached. */
#define SM_STATUS_LIMIT_REACHED 0x13
/** The destination exists and overwriting was not asked for. */
#define SM_STATUS_DESTINATION_EXISTS 0x14
/** A key, ID or entry was not found. */
#define SM_STATUS_NOT_FOUND 0x100
/** The handle is not an object of the expected kind, or the object is not valid. */
#define SM_STATUS_BAD_OBJECT 0x101
/** An entry with the same key already exists. */
#define SM_STATUS_DUPLICATE 0x102
/** A configuration or property file could not be opened. */
#define SM_STATUS_FILE_OPEN_FAILED 0x104
/** An INI line opens a section with "[" but has no "]". */
#define SM_STATUS_BAD_SECTION_HEADER 0x105
/** The INI section was not found. */
#define SM_STATUS_SECTION_NOT_FOUND 0x106
/** The INI key was not found in its section. */
#define SM_STATUS_KEY_NOT_FOUND 0x107
/** A value's stated length does not match its text or exceeds its limit. */
#define SM_STATUS_BAD_LENGTH 0x108
/** Opening a file failed with permission denied. */
#define SM_STATUS_ACCESS_DENIED 0x10E
/** A required pointer or handle is null, or a parameter is out of range. */
#define SM_STATUS_INVALID_PARAMETER 0x10F
/** An allocation failed. */
#define SM_STATUS_NO_MEMORY 0x110
/** A parsed value is above the range of its type. */
#define SM_STATUS_VALUE_TOO_LARGE 0x122
/** A parsed value is below the range of its type. */
#define SM_STATUS_VALUE_TOO_SMALL 0x123

/**
 * The name of a status as its constant spells it without the prefix ("KEY_NOT_FOUND" for #SM_STATUS_KEY_NOT_FOUND),
 * or NULL for a value that is no status of the library. Safe from any thread; the text is static (do not free it).
 */
static ZKSUPT_INLINE const char *zksupt_status_name(int32_t status)
{
    switch (status) {
    case SM_STATUS_SUCCESS:
        return "SUCCESS";
    case SM_STATUS_FAILURE:
        return "FAILURE";
    case SM_STATUS_NOT_SERVED:
        return "NOT_SERVED";
    case SM_STATUS_BAD_ARGUMENT:
        return "BAD_ARGUMENT";
    case SM_STATUS_TIMEOUT:
        return "TIMEOUT";
    case SM_STATUS_FILE_NOT_FOUND:
        return "FILE_NOT_FOUND";
    case SM_STATUS_SOURCE_UNREADABLE:
        return "SOURCE_UNREADABLE";
    case SM_STATUS_NOT_PRESENT:
        return "NOT_PRESENT";
    case SM_STATUS_BUFFER_TOO_SMALL:
        return "BUFFER_TOO_SMALL";
    case SM_STATUS_NOT_READY:
        return "NOT_READY";
    case SM_STATUS_LIMIT_REACHED:
        return "LIMIT_REACHED";
    case SM_STATUS_DESTINATION_EXISTS:
        return "DESTINATION_EXISTS";
    case SM_STATUS_NOT_FOUND:
        return "NOT_FOUND";
    case SM_STATUS_BAD_OBJECT:
        return "BAD_OBJECT";
    case SM_STATUS_DUPLICATE:
        return "DUPLICATE";
    case SM_STATUS_FILE_OPEN_FAILED:
        return "FILE_OPEN_FAILED";
    case SM_STATUS_BAD_SECTION_HEADER:
        return "BAD_SECTION_HEADER";
    case SM_STATUS_SECTION_NOT_FOUND:
        return "SECTION_NOT_FOUND";
    case SM_STATUS_KEY_NOT_FOUND:
        return "KEY_NOT_FOUND";
    case SM_STATUS_BAD_LENGTH:
        return "BAD_LENGTH";
    case SM_STATUS_ACCESS_DENIED:
        return "ACCESS_DENIED";
    case SM_STATUS_INVALID_PARAMETER:
        return "INVALID_PARAMETER";
    case SM_STATUS_NO_MEMORY:
        return "NO_MEMORY";
    case SM_STATUS_VALUE_TOO_LARGE:
        return "VALUE_TOO_LARGE";
    case SM_STATUS_VALUE_TOO_SMALL:
        return "VALUE_TOO_SMALL";
    default:
        return NULL;
    }
}

#endif /* ZKSUPT_STATUS_H */
