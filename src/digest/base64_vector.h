// Base64 by 512-bit vectors (AVX-512 VBMI) on x86-64 processors that have
// them, chosen at run time; elsewhere these do nothing and the table-driven
// code does all the work. Both handle only whole blocks that need none of
// the special rules, so the results are those of the table-driven code.
#pragma once

#include <cstdint>

namespace zksupt::digest {

// Encodes whole groups 48 bytes at a time while at least 64 bytes of input
// remain (no byte past the input is read), advancing all three arguments.
// digits is the 64-character alphabet.
void encodeVector(char *&dst, const uint8_t *&src, uint32_t &length, const char *digits) noexcept;

// Decodes 16 groups (64 characters) at a time while at least 16 remain and
// the next 16 hold only characters of the standard alphabet (no padding),
// advancing dst and text; returns the number of groups left. Only the 48
// bytes a block decodes to are written.
uint32_t decodeVector(uint8_t *&dst, const unsigned char *&text, uint32_t groups) noexcept;

}  // namespace zksupt::digest
