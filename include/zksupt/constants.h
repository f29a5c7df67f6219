/**
 * @file constants.h
 * @brief Named values for the numbers the library's calls take: SDO type codes and type-byte bits, INI value types,
 * product IDs and path kinds, and the wait arguments of the locks.
 *
 * The log targets, event types and categories are the SM_LOG_* macros of log.h, included here so that this one
 * header names every such value.
 */
#ifndef ZKSUPT_CONSTANTS_H
#define ZKSUPT_CONSTANTS_H

#include <zksupt/log.h>

/* ---- Value-type codes: the type byte of an SDO entry and the type word of the text translation ---- */

/** Boolean: a 16-bit 0 or 1, text "true" or "false". An SDO refuses a type byte of 0 (add an attribute bit). */
#define SM_TYPE_BOOLEAN 0
/** Signed 8-bit integer. */
#define SM_TYPE_INT8 1
/** Signed 16-bit integer. */
#define SM_TYPE_INT16 2
/** Signed 32-bit integer. */
#define SM_TYPE_INT32 3
/** Signed 64-bit integer. */
#define SM_TYPE_INT64 4
/** Unsigned 8-bit integer. */
#define SM_TYPE_UINT8 5
/** Unsigned 16-bit integer. */
#define SM_TYPE_UINT16 6
/** Unsigned 32-bit integer. */
#define SM_TYPE_UINT32 7
/** Unsigned 64-bit integer. */
#define SM_TYPE_UINT64 8
/** Double-precision floating point. */
#define SM_TYPE_DOUBLE 9
/** Locale: a 32-bit language code (1033 for en_US). */
#define SM_TYPE_LOCALE 10
/** Time: a 32-bit count of seconds, shown as ctime text; never parsed from text. */
#define SM_TYPE_TIME 11
/** Outside an SDO a byte string; inside an SDO a nested binary object or array ("SDOB"/"SDAB"). */
#define SM_TYPE_BYTES 12
/** Outside an SDO a NUL-terminated UTF-8 string; inside an SDO a nested object handle (see SM_SDO_TYPE_OBJECT). */
#define SM_TYPE_UTF8 13
/** NUL-terminated UCS-2 string. */
#define SM_TYPE_UCS2 14
/** IPv4 address, 4 bytes in network order. */
#define SM_TYPE_IPV4 15
/** Byte string parsed from hexadecimal digits; text translation only (it does not fit an SDO type byte). */
#define SM_TYPE_HEX_BYTES 16

/* ---- The SDO type byte ---- */

/** Bits 0-3 of an SDO type byte: the base type code. */
#define SM_SDO_TYPE_BASE_MASK 0x0F
/** Bit 4: the value is an array of the base type. */
#define SM_SDO_TYPE_ARRAY 0x10
/** Bit 5: an attribute the SDO stores and carries but never interprets. */
#define SM_SDO_TYPE_ATTRIBUTE 0x20
/** Bits 6-7: a two-bit attribute field, stored and carried like bit 5. */
#define SM_SDO_TYPE_ATTRIBUTE_FIELD 0xC0
/** A nested binary object or array as bytes; an SDO converts it to SM_SDO_TYPE_OBJECT when it is added. */
#define SM_SDO_TYPE_BINARY 12
/** A nested object: the value is one SDOConfig handle, owned by the parent once added (not a UTF-8 string here). */
#define SM_SDO_TYPE_OBJECT 13
/** An array of nested objects: the value is N non-null SDOConfig handles, each owned by the parent. */
#define SM_SDO_TYPE_OBJECT_ARRAY (SM_SDO_TYPE_OBJECT | SM_SDO_TYPE_ARRAY)
/** The largest number of entries one SDO holds. */
#define SM_SDO_MAX_ENTRIES 65535u

/* ---- INI value types (the type argument of the INI calls) ---- */

/** UTF-8 string; size strlen + 1. With a null section or key, type 1 reads a list of names. */
#define SM_INI_TYPE_UTF8 1
/** UCS-2 string; size (length + 1) * 2. */
#define SM_INI_TYPE_UCS2 2
/** Bytes, written as "0x01,0x0A"; size 1 to 2048. */
#define SM_INI_TYPE_BINARY 3
/** 16-bit boolean, written as "TRUE" or "FALSE". */
#define SM_INI_TYPE_BOOLEAN 4
/** Unsigned 32-bit integer. */
#define SM_INI_TYPE_UINT32 5
/** Signed 32-bit integer. */
#define SM_INI_TYPE_INT32 6
/** Unsigned 64-bit integer. */
#define SM_INI_TYPE_UINT64 7
/** Signed 64-bit integer. */
#define SM_INI_TYPE_INT64 8
/** Double, written as "%.8f". */
#define SM_INI_TYPE_DOUBLE 9
/** What SMReadINIEnums32Value returns for bad arguments. */
#define SM_INI_ENUM_FAILURE 0x80000000u

/* ---- Products of the suite and the kinds of directory each has ---- */

/** The suite as a whole ("tarn"). */
#define SM_PRODUCT_SUITE (-1)
/** "pell". */
#define SM_PRODUCT_PELL 33
/** "Lodestar". */
#define SM_PRODUCT_LODESTAR 34
/** "Meridian": the product whose ini and log directories the INI and event-log calls use. */
#define SM_PRODUCT_MERIDIAN 35
/** "fenx". */
#define SM_PRODUCT_FENX 44
/** "keellib". */
#define SM_PRODUCT_KEELLIB 45
/** "mox5". */
#define SM_PRODUCT_MOX5 88

/** Install directory (registry key suffix "installpath"). */
#define SM_PATH_KIND_INSTALL 2
/** Var-data directory ("vardatapath"). */
#define SM_PATH_KIND_VAR_DATA 4
/** Log directory ("logpath"). */
#define SM_PATH_KIND_LOG 8
/** Configuration-tool directory ("configtool"). */
#define SM_PATH_KIND_CONFIG_TOOL 16
/** Another name for the install directory. */
#define SM_PATH_KIND_INSTALL_ALIAS 32
/** INI directory ("inipath"); the plain INI calls append "/ini/" to it. */
#define SM_PATH_KIND_INI 64
/** Bin directory ("binpath"). */
#define SM_PATH_KIND_BIN 128

/* ---- Waiting for locks ---- */

/** A time-out (milliseconds) of the named objects that waits without limit. */
#define SM_WAIT_FOREVER (-1)
/** A time-out of the named objects that tries once and does not wait. */
#define SM_WAIT_NONE 0
/** The lockWait argument of the INI and property-file calls: wait for the file lock as long as it takes. */
#define SM_LOCK_WAIT 1
/** The lockWait argument: one attempt (any value other than 1), failing at once while the lock is busy. */
#define SM_LOCK_TRY_ONCE 0
/** The permission of a named object that gives mode 0664. */
#define SM_PERMISSION_DEFAULT (-1)
/** The permission of a named object that gives mode 0600. */
#define SM_PERMISSION_OWNER_ONLY 0

#endif /* ZKSUPT_CONSTANTS_H */
