/**
 * @file
 * Typed values as text and back, and name=value parameter vectors.
 *
 * The type word holds the value-type code (0-16) in bits 0-7 and a format flag in bits 8-15: 0 decimal, 0x100 binary
 * digits, 0x200 octal, 0x300 decimal, 0x400 "0x" hexadecimal; for byte strings (12) 0 is a digit string, 0x100 a hex
 * dump and 0x400 a "0x%02X" list. Value types: 0 boolean (16 bits, "true"/"false"), 1-4 signed 8-64-bit integers, 5-8
 * unsigned 8-64-bit integers, 9 double, 10 locale code, 11 time (32-bit seconds; formatted only), 12 byte string,
 * 13 UTF-8 string, 14 UCS-2 string, 15 IPv4 address (network order), 16 byte string as a digit string.
 *
 * @warning Type 13 is a UTF-8 string here, but a nested object inside an SDO (sdo.h): do not pass a string to
 * SMSDOConfigAddData() under base type 13.
 *
 * The functions keep no state: any thread may call them. Parameter vectors are modified only where a function says
 * so.
 */
#ifndef ZKSUPT_XLT_H
#define ZKSUPT_XLT_H

#include <zksupt/types.h>

ZKSUPT_BEGIN_DECLS

/** One row of an enumeration table: a word and the value it stands for; row 0 answers a word no other row names. */
typedef struct SMNVPEnumRow {
    const char *word;  /**< the word, compared without case */
    uint32_t value;    /**< the value it stands for */
    uint32_t reserved; /**< not read */
} SMNVPEnumRow;

/**
 * Parses text as a value of the type into buffer.
 * @param size in: the capacity of buffer; out: the size the type needs (or produced).
 * @return #SM_STATUS_SUCCESS; #SM_STATUS_BUFFER_TOO_SMALL (nothing written); #SM_STATUS_INVALID_PARAMETER for a null
 * text or size, a null buffer with a capacity, an unknown flag, or text that is no value of the type;
 * #SM_STATUS_VALUE_TOO_LARGE or #SM_STATUS_VALUE_TOO_SMALL out of the type's range; #SM_STATUS_BAD_ARGUMENT for a
 * type above 16 or type 11; #SM_STATUS_FAILURE for a byte string that does not parse; or the converter's status for
 * types 14 and 15.
 */
ZKSUPT_API int32_t SMXLTUTF8ToTypeValue(const char *text, void *buffer, uint32_t *size, uint32_t type) ZKSUPT_NOEXCEPT;
/**
 * Formats a value of the type as text.
 * @param size in: the capacity of text, at least the type's minimum; out: the text's length + 1, or the size needed
 * with #SM_STATUS_BUFFER_TOO_SMALL.
 * @return #SM_STATUS_SUCCESS; #SM_STATUS_BUFFER_TOO_SMALL; #SM_STATUS_INVALID_PARAMETER for a null value or size, a
 * null text with a capacity, or a valueSize below the type's width; #SM_STATUS_BAD_ARGUMENT for a type above 16 or
 * an unknown byte-string flag; #SM_STATUS_FAILURE for a type-16 value above 63 bytes; #SM_STATUS_NO_MEMORY; or the
 * converter's status for types 14 and 15.
 */
ZKSUPT_API int32_t SMXLTTypeValueToUTF8(const void *value, uint32_t valueSize, char *text, uint32_t *size,
                                        uint32_t type) ZKSUPT_NOEXCEPT;

/** Cuts the parameter at its first "=" in place and returns it (its name), or null when it has none. */
ZKSUPT_API char *SMNVPGetUTF8ParamName(char *param) ZKSUPT_NOEXCEPT;
/** The text after the parameter's first "=", or null. */
ZKSUPT_API char *SMNVPGetUTF8ParamValue(char *param) ZKSUPT_NOEXCEPT;
/** 1 when the parameter has a name (an "=" after at least one character), else 0. */
ZKSUPT_API int32_t SMIsValidParam(const char *param) ZKSUPT_NOEXCEPT;
/** Index of the first of n parameters with the name (ignoreCase 1: case-folded), or -1. */
ZKSUPT_API int32_t SMNVPGetParamIndexByUTF8Name(int32_t n, char **params, const char *name,
                                                int32_t ignoreCase) ZKSUPT_NOEXCEPT;
/** The value text of the named parameter, or null. */
ZKSUPT_API char *SMNVPGetUTF8ParamValueByUTF8Name(int32_t n, char **params, const char *name,
                                                  int32_t ignoreCase) ZKSUPT_NOEXCEPT;
/** Parses the named parameter's value as SMXLTUTF8ToTypeValue() does; #SM_STATUS_NOT_FOUND when it is absent,
 * #SM_STATUS_INVALID_PARAMETER for a null vector or buffer. */
ZKSUPT_API int32_t SMNVPUTF8ToTypeValue(int32_t n, char **params, const char *name, int32_t ignoreCase, void *buffer,
                                        uint32_t *size, uint32_t type) ZKSUPT_NOEXCEPT;
/** The table value of the named parameter's word (multiple 1: the OR of "|" or "," words); row 1's value when the
 * parameter is absent, row 0's when no row names the word; 0x80000000 for null arguments or rows below 2. */
ZKSUPT_API uint32_t SMNVPGetEnums32Value(int32_t n, char **params, const char *name, int32_t ignoreCase,
                                         const SMNVPEnumRow *table, uint32_t rows, int32_t multiple) ZKSUPT_NOEXCEPT;

ZKSUPT_END_DECLS

#endif /* ZKSUPT_XLT_H */
