// Wide text rendered as 7-bit ASCII with escapes, for logs and messages
// (escape.cpp).
#pragma once

#include <cstdint>

#include <zksupt/types.h>

namespace zksupt::text_helpers {

// Escapes TAB, LF, CR and backslash as \t \n \r \\, keeps 0x20-0x7F, and
// writes every other unit as \u and four lower-case hexadecimal digits.
// src null: BAD_ARGUMENT; the work string cannot be had: FAILURE. With size
// given, *size receives the escaped length + 1 and a smaller capacity gives
// BUFFER_TOO_SMALL without copying; then, or with size null unchecked, dst
// (when given) receives the text and its terminator
// (frame::NullBuffer::capacityOnly).
int32_t escapeUcs2(char *dst, uint32_t *size, const ucs2 *src) noexcept;

}  // namespace zksupt::text_helpers
