// Reading INI values: argument checks, the lock, the typed parse and the
// caller's default.
#include <strings.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string_view>

#include <zksupt/status.h>

#include "config/file_guard.h"
#include "config/ini.h"
#include "config/ini_reader.h"
#include "config/ini_values.h"
#include "config/replace_file.h"
#include "file/stream.h"
#include "frame/owned.h"
#include "frame/size_out.h"

namespace zksupt::config {
namespace {

// Text buffers of the typed reads: numbers and booleans, then byte lists.
constexpr uint32_t kNumberText = 8193;
constexpr uint32_t kByteListText = 8451;
// The largest value readText grows its buffer for.
constexpr uint32_t kTextGrowthLimit = 32768;
constexpr uint32_t kEnumFailure = 0x80000000;

// Opens and scans the file under its lock, after finishing any interrupted
// replacement.
int32_t scanLocked(const char *path, const char *section, const char *key, char *buffer, uint32_t *size,
                   int16_t lockWait) noexcept
{
    const FileGuard guard(path, FileAccess::read, lockWait);
    if (guard.status() != SM_STATUS_SUCCESS)
        return guard.status();
    if (const int32_t recovered = recoverBackup(path); recovered != SM_STATUS_SUCCESS)
        return recovered;
    const file::Stream stream{std::fopen(path, "r")};
    if (!stream)
        return SM_STATUS_FILE_OPEN_FAILED;
    return scanIni(stream.get(), section, key, buffer, size);
}

int32_t readString(const char *section, const char *key, char *value, uint32_t *size, const char *defaultValue,
                   uint32_t defaultSize, const char *path, int16_t lockWait) noexcept
{
    const bool listing = section == nullptr || key == nullptr;
    if (*size < (listing ? 2u : 1u))
        return SM_STATUS_BAD_ARGUMENT;
    const uint32_t capacity = *size;
    const int32_t status = scanLocked(path, section, key, value, size, lockWait);
    if (status == SM_STATUS_SUCCESS || status == SM_STATUS_BUFFER_TOO_SMALL)
        return status;
    if (defaultValue != nullptr && defaultSize != 0) {
        // The default is cut to the buffer and always terminated.
        const uint32_t copied = std::min(defaultSize, capacity);
        std::memcpy(value, defaultValue, copied);
        value[copied - 1] = '\0';
        *size = copied;
    } else {
        *size = 0;
        *value = '\0';
    }
    return status;
}

int32_t readTyped(const char *section, const char *key, uint32_t type, void *value, uint32_t *size,
                  const void *defaultValue, uint32_t defaultSize, const char *path, int16_t lockWait) noexcept
{
    if (section == nullptr || key == nullptr)
        return SM_STATUS_BAD_ARGUMENT;
    const uint32_t width = iniTypeWidth(type);
    const bool byteList = width == 0;
    if (const int32_t status = frame::requireCapacity(size, width); status != SM_STATUS_SUCCESS)
        return status;
    if (type == kIniUcs2 && defaultValue != nullptr && defaultSize != 0 &&
        defaultSize != ucs2Size(defaultValue, defaultSize))
        return SM_STATUS_BAD_ARGUMENT;
    const uint32_t capacity = *size;
    char text[kByteListText];
    uint32_t textSize = byteList ? kByteListText : kNumberText;
    int32_t status = scanLocked(path, section, key, text, &textSize, lockWait);
    if (status == SM_STATUS_SUCCESS)
        status = decodeIniValue(type, text, textSize - 1, value, size);
    if (status == SM_STATUS_SUCCESS || (byteList && status == SM_STATUS_BUFFER_TOO_SMALL))
        return status;
    if (defaultValue != nullptr && defaultSize != 0 && defaultSize >= width) {
        const uint32_t copied = byteList ? std::min(defaultSize, capacity) : width;
        std::memcpy(value, defaultValue, copied);
        *size = copied;
    } else {
        *size = 0;
    }
    return status;
}

}  // namespace

int32_t readValue(const char *section, const char *key, uint32_t type, void *value, uint32_t *size,
                  const void *defaultValue, uint32_t defaultSize, const char *path, int16_t lockWait) noexcept
{
    if (type < kIniText || type > kIniDouble || value == nullptr || size == nullptr || *size == 0 || path == nullptr ||
        *path == '\0')
        return SM_STATUS_BAD_ARGUMENT;
    if (type == kIniText)
        return readString(section, key, static_cast<char *>(value), size, static_cast<const char *>(defaultValue),
                          defaultSize, path, lockWait);
    return readTyped(section, key, type, value, size, defaultValue, defaultSize, path, lockWait);
}

char *readText(const char *section, const char *key, const char *defaultValue, uint32_t *size, const char *path,
               int16_t lockWait) noexcept
{
    uint32_t capacity = kNumberText;
    frame::Owned<char> text = frame::allocateOwned<char>(capacity);
    const uint32_t defaultSize = defaultValue != nullptr ? static_cast<uint32_t>(std::strlen(defaultValue) + 1) : 0;
    const auto read = [&] {
        return readValue(section, key, kIniText, text.get(), &capacity, defaultValue, defaultSize, path, lockWait);
    };
    int32_t status = text != nullptr ? read() : SM_STATUS_NO_MEMORY;
    if (status == SM_STATUS_BUFFER_TOO_SMALL && capacity <= kTextGrowthLimit && frame::reallocateOwned(text, capacity))
        status = read();
    const bool defaulted = defaultSize != 0 && status != SM_STATUS_BUFFER_TOO_SMALL && status != SM_STATUS_NO_MEMORY &&
                           status != SM_STATUS_BAD_ARGUMENT;
    if (status != SM_STATUS_SUCCESS && !defaulted) {
        text.reset();
        capacity = 0;
    }
    if (size != nullptr)
        *size = capacity;
    return text.release();
}

uint32_t readEnum(const char *section, const char *key, const SMEnumRow *rows, uint32_t count, int32_t multi,
                  const char *path, int16_t lockWait) noexcept
{
    if (section == nullptr || key == nullptr || rows == nullptr || path == nullptr || count < 2)
        return kEnumFailure;
    const frame::Owned<char> text{readText(section, key, nullptr, nullptr, path, lockWait)};
    // A value that cannot be read means row 1, a value no row names row 0:
    // callers have long relied on the difference.
    if (!text)
        return rows[1].value;
    const auto matching = [&](const char *word) -> const SMEnumRow * {
        for (uint32_t row = 1; row < count; ++row) {
            if (strcasecmp(word, rows[row].word) == 0)
                return &rows[row];
        }
        return nullptr;
    };
    if (multi != 1) {
        const SMEnumRow *row = matching(text.get());
        return row != nullptr ? row->value : rows[0].value;
    }
    // Comma-separated words, taken as written (" b" is not "b"), up to the
    // first empty one.
    uint32_t result = 0;
    for (char *word = text.get(); *word != '\0' && *word != ',';) {
        char *comma = std::strchr(word, ',');
        if (comma != nullptr)
            *comma = '\0';
        if (const SMEnumRow *row = matching(word))
            result |= row->value;
        if (comma == nullptr)
            break;
        word = comma + 1;
    }
    return result;
}

}  // namespace zksupt::config
