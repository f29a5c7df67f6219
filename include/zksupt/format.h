/**
 * @file
 * Formatted output: the library's own bounded printf engine for byte strings.
 *
 * The conversions of the classic BSD printf, with these differences:
 * - integers are 32 bits: 'l' and 'll' read one 32-bit argument, 'h' and 'hh' take the low 16 bits; "%p" prints the
 *   native pointer in hexadecimal after "0x"; an integer precision counts the sign and the "0x" prefix;
 * - 'e' and 'E' print only significant digits unless '#' is given ("%e" of 1.0 is "1e+00"); infinities print "Inf"
 *   and NaNs "NaN";
 * - 'S' takes a UCS-2 string and prints it as UTF-8 (the precision counts bytes); a null 'S' argument prints
 *   "(null)", as a null 's' does; text that cannot be converted ends the output at that directive;
 * - an unknown conversion prints its own character; a '%' at the end of the format ends the output.
 *
 * At most size - 1 bytes are stored; none when size is 0 or above 0x80000000. A non-null dst always gets a
 * terminating 0 after what was stored (at dst[0] when nothing was).
 *
 * Calls from all threads are serialised: the engine may be used from any thread.
 */
#ifndef ZKSUPT_FORMAT_H
#define ZKSUPT_FORMAT_H

#include <stdarg.h>

#include <zksupt/types.h>

ZKSUPT_BEGIN_DECLS

/**
 * Formats the arguments into dst, at most size - 1 bytes and a terminator.
 * @param dst the buffer; null counts the bytes without storing them.
 * @return the number of bytes stored, terminator excluded; with a null dst, the number that would have been stored.
 * @warning Unlike C99 snprintf, the result is never the length the whole output would have needed: a result of
 * size - 1 may mean the output was cut, and it cannot size a second call.
 * @warning 'l' and 'll' read one 32-bit argument, like no size letter: a 64-bit value prints as its low 32 bits at
 * best, and on 32-bit targets it shifts every argument after it. Cast such values to a 32-bit type first.
 */
ZKSUPT_API int32_t SMsnprintf(char *dst, uint32_t size, const char *format, ...) ZKSUPT_NOEXCEPT;
/** SMsnprintf() with the arguments in a va_list; the same result and the same warnings. */
ZKSUPT_API int32_t SMvsnprintf(char *dst, uint32_t size, const char *format, va_list args) ZKSUPT_NOEXCEPT;

ZKSUPT_END_DECLS

#endif /* ZKSUPT_FORMAT_H */
