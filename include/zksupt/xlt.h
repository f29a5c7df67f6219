/* Typed values as text and back, and name=value parameter vectors. The type
 * word holds the value-type code (0-16) in bits 0-7 and a format flag in bits
 * 8-15: 0 decimal, 0x100 binary digits, 0x200 octal, 0x300 decimal, 0x400 "0x"
 * hexadecimal; for byte strings (12) 0 is a digit string, 0x100 a hex dump and
 * 0x400 a "0x%02X" list. */
#ifndef ZKSUPT_XLT_H
#define ZKSUPT_XLT_H

#include <zksupt/types.h>

ZKSUPT_BEGIN_DECLS

/* One row of an enumeration table: a word and the value it stands for. */
typedef struct SMNVPEnumRow {
    const char *word;
    uint32_t value;
    uint32_t reserved;
} SMNVPEnumRow;

/* Parses text as a value of the type into buffer; *size: capacity in, the value's size out. */
ZKSUPT_API int32_t SMXLTUTF8ToTypeValue(const char *text, void *buffer, uint32_t *size, uint32_t type) ZKSUPT_NOEXCEPT;
/* Formats a value of the type as text; *size: capacity in, text length + 1 (or the need on 0x10) out. */
ZKSUPT_API int32_t SMXLTTypeValueToUTF8(const void *value, uint32_t valueSize, char *text, uint32_t *size,
                                        uint32_t type) ZKSUPT_NOEXCEPT;

/* Cuts the parameter at its first "=" in place and returns it (its name), or null when it has none. */
ZKSUPT_API char *SMNVPGetUTF8ParamName(char *param) ZKSUPT_NOEXCEPT;
/* The text after the parameter's first "=", or null. */
ZKSUPT_API char *SMNVPGetUTF8ParamValue(char *param) ZKSUPT_NOEXCEPT;
/* 1 when the parameter has a name (an "=" after at least one character), else 0. */
ZKSUPT_API int32_t SMIsValidParam(const char *param) ZKSUPT_NOEXCEPT;
/* Index of the first of n parameters with the name (ignoreCase 1: case-folded), or -1. */
ZKSUPT_API int32_t SMNVPGetParamIndexByUTF8Name(int32_t n, char **params, const char *name,
                                                int32_t ignoreCase) ZKSUPT_NOEXCEPT;
/* The value text of the named parameter, or null. */
ZKSUPT_API char *SMNVPGetUTF8ParamValueByUTF8Name(int32_t n, char **params, const char *name,
                                                  int32_t ignoreCase) ZKSUPT_NOEXCEPT;
/* Parses the named parameter's value as SMXLTUTF8ToTypeValue does; 0x100 when it is absent. */
ZKSUPT_API int32_t SMNVPUTF8ToTypeValue(int32_t n, char **params, const char *name, int32_t ignoreCase, void *buffer,
                                        uint32_t *size, uint32_t type) ZKSUPT_NOEXCEPT;
/* The table value of the named parameter's word (multiple 1: the OR of "|" or "," words); 0x80000000 on failure. */
ZKSUPT_API uint32_t SMNVPGetEnums32Value(int32_t n, char **params, const char *name, int32_t ignoreCase,
                                         const SMNVPEnumRow *table, uint32_t rows, int32_t multiple) ZKSUPT_NOEXCEPT;

ZKSUPT_END_DECLS

#endif /* ZKSUPT_XLT_H */
