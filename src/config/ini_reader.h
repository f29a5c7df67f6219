// Finding one value, or listing names, in an open INI file.
#pragma once

#include <cstdint>
#include <cstdio>

namespace zksupt::config {

// With a section and a key: the value's text (up to its line feed) into
// buffer when its size fits *size. With a null section: the names of all
// sections; with a null key: the keys of the section; each list is
// NUL-terminated names and one more NUL. *size becomes the size needed on 0
// and 0x10, 0 on other failures. Statuses: 0, 0x10, 0x105 malformed header or
// read error, 0x106 no such section (or none), 0x107 no such key (or none).
int32_t scanIni(std::FILE *file, const char *section, const char *key, char *buffer, uint32_t *size) noexcept;

}  // namespace zksupt::config
