// Wide text rendered as 7-bit ASCII with escapes, for logs and messages.
#pragma once

#include <cstdint>

#include <zksupt/types.h>

namespace zksupt::text {

// Escapes TAB, LF, CR and backslash as \t \n \r \\, keeps 0x20-0x7F, and
// writes every other unit as \u and four lower-case hexadecimal digits.
// src null: 2; the work buffer cannot be had: -1. With size given, *size
// receives the escaped length + 1 and a smaller capacity on entry gives 0x10
// without copying; then, or with size null unchecked, dst (when given)
// receives the text and its terminator.
int32_t escapeUcs2(char *dst, uint32_t *size, const ucs2 *src) noexcept;

}  // namespace zksupt::text
