// The INI engine: single values of text configuration files made of
// "[section]" headers and "key=value" lines. Every call locks the file,
// opens it, does its work and closes it; nothing is cached.
#pragma once

#include <cstdint>
#include <string>

#include <zksupt/config.h>

namespace zksupt::config {

// The value types of the typed entry points.
enum IniType : uint32_t {
    kIniText = 1,     // UTF-8 string
    kIniUcs2 = 2,     // UCS-2 string, stored as its bytes
    kIniBinary = 3,   // bytes, stored as "0x01,0x0A"
    kIniBoolean = 4,  // uint16_t, "TRUE" or "FALSE"
    kIniUint32 = 5,
    kIniInt32 = 6,
    kIniUint64 = 7,
    kIniInt64 = 8,
    kIniDouble = 9,
};

// Longest section or key name a write accepts, and longest text value.
inline constexpr std::size_t kIniNameLimit = 255;
inline constexpr uint32_t kIniTextLimit = 8193;

// ini_read.cpp. SMReadINIPathFileValue: one value of the given type, or with type 1 a list
// of the file's sections (null section) or of a section's keys (null key).
int32_t readValue(const char *section, const char *key, uint32_t type, void *value, uint32_t *size,
                  const void *defaultValue, uint32_t defaultSize, const char *path, int16_t lockWait) noexcept;

// ini_writer.cpp. SMWriteINIPathFileValue: writes or replaces a value, deletes a key (null
// value, size 0) or a whole section (type 1, null key). A typed value whose
// line would be longer than a reader takes as one line is 0x108.
int32_t writeValue(const char *section, const char *key, uint32_t type, const void *value, uint32_t size,
                   const char *path, int16_t lockWait) noexcept;

// ini_read.cpp. SMReadINISectionKeyUTF8Value: the value as a new string, or
// null.
char *readText(const char *section, const char *key, const char *defaultValue, uint32_t *size, const char *path,
               int16_t lockWait) noexcept;

// ini_read.cpp. SMReadINIEnums32Value: the value of the row whose word the
// value names.
uint32_t readEnum(const char *section, const char *key, const SMEnumRow *rows, uint32_t count, int32_t multi,
                  const char *path, int16_t lockWait) noexcept;

// ini_names.cpp. The full path of a bare INI file name: the ini directory of
// product 35 followed by "/ini/" and the name. FAILURE when that directory is
// unknown, BUFFER_TOO_SMALL when the path would not fit 256 bytes,
// BAD_ARGUMENT for a null name.
int32_t iniPathOfName(const char *name, std::string &path);

// ini_names.cpp. The plain entry points: as readValue and writeValue on
// iniPathOfName(name).
int32_t readNamedValue(const char *section, const char *key, uint32_t type, void *value, uint32_t *size,
                       const void *defaultValue, uint32_t defaultSize, const char *name, int16_t lockWait) noexcept;
int32_t writeNamedValue(const char *section, const char *key, uint32_t type, const void *value, uint32_t size,
                        const char *name, int16_t lockWait) noexcept;

}  // namespace zksupt::config
