// Typed INI values as the text of their line, and back.
#pragma once

#include <cstdint>
#include <string>

namespace zksupt::config {

// The bytes a typed read stores: 2, 4 or 8; 0 for the byte-list types and
// for text.
uint32_t iniTypeWidth(uint32_t type) noexcept;

// The text that value (size bytes, of the given type 2 to 9) is written as:
// SUCCESS, BAD_LENGTH when the size does not fit the type, NO_MEMORY when the
// byte list cannot be made. Growing the text itself may throw bad_alloc,
// which the write entry point answers with NO_MEMORY.
int32_t encodeIniValue(uint32_t type, const void *value, uint32_t size, std::string &text);

// The size of the UCS-2 string at units, terminator included, when it ends
// within limit bytes; else 0.
uint32_t ucs2Size(const void *units, uint32_t limit) noexcept;

// Parses text (writable: the byte-list parser cuts it) as a value of type 2
// to 9 into value, *size the capacity on entry and the bytes stored on
// return. 0; 0x108 for a word that is neither TRUE nor FALSE or a byte list
// of no bytes; -1 for a byte list that does not parse; 0x10 (with the bytes
// needed) when the bytes do not fit.
int32_t decodeIniValue(uint32_t type, char *text, uint32_t length, void *value, uint32_t *size) noexcept;

}  // namespace zksupt::config
