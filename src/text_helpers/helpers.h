// The small text conversions that the INI engine, the type/value translation,
// the event logs and the XML writer share: hex dumps, byte lists, number text
// in several radices and sizes, boolean and time text. One function per job,
// so that no subsystem writes its own number parsing or hex dump.
//
// Parsers never read past the text's terminator nor past the size they are
// given. Heap results are from malloc (free with SMFreeMem).
#pragma once

#include <cstdint>
#include <ctime>

#include <zksupt/text.h>

namespace zksupt::text {

// ---- Hex dumps -------------------------------------------------------------
//
// One line per run of 16 bytes (the last may be shorter), 81 characters and
// CR LF: "0x%08X: " of base + offset, the bytes' upper-case digits with ':'
// before the 5th, 9th and 13th byte, the bytes themselves from column 62
// (0x20-0x7A as they are, anything else '.'). No data or len 0: no lines.

// Appends the lines to a UTF-8 sized string: 0, or -1 when one could not be
// appended (no buffer, no memory).
int32_t hexDumpAppend(SMSizedString *dst, const uint8_t *data, uint32_t len, uint32_t base) noexcept;

// The dump as new text. *len: in the data bytes, out the text bytes with the
// terminator. Null when len is null or memory runs out.
char *hexDumpText(const uint8_t *data, uint32_t *len, uint32_t base) noexcept;

// ---- Byte lists and hex strings ---------------------------------------------

// "0x01,0xFF": "0x%02X," per byte without the last comma. *len: in the bytes,
// out the text bytes with the terminator (5 per byte; 1 for no bytes).
// Null when data or len is null or memory runs out.
char *byteListText(const uint8_t *data, uint32_t *len) noexcept;

// Inverse of byteListText. *len: in the text size with its terminator, which
// must be a multiple of 5 (else null); out the bytes stored. Tokens between
// commas are read as by scanf "%x" and parsing stops at the first that holds
// no value or once size / 5 bytes are stored; a value above 255 gives null
// and *len 0. Like strtok, the comma after each token read becomes a 0.
uint8_t *byteListParse(char *text, uint32_t *len) noexcept;

// "01FF": two upper-case digits per byte. *len: in the bytes, out 2 * len + 1.
char *hexStringText(const uint8_t *data, uint32_t *len) noexcept;

// Inverse of hexStringText. *len: in the text size, out the bytes. Pairs of
// characters are read as by scanf "%x" up to the first pair without a value
// (or the end of the text); a value above 255 gives null.
uint8_t *hexStringParse(const char *text, uint32_t *len) noexcept;

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
// ("Thu Jan  1 00:00:00 1970"), cut to size - 1 bytes: 0, or -1 when t or dst
// is null, size is 0, or the year is outside 0-9999.
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
// status (may be null) gets 0 on success, 0x10F when the format is unknown or
// the text (null included) fails its check, and 1 for a format the function
// does not support; the result is then 0. The 32-bit conversions read as a
// 32-bit strtol/strtoul would on every platform: the signed one saturates at
// the int32 limits, the unsigned one negates modulo 2^32 and saturates at
// 4294967295.

int32_t textToInt32(const char *text, uint32_t format, uint32_t *status) noexcept;
uint32_t textToUint32(const char *text, uint32_t format, uint32_t *status) noexcept;
// Decimal only (octal and hex give status 1), through decimalToInt64.
int64_t textToInt64(const char *text, uint32_t format, uint32_t *status) noexcept;
// Decimal through decimalToUint64, or hex of up to 16 digits; octal gives 1.
uint64_t textToUint64(const char *text, uint32_t format, uint32_t *status) noexcept;

// 1 for "true", 0 for "false", any case; anything else 0 with status 0x10F.
uint32_t textToBoolean(const char *text, uint32_t *status) noexcept;

// strtod of the text (0 for null).
double textToDouble(const char *text) noexcept;

// textToInt64 first; when that fails, strtod of the text with status 0.
double textToDoubleByFormat(const char *text, uint32_t format, uint32_t *status) noexcept;

}  // namespace zksupt::text
