// The converters between UTF-8 and UCS-2 that all text passes through.
//
// *size counts bytes: on entry the capacity of dst, on success the bytes
// written including the terminator (1 byte for UTF-8, 2 for UCS-2). A null
// dst asks for the size of the whole result and ignores the capacity. src or
// size null: 0x10F. Too small: 0x10. Text that cannot be converted: 0x101.
// After a failure *size is unchanged and dst holds what was converted before
// it, unterminated; a character that did not fit wrote none of its units.
// Neither allocates or reads past the source's terminator.
#pragma once

#include <cstdint>

#include <zksupt/types.h>

namespace zksupt::text {

// Units outside 0xD800-0xDFFF are code points. Every unit inside it stands
// for the pair that opens the text (see decodeOpeningPair).
int32_t ucs2ToUtf8(char *dst, uint32_t *size, const ucs2 *src) noexcept;

// Accepts one- to six-byte sequences without checking continuation bytes;
// code points above 0xFFFF become two units of the library's own split.
int32_t utf8ToUcs2(ucs2 *dst, uint32_t *size, const char *src) noexcept;

}  // namespace zksupt::text
