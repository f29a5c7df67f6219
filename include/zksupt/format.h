/* Formatted output: the library's own bounded printf engine for byte strings. */
#ifndef ZKSUPT_FORMAT_H
#define ZKSUPT_FORMAT_H

#include <stdarg.h>

#include <zksupt/types.h>

ZKSUPT_BEGIN_DECLS

/*
 * The conversions of the classic BSD printf, with these differences:
 * - integers are 32 bits: 'l' and 'll' read one 32-bit argument, 'h' and 'hh'
 *   take the low 16 bits; "%p" prints the native pointer in hexadecimal after
 *   "0x"; an integer precision counts the sign and the "0x" prefix;
 * - 'e' and 'E' print only significant digits unless '#' is given ("%e" of
 *   1.0 is "1e+00"); infinities print "Inf" and NaNs "NaN";
 * - 'S' takes a UCS-2 string and prints it as UTF-8 (the precision counts
 *   bytes); a null 'S' argument prints "(null)", as a null 's' does; text
 *   that cannot be converted ends the output at that directive;
 * - an unknown conversion prints its own character; a '%' at the end of the
 *   format ends the output.
 * At most size - 1 bytes are stored; none when size is 0 or above 0x80000000.
 * A non-null dst always gets a terminating 0 after what was stored (at dst[0]
 * when nothing was). The result is the number of bytes stored, never the
 * length the whole output would have needed; with dst null it is the number
 * that would have been stored. Calls from all threads are serialised.
 */

/* Formats the arguments into dst; returns the bytes stored, terminator excluded. */
ZKSUPT_API int32_t SMsnprintf(char *dst, uint32_t size, const char *format, ...) ZKSUPT_NOEXCEPT;
/* SMsnprintf with the arguments in a va_list. */
ZKSUPT_API int32_t SMvsnprintf(char *dst, uint32_t size, const char *format, va_list args) ZKSUPT_NOEXCEPT;

ZKSUPT_END_DECLS

#endif /* ZKSUPT_FORMAT_H */
