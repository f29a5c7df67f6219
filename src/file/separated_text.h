// Separated values: one separator swapped for another, so that a list such
// as "a|b|c" can be walked as consecutive NUL-terminated pieces.
#pragma once

#include <cstdint>

namespace zksupt::file {

// SMUTF8ConvertXSVToYSV: a malloc'd copy of text with every `from` replaced
// by `to`, then one more `to` and a NUL; *size (optional) gets its bytes.
// Null for null text or no memory.
char *convertSeparators(const char *text, uint32_t *size, char from, char to) noexcept;

}  // namespace zksupt::file
