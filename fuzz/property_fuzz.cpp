// Any file contents through the property-file reader and writer. The key
// list is read with exactly the size it asked for; each listed key reads as
// text with exactly its size, and as every fixed-width type without passing
// the capacity; writing a listed key then reads back what was written.
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "config/property_file.h"
#include "file_installation.h"

namespace {

namespace cf = zksupt::config;
using zksupt::fuzz::check;

constexpr uint32_t kText = 13;
constexpr std::size_t kKeysRead = 32;

std::vector<std::string> keysOf(const std::string &path)
{
    uint32_t size = 0;
    int32_t status = cf::readProperty(nullptr, kText, nullptr, &size, nullptr, 0, path.c_str(), 1);
    check(status == 0x10 || (status == 0x107 && size == 0));
    if (status != 0x10)
        return {};
    std::vector<char> list(size);
    const uint32_t needed = size;
    status = cf::readProperty(nullptr, kText, list.data(), &size, nullptr, 0, path.c_str(), 1);
    check(status == 0 && size == needed && size >= 2 && list[size - 1] == '\0' && list[size - 2] == '\0');
    std::vector<std::string> keys;
    for (uint32_t at = 0; at + 1 < size; at += static_cast<uint32_t>(keys.back().size() + 1))
        keys.emplace_back(list.data() + at);
    return keys;
}

// The key's value as text: found, and read whole with exactly the size asked.
std::string textOf(const std::string &key, const std::string &path)
{
    uint32_t size = 0;
    check(cf::readProperty(key.c_str(), kText, nullptr, &size, nullptr, 0, path.c_str(), 1) == 0x10 && size >= 1);
    std::vector<char> text(size + 1, '\x5A');
    const uint32_t needed = size;
    check(cf::readProperty(key.c_str(), kText, text.data(), &size, nullptr, 0, path.c_str(), 1) == 0);
    check(size == needed && text[size - 1] == '\0' && std::strlen(text.data()) == size - 1 && text[size] == '\x5A');
    return text.data();
}

void readTyped(const std::string &key, const std::string &path)
{
    for (const uint32_t type : {0u, 1u, 3u, 4u, 7u, 0x407u, 8u, 9u, 10u, 12u, 14u, 15u, 16u}) {
        uint8_t buffer[65];
        std::memset(buffer, 0xA5, sizeof buffer);
        uint32_t size = 64;
        const int32_t status = cf::readProperty(key.c_str(), type, buffer, &size, nullptr, 0, path.c_str(), 1);
        check(status != 0 || size <= 64);
        check(buffer[64] == 0xA5);
    }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    static const zksupt::fuzz::Installation installation;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size > 0x8000)
        return 0;
    const zksupt::fuzz::Directory directory;
    const std::string path = directory.path() + "/fuzz.properties";
    zksupt::fuzz::store(path, data, size);

    const std::vector<std::string> keys = keysOf(path);
    for (std::size_t i = 0; i < keys.size() && i < kKeysRead; ++i) {
        check(!keys[i].empty());
        textOf(keys[i], path);
        readTyped(keys[i], path);
    }
    if (!keys.empty()) {
        // The line that selects the key is the one written, so it reads back.
        const char value[] = "written";
        check(cf::writeProperty(keys.front().c_str(), kText, value, sizeof value, path.c_str(), 1) == 0);
        check(textOf(keys.front(), path) == value);
    }
    return 0;
}
