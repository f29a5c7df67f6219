// Any file contents through the INI reader, the INI writer and the registry
// line parser. Every listed section and key is read back with exactly the
// size the reader asked for; a write either succeeds or leaves the old file
// as it was; registry keys never hold the '=' that ends them, and values
// never start with a blank. Every INI call takes the file's cross-process
// lock, so the library runs attached in an installation of the target's own.
#include <cstdint>
#include <string>
#include <vector>

#include "config/ini.h"
#include "config/registry_reader.h"
#include "file_installation.h"

namespace {

namespace cf = zksupt::config;
using zksupt::fuzz::check;
using zksupt::fuzz::Directory;
using zksupt::fuzz::load;
using zksupt::fuzz::store;

// The names of a listing, or none when the listing failed.
std::vector<std::string> list(const char *section, const std::string &path)
{
    uint32_t size = 2;
    std::vector<char> probe(2);
    int32_t status = cf::readValue(section, nullptr, 1, probe.data(), &size, nullptr, 0, path.c_str(), 1);
    if (status != 0 && status != 0x10)
        return {};
    std::vector<char> buffer(size);
    const uint32_t needed = size;
    status = cf::readValue(section, nullptr, 1, buffer.data(), &size, nullptr, 0, path.c_str(), 1);
    check(status == 0 && size == needed && buffer[size - 1] == '\0');
    std::vector<std::string> names;
    for (uint32_t at = 0; at + 1 < size; at += static_cast<uint32_t>(names.back().size() + 1))
        names.emplace_back(buffer.data() + at);
    return names;
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
    const Directory directory;
    const std::string path = directory.path() + "/fuzz.ini";
    store(path, data, size);

    std::size_t reads = 0;
    for (const std::string &section : list(nullptr, path)) {
        for (const std::string &key : list(section.c_str(), path)) {
            if (++reads > 64)
                break;
            uint32_t needed = 1;
            char probe[1];
            const int32_t status =
                cf::readValue(section.c_str(), key.c_str(), 1, probe, &needed, nullptr, 0, path.c_str(), 1);
            if (status != 0 && status != 0x10)
                continue;
            std::vector<char> value(needed);
            uint32_t got = needed;
            check(cf::readValue(section.c_str(), key.c_str(), 1, value.data(), &got, nullptr, 0, path.c_str(), 1) ==
                      0 &&
                  got == needed && value[got - 1] == '\0');
        }
    }

    // Writes on the same contents: replace, delete a key, delete a section.
    const std::string before(reinterpret_cast<const char *>(data), size);
    for (const char *key : {"fuzzkey", static_cast<const char *>(nullptr)}) {
        store(path, data, size);
        const int32_t status =
            cf::writeValue("a", key, 1, key != nullptr ? "v" : nullptr, key != nullptr ? 2 : 0, path.c_str(), 1);
        if (status != 0)
            check(load(path) == before);
    }

    cf::Registry registry;
    registry.parse(before);
    registry.find("Meridian.installpath");
    for (std::size_t at = 0; at < before.size();) {
        const std::size_t feed = before.find('\n', at);
        const std::size_t end = feed == std::string::npos ? before.size() : feed + 1;
        if (const auto entry = cf::parseRegistryLine(std::string_view(before).substr(at, end - at))) {
            check(entry->first.find('=') == std::string_view::npos);
            check(entry->second.empty() || (entry->second.front() != ' ' && entry->second.front() != '\t'));
        }
        at = end;
    }
    return 0;
}
