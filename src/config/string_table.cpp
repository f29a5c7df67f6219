#include "config/string_table.h"

#include <atomic>
#include <cstring>
#include <string>
#include <string_view>

#include <zksupt/status.h>

#include "config/ini.h"
#include "config/path_table.h"
#include "format/engine.h"
#include "frame/owned.h"
#include "text/convert.h"

namespace zksupt::config {
namespace {

constexpr char kDefaultSection[] = "ASCII EN_US DEFAULT STRING ID SECTION";
constexpr char kOtherSection[] = "MISCELLANEOUS STRING ID SECTION";
constexpr char kInvalidPath[] = "Invalid Path File Name";
constexpr char kNoMemory[] = "Failed to allocate memory";
// A text that does not fit this is not found.
constexpr uint32_t kValueCapacity = 2048;
// The suite's own table, and the UTF-8 text taken from it.
constexpr char kSuiteTable[] = "zksdst32.ini";
constexpr uint32_t kSuiteTextCapacity = 1024;
constexpr uint32_t kDirectoryCapacity = 256;

bool isEnglish(uint32_t language) noexcept
{
    return language == 0 || language == 437 || language == 1033;
}

// The result rule of both lookups: the text when it fits, else nothing, and
// *size tells which. The size a text needs is never reported.
uint32_t copyResult(std::string_view text, char *buffer, uint32_t *size) noexcept
{
    const auto needed = static_cast<uint32_t>(text.size() + 1);
    const uint32_t result = buffer != nullptr && *size >= needed ? needed : 0;
    if (result != 0) {
        std::memcpy(buffer, text.data(), text.size());
        buffer[text.size()] = '\0';
    }
    *size = result;
    return result;
}

// The OEM range of string IDs, read from zkisdy32.ini on the first lookup
// and kept for the process. A base ID of 0 means not read yet; two threads
// that read at once store the same values.
struct OemRange {
    std::atomic<uint32_t> base{0};
    std::atomic<uint32_t> width{0};
    std::atomic<uint32_t> offset{0};
};
constinit OemRange oemRange;

uint32_t oemSetting(const char *key, uint32_t fallback) noexcept
{
    uint32_t value = fallback;
    uint32_t size = sizeof value;
    readNamedValue("OEM Configuration", key, kIniUint32, &value, &size, &fallback, sizeof fallback, "zkisdy32.ini", 1);
    return value;
}

uint32_t remapped(uint32_t id) noexcept
{
    if (oemRange.base.load(std::memory_order_acquire) == 0) {
        oemRange.width.store(oemSetting("oemRange", 32), std::memory_order_relaxed);
        oemRange.offset.store(oemSetting("offset", 0), std::memory_order_relaxed);
        oemRange.base.store(oemSetting("BaseID", 2304), std::memory_order_release);
    }
    const uint64_t base = oemRange.base.load(std::memory_order_acquire);
    const uint64_t last = base + oemRange.width.load(std::memory_order_relaxed);
    return id >= base && id <= last ? id + oemRange.offset.load(std::memory_order_relaxed) : id;
}

}  // namespace

uint32_t stringFromIdPathFile(uint32_t id, uint32_t *language, const char *path, char *buffer, uint32_t *size) noexcept
{
    if (size == nullptr)
        return 0;
    if (path == nullptr)
        return copyResult(kInvalidPath, buffer, size);
    const frame::Owned<char> value = frame::allocateOwned<char>(kValueCapacity);
    if (value == nullptr)
        return copyResult(kNoMemory, buffer, size);
    uint32_t wanted = language != nullptr ? *language : 0;
    for (;;) {
        const bool english = isEnglish(wanted);
        if (english) {
            wanted = 0;
            if (language != nullptr)
                *language = 0;
        }
        char key[32];
        format::formatText(key, sizeof key, "%X:%X", wanted, id);
        uint32_t got = kValueCapacity;
        const int32_t status =
            readValue(english ? kDefaultSection : kOtherSection, key, kIniText, value.get(), &got, nullptr, 0, path, 1);
        if (status == SM_STATUS_SUCCESS) {
            const std::string_view text(value.get(), got - 1);
            return copyResult(text.substr(0, text.find_first_of("\r\n")), buffer, size);
        }
        // A read that ran out of memory says nothing about the language's
        // text: falling back to English would answer in the wrong language.
        if (status == SM_STATUS_NO_MEMORY)
            return copyResult(kNoMemory, buffer, size);
        if (english) {
            *size = 0;
            return 0;
        }
        wanted = 0;
    }
}

uint32_t ucs2StringFromId(uint32_t id, uint32_t *language, ucs2 *buffer, uint32_t *size) noexcept
{
    id = remapped(id);
    char directory[kDirectoryCapacity];
    uint32_t directorySize = sizeof directory;
    uint32_t result = 0;
    if (pathByProductAndType(kMeridianProduct, kIniKind, directory, &directorySize) == SM_STATUS_SUCCESS) {
        char path[kDirectoryCapacity + sizeof "/ini/" + sizeof kSuiteTable];
        format::formatText(path, sizeof path, "%s/ini/%s", directory, kSuiteTable);
        char text[kSuiteTextCapacity];
        uint32_t textSize = sizeof text;
        const uint32_t n = stringFromIdPathFile(id, language, path, text, &textSize);
        if (buffer == nullptr || size == nullptr) {
            result = n;
        } else if (n != 0 && *size >= 2 * n) {
            uint32_t converted = *size;
            result = text::utf8ToUcs2(buffer, &converted, text) == SM_STATUS_SUCCESS ? converted : 0;
        } else if (n != 0) {
            result = 2 * n;
        }
    }
    if (size != nullptr)
        *size = result;
    return result;
}

}  // namespace zksupt::config
