/**
 * @file
 * Text: UCS-2 strings, conversion between UTF-8 and UCS-2, UTF-8 helpers and sized strings.
 *
 * UCS-2 strings: the C library's narrow string functions for 16-bit units. Lengths count units. None of them checks
 * its pointers for null. A unit argument c is taken from its low 16 bits. The _s variants accept a size in the place
 * of the bounds-checked C functions but ignore it: they protect nothing.
 *
 * Converters: *size counts bytes, the capacity of dst on entry and the bytes written with the terminator on success.
 * A null dst asks for the size the whole result needs. On #SM_STATUS_BUFFER_TOO_SMALL or #SM_STATUS_BAD_OBJECT,
 * *size is unchanged and dst holds the characters converted so far, unterminated.
 *
 * UTF-8 helpers work byte by byte. Sized strings (SMSizedString) are growable texts in the caller's record.
 *
 * Every function may be called from any thread on data no other thread changes, except SMUCS2Strtok() and
 * SMUCS2Strtok_s(), which share one saved position in the process. Memory a function returns is freed with
 * SMFreeMem(); a sized string's buffer with its free function.
 */
#ifndef ZKSUPT_TEXT_H
#define ZKSUPT_TEXT_H

#include <zksupt/status.h>
#include <zksupt/types.h>

ZKSUPT_BEGIN_DECLS

/* UCS-2 strings. */

/** Number of units before the terminator. */
ZKSUPT_API uint32_t SMUCS2Strlen(const ucs2 *s) ZKSUPT_NOEXCEPT;
/** Copies src and its terminator to dst; returns dst. */
ZKSUPT_API ucs2 *SMUCS2Strcpy(ucs2 *dst, const ucs2 *src) ZKSUPT_NOEXCEPT;
/** SMUCS2Strcpy; dstSize is ignored. */
ZKSUPT_API ucs2 *SMUCS2Strcpy_s(ucs2 *dst, uint32_t dstSize, const ucs2 *src) ZKSUPT_NOEXCEPT;
/** Copies up to n units, stopping after a copied terminator; no padding, no terminator added at n. */
ZKSUPT_API ucs2 *SMUCS2Strncpy(ucs2 *dst, const ucs2 *src, uint32_t n) ZKSUPT_NOEXCEPT;
/** SMUCS2Strncpy; dstSize is ignored. */
ZKSUPT_API ucs2 *SMUCS2Strncpy_s(ucs2 *dst, uint32_t dstSize, const ucs2 *src, uint32_t n) ZKSUPT_NOEXCEPT;
/** Appends src and its terminator to dst; returns dst. */
ZKSUPT_API ucs2 *SMUCS2Strcat(ucs2 *dst, const ucs2 *src) ZKSUPT_NOEXCEPT;
/** SMUCS2Strcat; dstSize is ignored. */
ZKSUPT_API ucs2 *SMUCS2Strcat_s(ucs2 *dst, uint32_t dstSize, const ucs2 *src) ZKSUPT_NOEXCEPT;
/** Appends at most n units of src and a terminator; n = 0 does nothing. */
ZKSUPT_API ucs2 *SMUCS2Strncat(ucs2 *dst, const ucs2 *src, uint32_t n) ZKSUPT_NOEXCEPT;
/** SMUCS2Strncat; dstSize is ignored. */
ZKSUPT_API ucs2 *SMUCS2Strncat_s(ucs2 *dst, uint32_t dstSize, const ucs2 *src, uint32_t n) ZKSUPT_NOEXCEPT;
/** 0 when equal, else the first differing units' difference a - b modulo 65536. */
ZKSUPT_API uint32_t SMUCS2Strcmp(const ucs2 *a, const ucs2 *b) ZKSUPT_NOEXCEPT;
/** First unit equal to c (c = 0 finds the terminator), or null. */
ZKSUPT_API ucs2 *SMUCS2Strchr(const ucs2 *s, uint32_t c) ZKSUPT_NOEXCEPT;
/** First occurrence of sub in s, or null; an empty sub gives s. */
ZKSUPT_API ucs2 *SMUCS2Strstr(const ucs2 *s, const ucs2 *sub) ZKSUPT_NOEXCEPT;
/** Number of leading units of s that occur in set. */
ZKSUPT_API uint32_t SMUCS2Strspn(const ucs2 *s, const ucs2 *set) ZKSUPT_NOEXCEPT;
/** Index of the first unit of s that occurs in set, or the length of s. */
ZKSUPT_API uint32_t SMUCS2Strcspn(const ucs2 *s, const ucs2 *set) ZKSUPT_NOEXCEPT;
/** Next token of s, or of the one process-wide saved position when s is null; null at the end. Not thread-safe. */
ZKSUPT_API ucs2 *SMUCS2Strtok(ucs2 *s, const ucs2 *delims) ZKSUPT_NOEXCEPT;
/** SMUCS2Strtok with the same saved position; context is neither read nor written. */
ZKSUPT_API ucs2 *SMUCS2Strtok_s(ucs2 *s, const ucs2 *delims, ucs2 **context) ZKSUPT_NOEXCEPT;
/** Sets every unit before the terminator to c; returns s. */
ZKSUPT_API ucs2 *SMUCS2Strset(ucs2 *s, uint32_t c) ZKSUPT_NOEXCEPT;
/** SMUCS2Strset; size is ignored. */
ZKSUPT_API ucs2 *SMUCS2Strset_s(ucs2 *s, uint32_t size, uint32_t c) ZKSUPT_NOEXCEPT;
/** Writes c into exactly n units from the start, past the terminator if n is larger. */
ZKSUPT_API ucs2 *SMUCS2Strnset(ucs2 *s, uint32_t c, uint32_t n) ZKSUPT_NOEXCEPT;
/** SMUCS2Strnset; size is ignored. */
ZKSUPT_API ucs2 *SMUCS2Strnset_s(ucs2 *s, uint32_t size, uint32_t c, uint32_t n) ZKSUPT_NOEXCEPT;
/** Reverses the units of s in place; returns s. */
ZKSUPT_API ucs2 *SMUCS2Strrev(ucs2 *s) ZKSUPT_NOEXCEPT;

/* Converters. */

/**
 * Converts UCS-2 to UTF-8.
 * @return #SM_STATUS_SUCCESS, #SM_STATUS_BUFFER_TOO_SMALL, #SM_STATUS_BAD_OBJECT for a unit that cannot be converted,
 * #SM_STATUS_INVALID_PARAMETER for a null src or size.
 */
ZKSUPT_API int32_t SMUCS2StrToUTF8Str(char *dst, uint32_t *size, const ucs2 *src) ZKSUPT_NOEXCEPT;
/**
 * Converts UTF-8 to UCS-2.
 * @return #SM_STATUS_SUCCESS, #SM_STATUS_BUFFER_TOO_SMALL, #SM_STATUS_BAD_OBJECT for an invalid sequence,
 * #SM_STATUS_INVALID_PARAMETER for a null src or size.
 */
ZKSUPT_API int32_t SMUTF8StrToUCS2Str(ucs2 *dst, uint32_t *size, const char *src) ZKSUPT_NOEXCEPT;
/**
 * Renders src as ASCII with the escapes `\t`, `\n`, `\r`, `\\` and `\uXXXX`; *size as for the converters.
 * @return #SM_STATUS_SUCCESS, #SM_STATUS_BAD_ARGUMENT for a null src, #SM_STATUS_BUFFER_TOO_SMALL,
 * #SM_STATUS_FAILURE when memory runs out.
 */
ZKSUPT_API int32_t SMUCS2ToEscape(char *dst, uint32_t *size, const ucs2 *src) ZKSUPT_NOEXCEPT;

/* UTF-8 helpers. */

/** Upper-cases each byte in place with toupper of the current locale; returns s. */
ZKSUPT_API char *SMUTF8StrUpperCase(char *s) ZKSUPT_NOEXCEPT;
/** Lower-cases each byte in place with tolower of the current locale; returns s. */
ZKSUPT_API char *SMUTF8StrLowerCase(char *s) ZKSUPT_NOEXCEPT;
/** Reverses the bytes of s in place. */
ZKSUPT_API void SMUTF8Strrev(char *s) ZKSUPT_NOEXCEPT;
/** Zeroes the leading blanks (tab, LF, CR, space) and returns the first other byte; null gives null. */
ZKSUPT_API char *SMUTF8ltrim(char *s) ZKSUPT_NOEXCEPT;
/** Zeroes the trailing blanks (tab, LF, CR, space); returns s. */
ZKSUPT_API char *SMUTF8rtrim(char *s) ZKSUPT_NOEXCEPT;
/** SMUTF8rtrim of the result of SMUTF8ltrim. */
ZKSUPT_API char *SMUTF8trim(char *s) ZKSUPT_NOEXCEPT;
/** A copy of s to free with SMFreeMem; null when s is null or memory runs out. */
ZKSUPT_API char *SMUTF8Strdup(const char *s) ZKSUPT_NOEXCEPT;
/** Compares at most n bytes, folding only A-Z to a-z; the last folded byte pair's difference a - b. */
ZKSUPT_API int32_t SMUTF8Strnicmp(const char *a, const char *b, uint32_t n) ZKSUPT_NOEXCEPT;
/** First place in s where strncasecmp finds sub; s for an empty sub; null if none or an argument is null. */
ZKSUPT_API char *SMUTF8Strstri(const char *s, const char *sub) ZKSUPT_NOEXCEPT;

/**
 * A sized string: growable text owned by the caller's record. Lengths count
 * characters (bytes for UTF-8, units for UCS-2), capacity counts bytes. An
 * appender with a null src or a record without a buffer does nothing; when
 * growing fails the record keeps its old text. Every appender returns the
 * record's buffer after the call. n = 0 appends the whole of src.
 */
typedef struct SMSizedString {
    void *buf;         /**< the text and its terminator; null when not allocated */
    uint32_t capacity; /**< bytes in buf */
    uint32_t length;   /**< characters before the terminator */
} SMSizedString;

/** Allocates bytes (at least 2) with an empty UCS-2 text; null for 0 bytes or no memory. */
ZKSUPT_API void *SMSSUCS2StrAlloc(SMSizedString *rec, uint32_t bytes) ZKSUPT_NOEXCEPT;
/** Allocates bytes with an empty UTF-8 text; null for 0 bytes or no memory. */
ZKSUPT_API void *SMSSUTF8StrAlloc(SMSizedString *rec, uint32_t bytes) ZKSUPT_NOEXCEPT;
/** Appends the whole of src. */
ZKSUPT_API void *SMSSUCS2StrCatUCS2Str(SMSizedString *rec, const ucs2 *src) ZKSUPT_NOEXCEPT;
/** Appends exactly n units of src, terminators included. */
ZKSUPT_API void *SMSSUCS2StrNCatUCS2Str(SMSizedString *rec, const ucs2 *src, uint32_t n) ZKSUPT_NOEXCEPT;
/** Appends the whole of src. */
ZKSUPT_API void *SMSSUTF8StrCatUTF8Str(SMSizedString *rec, const char *src) ZKSUPT_NOEXCEPT;
/** Appends exactly n bytes of src, terminators included. */
ZKSUPT_API void *SMSSUTF8StrNCatUTF8Str(SMSizedString *rec, const char *src, uint32_t n) ZKSUPT_NOEXCEPT;
/** Converts src to UCS-2 and appends as many units as src has bytes (zeros past the converted text). */
ZKSUPT_API void *SMSSUCS2StrCatUTF8Str(SMSizedString *rec, const char *src) ZKSUPT_NOEXCEPT;
/** Converts the whole of src and appends n units of the result; nothing when it does not convert. */
ZKSUPT_API void *SMSSUCS2StrNCatUTF8Str(SMSizedString *rec, const char *src, uint32_t n) ZKSUPT_NOEXCEPT;
/** Converts src to UTF-8 and appends it; only text whose UTF-8 is no longer than src is appended. */
ZKSUPT_API void *SMSSUTF8StrCatUCS2Str(SMSizedString *rec, const ucs2 *src) ZKSUPT_NOEXCEPT;
/** Converts the whole of src into n + 1 bytes and appends n of them; nothing when it does not fit. */
ZKSUPT_API void *SMSSUTF8StrNCatUCS2Str(SMSizedString *rec, const ucs2 *src, uint32_t n) ZKSUPT_NOEXCEPT;
/** Frees the buffer and leaves the record empty. */
ZKSUPT_API void SMSSUCS2StrFree(SMSizedString *rec) ZKSUPT_NOEXCEPT;
/** Frees the buffer and leaves the record empty. */
ZKSUPT_API void SMSSUTF8StrFree(SMSizedString *rec) ZKSUPT_NOEXCEPT;

ZKSUPT_END_DECLS

#endif /* ZKSUPT_TEXT_H */
