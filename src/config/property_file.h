// Property files: single typed values of flat "key=value" files, turned
// from text and back by the type/value text. Every call takes the file's
// cross-process lock and works straight on the file; nothing is cached.
#pragma once

#include <cstdint>

namespace zksupt::config {

// property_reader.cpp. SMPropertyFileReadValue: the value of the first line
// whose key selects key, parsed as the type code gives it into buffer under
// the in/out size rule; with a null key and type 13, the file's keys as a
// list. Statuses: 0x10F null size or path, the lock's status, 0x104 the file
// cannot be read, 0x107 no such key (*size 0), 0x10, or the parse's status.
// After a failure a default no larger than the capacity is copied (and
// *size becomes its size), and the failure is still returned.
int32_t readProperty(const char *key, uint32_t type, void *buffer, uint32_t *size, const void *defaultValue,
                     uint32_t defaultSize, const char *path, int16_t lockWait) noexcept;

// property_writer.cpp. SMPropertyFileWriteValue: the file with the first
// line whose key selects key (and that value's continuation lines) replaced
// by "key=text". A file without such a line is replaced by an empty file.
// Statuses: 0x10F null key, value or path, the lock's status, 0x104, 7,
// 0x13, -1, 0x110, the text form's status, and those of the replacement.
int32_t writeProperty(const char *key, uint32_t type, const void *value, uint32_t valueSize, const char *path,
                      int16_t lockWait) noexcept;

}  // namespace zksupt::config
