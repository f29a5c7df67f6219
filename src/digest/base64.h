// Base64 encoding and decoding of byte buffers. Neither side checks sizes:
// callers size the output from the input.
#pragma once

#include <cstdint>

namespace zksupt::digest {

inline constexpr char kBase64Alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Writes the Base64 text of length bytes and a terminator: 4 * ceil(length / 3)
// + 1 bytes. An incomplete last group reads the byte after the input, whose
// high bits reach the last character before the padding; a zero byte there
// (a string's terminator) gives standard Base64. Null alphabet: the standard one.
void base64Encode(char *dst, const uint8_t *src, uint32_t length, const char *alphabet) noexcept;

// Decodes length / 4 groups of text into at most 3 * (length / 4) bytes and a
// 0 byte. Characters outside the standard alphabet are not rejected, a group
// whose first or second character is '=' yields nothing, and padding does not
// end the text.
void base64Decode(uint8_t *dst, const char *src, uint32_t length) noexcept;

}  // namespace zksupt::digest
