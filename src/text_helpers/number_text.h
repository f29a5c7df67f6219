// Numbers, times and booleans as text and back (number_text.cpp), shared by
// the INI engine, the typed-value text and the event logs, so that no
// subsystem writes its own number parsing. Output goes through the format
// engine or std::to_chars, never the C library's printf family; parsers are
// bounded by the text's terminator (fuzz/number_text_fuzz).
#pragma once

#include <cstdint>
#include <ctime>

namespace zksupt::text_helpers {

// ---- 64-bit decimal text ----------------------------------------------------

// '-' for negative values, then the digits; dst holds at least 21 bytes.
void int64ToDecimal(char *dst, int64_t value) noexcept;
void uint64ToDecimal(char *dst, uint64_t value) noexcept;

// Leading white space, an optional sign, then digits as long as they last,
// wrapping without overflow checks. The unsigned reading takes only '+';
// a '-' gives 0. Null text gives 0.
int64_t decimalToInt64(const char *text) noexcept;
uint64_t decimalToUint64(const char *text) noexcept;

// ---- Integer, time and double to text ---------------------------------------

// radix 2: binary digits of the 32-bit pattern without leading zeros (0 gives
// ""); 8: octal and 16: lower-case hex of the 32-bit pattern; else signed
// decimal. dst holds at least 33 bytes.
void int32ToRadixText(int32_t value, char *dst, uint32_t radix) noexcept;

// ctime's text of *t in local time without its line feed
// ("Thu Jan  1 00:00:00 1970"), cut to size - 1 bytes: SUCCESS, or FAILURE
// when t or dst is null, size is 0, or the year is outside 0-9999.
int32_t timeToText(const time_t *t, char *dst, uint32_t size) noexcept;

// "%.3f" through the format engine; the bytes stored.
int32_t doubleToText(char *dst, uint32_t size, double value) noexcept;

// ---- Text to numbers -------------------------------------------------------
//
// The number formats and what the text must be before it converts:
inline constexpr uint32_t kNumberDecimal = 0;         // optional sign, digits 0-9 (a sign alone is 0)
inline constexpr uint32_t kNumberOctal = 0x200;       // digits 0-7, at least one
inline constexpr uint32_t kNumberDecimalToo = 0x300;  // as kNumberDecimal
inline constexpr uint32_t kNumberHex = 0x400;         // optional 0x/0X, 1-8 digits (16 for 64 bits)
//
// status (may be null) gets SUCCESS, INVALID_PARAMETER when the format is
// unknown or the text (null included) fails its check, and NOT_SERVED for a
// format the function does not support; the result is then 0. The 32-bit
// conversions read as a 32-bit strtol/strtoul would on every platform: the
// signed one saturates at the int32 limits, the unsigned one negates modulo
// 2^32 and saturates at 4294967295.

int32_t textToInt32(const char *text, uint32_t format, uint32_t *status) noexcept;
uint32_t textToUint32(const char *text, uint32_t format, uint32_t *status) noexcept;
// Decimal only (octal and hex are NOT_SERVED), through decimalToInt64.
int64_t textToInt64(const char *text, uint32_t format, uint32_t *status) noexcept;
// Decimal through decimalToUint64, or hex of up to 16 digits; octal is
// NOT_SERVED.
uint64_t textToUint64(const char *text, uint32_t format, uint32_t *status) noexcept;

// 1 for "true", 0 for "false", any case; anything else 0 with status
// INVALID_PARAMETER.
uint32_t textToBoolean(const char *text, uint32_t *status) noexcept;

// strtod of the text (0 for null).
double textToDouble(const char *text) noexcept;

// textToInt64 first; when that fails, strtod of the text with status SUCCESS.
double textToDoubleByFormat(const char *text, uint32_t format, uint32_t *status) noexcept;

}  // namespace zksupt::text_helpers
