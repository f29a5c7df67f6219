// Key allocation: each key name gets a System V key once, recorded in both
// directions in the key file, and keeps it for good.
#include "ipc/key_file.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <memory>
#include <optional>

#include <zksupt/status.h>

#include "config/ini.h"
#include "config/line_reader.h"
#include "file/stream.h"
#include "ipc/registry.h"
#include "lock/file_lock.h"

namespace zksupt::ipc {
namespace {

// A key name of the numeric section as a key; nothing unless the whole text
// is an unsigned 32-bit decimal number.
std::optional<uint32_t> keyOfText(std::string_view text) noexcept
{
    uint32_t value = 0;
    if (text.empty() || text.front() < '0' || text.front() > '9')
        return std::nullopt;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size())
        return std::nullopt;
    return value;
}

// The largest key the name section records, read from the key file's lines
// in one pass; 0 when there is none. A process killed after recording a
// name's key and before recording the key in the numeric section leaves a
// key that only the name section knows, and that key is taken all the same.
uint32_t largestNamedKey() noexcept
{
    const file::Stream in{std::fopen(keyFilePath(), "r")};
    if (!in)
        return 0;
    auto lines = std::make_unique<config::LineReader>(in.get());
    std::string_view piece;
    bool inNames = false;
    uint32_t largest = 0;
    while (lines->next(piece)) {
        const std::string_view line = config::skipBlanks(config::asText(piece));
        if (const config::Header header = config::parseHeader(line); header.isHeader) {
            inNames = !header.malformed && header.name == kNameKeySection;
            continue;
        }
        const std::size_t equals = line.find('=');
        if (!inNames || equals == std::string_view::npos)
            continue;
        std::string_view value = line.substr(equals + 1);
        value = value.substr(0, value.find_first_of("\r\n"));
        if (const auto key = keyOfText(value); key && *key > largest)
            largest = *key;
    }
    return largest;
}

// One more than the largest key given so far (and than the first key);
// 0 when the numeric section cannot be read or the keys run out.
uint32_t nextKey() noexcept
{
    const NameList list = readSectionNames(kNumericKeySection, 4);
    const bool noKeys = list.status == SM_STATUS_SECTION_NOT_FOUND || list.status == SM_STATUS_KEY_NOT_FOUND;
    if (!noKeys && list.status != SM_STATUS_SUCCESS)
        return 0;
    const uint32_t named = largestNamedKey();
    if (noKeys && named == 0)
        return kFirstKey;
    uint32_t largest = std::max(kFirstKey, named);
    list.forEach([&largest](std::string_view name) {
        if (const auto key = keyOfText(name); key && *key > largest)
            largest = *key;
    });
    return largest == UINT32_MAX ? 0 : largest + 1;
}

// Looks the key name up, or records a new key for it. Runs under the
// key-file lock.
uint32_t lookUpOrAllocate(const char *keyName) noexcept
{
    const char *file = keyFilePath();
    uint32_t key = 0;
    uint32_t size = sizeof key;
    const int32_t status =
        config::readValue(kNameKeySection, keyName, config::kIniUint32, &key, &size, nullptr, 0, file, 1);
    if (status == SM_STATUS_SUCCESS)
        return key;
    key = status == SM_STATUS_FILE_NOT_FOUND || status == SM_STATUS_FILE_OPEN_FAILED ? kFirstKey : nextKey();
    if (key == 0)
        return 0;
    if (config::writeValue(kNameKeySection, keyName, config::kIniUint32, &key, sizeof key, file, 1) !=
        SM_STATUS_SUCCESS)
        return 0;
    char decimal[17];
    std::snprintf(decimal, sizeof decimal, "%u", key);
    config::writeValue(kNumericKeySection, decimal, config::kIniText, keyName,
                       static_cast<uint32_t>(std::strlen(keyName) + 1), file, 1);
    return key;
}

}  // namespace

NameList readSectionNames(const char *section, uint32_t initial) noexcept
{
    NameList list{frame::allocateOwned<char>(initial), initial, SM_STATUS_NO_MEMORY};
    if (!list.names)
        return list;
    uint32_t &size = list.size;
    list.status =
        config::readValue(section, nullptr, config::kIniText, list.names.get(), &size, nullptr, 0, keyFilePath(), 1);
    if (list.status == SM_STATUS_BUFFER_TOO_SMALL) {
        list.names = frame::allocateOwned<char>(size);
        if (!list.names) {
            list.status = SM_STATUS_NO_MEMORY;
            return list;
        }
        list.status = config::readValue(section, nullptr, config::kIniText, list.names.get(), &size, nullptr, 0,
                                        keyFilePath(), 1);
    }
    if (list.status != SM_STATUS_SUCCESS) {
        list.names.reset();
        list.size = 0;
    }
    return list;
}

uint32_t keyOf(const char *keyName) noexcept
{
    if (keyName == nullptr || keyFilePath() == nullptr)
        return 0;
    // The key file is read and written under its own lock, taken exclusively
    // where possible; a process that may only read the lock file still
    // allocates, under the shared lock.
    lock::FileLock *lock = lock::getFileLock(keyFileLockPath());
    if (lock == nullptr)
        return 0;
    if (lock::acquireFileLock(lock, lock::kExclusive, 1) != SM_STATUS_SUCCESS &&
        lock::acquireFileLock(lock, lock::kShared, 1) != SM_STATUS_SUCCESS)
        return 0;
    const uint32_t key = lookUpOrAllocate(keyName);
    lock::releaseFileLock(lock);
    lock::freeFileLock(lock);
    return key;
}

}  // namespace zksupt::ipc
