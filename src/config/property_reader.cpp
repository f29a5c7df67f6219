// Reading property files: one typed value, or the list of keys.
#include <cstring>
#include <string_view>

#include <zksupt/status.h>

#include "config/file_guard.h"
#include "config/name_listing.h"
#include "config/property_file.h"
#include "config/property_lines.h"
#include "config/replace_file.h"
#include "file/stream.h"
#include "sdo/type_text.h"

namespace zksupt::config {
namespace {

// The type code that asks a null key for the list of keys (UTF-8 text).
constexpr uint32_t kKeyListType = sdo::kTypeUtf8;

int32_t listKeys(PropertyLines &lines, char *buffer, uint32_t *size)
{
    NameListing listing(buffer, *size);
    PropertyEntry entry;
    while (lines.next(entry))
        listing.add(entry.key);
    if (lines.failed()) {
        *size = 0;
        return SM_STATUS_FAILURE;
    }
    return listing.finish(size, SM_STATUS_KEY_NOT_FOUND);
}

int32_t readValue(PropertyLines &lines, const char *key, uint32_t type, void *buffer, uint32_t *size)
{
    PropertyEntry entry;
    while (lines.next(entry)) {
        if (propertyKeyMatches(entry.key, key))
            return sdo::textToTypeValue(entry.value.c_str(), buffer, size, type);
    }
    *size = 0;
    return lines.failed() ? SM_STATUS_FAILURE : SM_STATUS_KEY_NOT_FOUND;
}

int32_t readLocked(const char *key, uint32_t type, void *buffer, uint32_t *size, const char *path,
                   int16_t lockWait) noexcept
{
    const FileGuard guard(path, FileAccess::read, lockWait);
    if (guard.status() != SM_STATUS_SUCCESS)
        return guard.status();
    if (const int32_t recovered = recoverBackup(path); recovered != SM_STATUS_SUCCESS)
        return recovered;
    const file::Stream stream{std::fopen(path, "re")};
    if (!stream)
        return SM_STATUS_FILE_OPEN_FAILED;
    try {
        PropertyLines lines(stream.get());
        if (key != nullptr)
            return readValue(lines, key, type, buffer, size);
        return type == kKeyListType ? listKeys(lines, static_cast<char *>(buffer), size) : SM_STATUS_SUCCESS;
    } catch (...) {
        return SM_STATUS_NO_MEMORY;
    }
}

}  // namespace

int32_t readProperty(const char *key, uint32_t type, void *buffer, uint32_t *size, const void *defaultValue,
                     uint32_t defaultSize, const char *path, int16_t lockWait) noexcept
{
    if (size == nullptr || path == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    const uint32_t capacity = *size;
    const int32_t status = readLocked(key, type, buffer, size, path, lockWait);
    if (status != SM_STATUS_SUCCESS && defaultValue != nullptr && buffer != nullptr && defaultSize <= capacity) {
        std::memcpy(buffer, defaultValue, defaultSize);
        *size = defaultSize;
    }
    return status;
}

}  // namespace zksupt::config
