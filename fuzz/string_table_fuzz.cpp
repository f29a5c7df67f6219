// Any file as a string table: every lookup copies at most the capacity it
// is given and reports exactly the bytes it copied, NUL included; the same
// lookup with exactly that capacity copies the same text.
#include <cstdint>
#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include <zksupt/config.h>

#include "file_installation.h"

namespace {

using zksupt::fuzz::check;

constexpr uint32_t kRoom = 0x10000;

// Looks the ID up with room to spare, then with exactly the room it took
// and with one byte less (which must find the string too long).
void lookUp(uint32_t id, uint32_t language, const std::string &path)
{
    std::vector<char> text(kRoom + 1, '\x5A');
    uint32_t asked = language, size = kRoom;
    const uint32_t copied = SMGetUTF8StrFromIDPathFile(id, &asked, path.c_str(), text.data(), &size);
    check(text[kRoom] == '\x5A');
    if (copied == 0)
        return;
    check(copied <= kRoom && size == copied && text[copied - 1] == '\0' && std::strlen(text.data()) == copied - 1);
    check(std::memchr(text.data(), '\n', copied) == nullptr);  // the first line only
    const std::string first(text.data());
    std::fill(text.begin(), text.end(), '\x5A');
    asked = language;
    size = copied;
    check(SMGetUTF8StrFromIDPathFile(id, &asked, path.c_str(), text.data(), &size) == copied);
    check(first == text.data() && text[copied] == '\x5A');
    asked = language;
    size = copied - 1;
    check(SMGetUTF8StrFromIDPathFile(id, &asked, path.c_str(), text.data(), &size) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    static const zksupt::fuzz::Installation installation;
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 4 || size > 0x8000)
        return 0;
    // One path for every run: each new path would add a lock object (and a
    // lock file) that lives until the library stops.
    static const zksupt::fuzz::Directory directory;
    static const std::string path = directory.path() + "/strings.ini";
    zksupt::fuzz::store(path, data + 4, size - 4);
    // The leading bytes choose the IDs and the language asked for.
    const uint32_t languages[] = {0, 1033, 1031, data[0] * 16u + data[1]};
    for (const uint32_t language : languages)
        for (uint32_t id = 0; id < 4; ++id)
            lookUp(id + data[2] * 4u + data[3] * 1024u, language, path);
    return 0;
}
