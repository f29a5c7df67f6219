// Binary values as text and back (byte_text.cpp): byte lists ("0x01,0xFF")
// for INI values and typed values, hex strings ("01FF"), and the reading of
// one hexadecimal field as scanf's "%x" reads it. Parsers never read past the
// text's terminator nor past the size they are given (fuzz/number_text_fuzz).
// Heap results are from malloc.
#pragma once

#include <cstdint>

namespace zksupt::text_helpers {

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

// Reads [p, end) as scanf "%x" reads a field: white space, an optional sign,
// an optional "0x", then hex digits (a "0x" without digits reads as the 0).
// A '-' negates modulo 2^32, and a magnitude too large for 32 bits reads as
// 0xFFFFFFFF. False when no digit was read.
bool scanHex(const char *p, const char *end, uint32_t *value) noexcept;

}  // namespace zksupt::text_helpers
