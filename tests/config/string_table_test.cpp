// String tables by ID: sections by language, the fall-back to English, the
// result and size rules, the suite's own table in UCS-2 and its OEM range.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <string>
#include <tuple>
#include <vector>

#include <zksupt/config.h>

#include "support/child.h"
#include "support/sandbox.h"
#include "support/values.h"

namespace {

namespace fs = std::filesystem;

TEST(StringTable, SectionsFallBackAndSizes)
{
    const std::string path = zksupt::test::sandbox().writeFile(
        "strings/table.ini", "[ASCII EN_US DEFAULT STRING ID SECTION]\n0:1F4=Hello\n0:1F5=Disk full\rsecond\n0:1F7=" +
                                 std::string(2048, 'x') +
                                 "\n\n[MISCELLANEOUS STRING ID SECTION]\n407:1F4=Hallo\n407:1F6=Nur Deutsch\n"
                                 "40C:ABC=Bonjour\n409:1F4=never read\n");
    // ID, language (-1: a null pointer), path, capacity; the text or result, *size and the language after.
    const std::tuple<uint32_t, int64_t, const char *, uint32_t, std::string> rows[] = {
        {500, 1031, path.c_str(), 64, "Hallo 6 1031"},
        {500, 1033, path.c_str(), 64, "Hello 6 0"},
        {500, 437, path.c_str(), 64, "Hello 6 0"},
        {500, -1, path.c_str(), 64, "Hello 6 -1"},
        {501, 1031, path.c_str(), 64, "Disk full 10 0"},
        {502, 1031, path.c_str(), 64, "Nur Deutsch 12 1031"},
        {502, 0, path.c_str(), 64, "0 0 0"},
        {999, 1031, path.c_str(), 64, "0 0 0"},
        {0xABC, 1036, path.c_str(), 64, "Bonjour 8 1036"},
        {503, 0, path.c_str(), 4000, "0 0 0"},
        {500, 1031, path.c_str(), 6, "Hallo 6 1031"},
        {500, 1031, path.c_str(), 5, "0 0 1031"},
        {500, 0, path.c_str(), 0, "0 0 0"},
        {500, 0, nullptr, 64, "Invalid Path File Name 23 0"},
        {500, 0, nullptr, 22, "0 0 0"},
    };
    for (const auto &[id, language, table, capacity, expected] : rows) {
        std::vector<char> buffer(capacity + 1, '?');
        uint32_t size = capacity, lang = static_cast<uint32_t>(language);
        const uint32_t result =
            SMGetUTF8StrFromIDPathFile(id, language < 0 ? nullptr : &lang, table, buffer.data(), &size);
        const std::string text = result == 0 ? "0" : std::string(buffer.data(), result - 1);
        EXPECT_EQ(text + " " + std::to_string(size) + " " + std::to_string(language < 0 ? -1 : int64_t{lang}), expected)
            << id << " " << language;
    }
    uint32_t size = 64;
    EXPECT_EQ(SMGetUTF8StrFromIDPathFile(500, nullptr, path.c_str(), nullptr, &size), 0u);
    EXPECT_EQ(size, 0u);
    EXPECT_EQ(SMGetUTF8StrFromIDPathFile(500, nullptr, path.c_str(), nullptr, nullptr), 0u);
    fs::remove_all(fs::path(path).parent_path());
}

// The OEM settings are read once per process, so each case runs in a child.
// The table holds the IDs around the range, each under a text naming it.
TEST(StringTable, SuiteTableInUcs2AndTheOemRange)
{
    const zksupt::test::Sandbox &box = zksupt::test::sandbox();
    std::string table = "[ASCII EN_US DEFAULT STRING ID SECTION]\n0:1=abcd\n";
    for (const uint32_t id : {99u, 100u, 102u, 103u, 1100u, 1102u, 2303u, 2304u, 2309u, 2336u, 2337u, 2341u}) {
        char line[40];
        std::snprintf(line, sizeof line, "0:%X=id%u\n", id, id);
        table += line;
    }
    const std::string tablePath = box.writeFile("suite/meridian/ini/ini/zksdst32.ini", table);
    const std::string settings = "suite/meridian/ini/ini/zkisdy32.ini";
    const auto lookedUp = [](const std::vector<uint32_t> &ids) {
        std::string found;
        for (const uint32_t id : ids) {
            ucs2 buffer[32];
            uint32_t size = sizeof buffer;
            SMGetUCS2StrFromID(id, nullptr, buffer, &size);
            const std::u16string text = size != 0 ? zksupt::test::units(buffer) : u"none";
            found += std::string(text.begin(), text.end()) + " ";
        }
        return found;
    };
    const std::tuple<std::string, std::vector<uint32_t>, std::string> cases[] = {
        // The default base 2304 and range 32: both ends move by the offset, the IDs beside them do not.
        {"[OEM Configuration]\noffset=5\n", {2303, 2304, 2336, 2337}, "id2303 id2309 id2341 id2337 "},
        {"[OEM Configuration]\nBaseID=100\noemRange=2\noffset=1000\n",
         {99, 100, 102, 103},
         "id99 id1100 id1102 id103 "},
        {"", {2304, 2309}, "id2304 id2309 "},
    };
    for (const auto &[oem, ids, expected] : cases) {
        box.writeFile(settings, oem);
        const int result = zksupt::test::runInChild([&, ids = ids, expected = expected] {
            if (lookedUp(ids) != expected)
                return 1;
            box.writeFile(settings, "[OEM Configuration]\nBaseID=1\noemRange=5000\noffset=1\n");
            return lookedUp(ids) == expected ? 0 : 2;
        });
        EXPECT_EQ(result, 0) << oem << " (1: wrong IDs, 2: the settings were read again)";
    }
    fs::remove(box.path(settings));

    // "abcd" is 5 bytes of UTF-8: capacity, whether a buffer is given; result and *size.
    const std::tuple<uint32_t, uint32_t, bool, uint32_t> sizes[] = {
        {1, 4, true, 10}, {1, 9, true, 10}, {1, 10, true, 10}, {1, 64, false, 5}, {7777, 64, true, 0},
    };
    for (const auto &[id, capacity, withBuffer, expected] : sizes) {
        std::vector<ucs2> buffer(33, 0xEEEE);
        uint32_t size = capacity;
        EXPECT_EQ(SMGetUCS2StrFromID(id, nullptr, withBuffer ? buffer.data() : nullptr, &size), expected) << capacity;
        EXPECT_EQ(size, expected) << capacity;
        if (withBuffer && expected == 10 && capacity >= 10)
            EXPECT_EQ(zksupt::test::units(buffer.data()), u"abcd");
        else
            EXPECT_EQ(buffer[0], 0xEEEE) << capacity;
    }
    fs::remove(tablePath);
}

}  // namespace
