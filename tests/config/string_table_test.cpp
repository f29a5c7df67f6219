// String tables by ID: sections by language, the fall-back to English, the
// result and size rules, the suite's own table in UCS-2 and its OEM range.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include <zksupt/config.h>

#include "support/child.h"
#include "support/sandbox.h"
#include "support/values.h"

namespace {

namespace fs = std::filesystem;

const std::string kTable = "[ASCII EN_US DEFAULT STRING ID SECTION]\n"
                           "0:1F4=Hello\n"
                           "0:1F5=Disk full\rsecond line\n"
                           "0:1F7=" +
                           std::string(2048, 'x') +
                           "\n"
                           "\n"
                           "[MISCELLANEOUS STRING ID SECTION]\n"
                           "407:1F4=Hallo\n"
                           "407:1F6=Nur Deutsch\n"
                           "40C:ABC=Bonjour\n"
                           "409:1F4=never read\n";

// What one lookup gives: the text (or the result when it is 0), the size
// stored, and the language afterwards.
std::string lookup(uint32_t id, std::optional<uint32_t> language, const char *path, uint32_t capacity = 64,
                   bool withBuffer = true)
{
    std::vector<char> buffer(capacity + 1, '?');
    uint32_t size = capacity;
    uint32_t lang = language.value_or(0);
    const uint32_t result =
        SMGetUTF8StrFromIDPathFile(id, language ? &lang : nullptr, path, withBuffer ? buffer.data() : nullptr, &size);
    std::string text = result == 0 ? "0" : std::string(buffer.data());
    if (result != 0 && result != text.size() + 1)
        text += " (result " + std::to_string(result) + ")";
    text += " size " + std::to_string(size);
    if (language)
        text += " lang " + std::to_string(lang);
    return text;
}

TEST(StringTable, SectionsFallBackAndSizes)
{
    const std::string path = zksupt::test::sandbox().writeFile("strings/table.ini", kTable);
    const char *at = path.c_str();
    const std::tuple<uint32_t, std::optional<uint32_t>, uint32_t, std::string> rows[] = {
        {500, 1031, 64, "Hallo size 6 lang 1031"},
        {500, 1033, 64, "Hello size 6 lang 0"},
        {500, 437, 64, "Hello size 6 lang 0"},
        {500, std::nullopt, 64, "Hello size 6"},
        {501, 1031, 64, "Disk full size 10 lang 0"},
        {502, 1031, 64, "Nur Deutsch size 12 lang 1031"},
        {502, 0, 64, "0 size 0 lang 0"},
        {999, 1031, 64, "0 size 0 lang 0"},
        {0xABC, 1036, 64, "Bonjour size 8 lang 1036"},
        {503, 0, 4000, "0 size 0 lang 0"},
        {500, 1031, 6, "Hallo size 6 lang 1031"},
        {500, 1031, 5, "0 size 0 lang 1031"},
    };
    for (const auto &[id, language, capacity, expected] : rows)
        EXPECT_EQ(lookup(id, language, at, capacity), expected) << id << " " << language.value_or(99999);

    EXPECT_EQ(lookup(500, 0, at, 64, false), "0 size 0 lang 0");
    EXPECT_EQ(lookup(500, 0, nullptr, 64), "Invalid Path File Name size 23 lang 0");
    EXPECT_EQ(lookup(500, 0, nullptr, 22), "0 size 0 lang 0");
    uint32_t lang = 1031;
    EXPECT_EQ(SMGetUTF8StrFromIDPathFile(500, &lang, at, nullptr, nullptr), 0u);
    fs::remove_all(fs::path(path).parent_path());
}

// The OEM settings are read once per process, so each case runs in a child
// of its own. The table holds the IDs around the range, each under its own
// text, so that a lookup names the ID it ended at.
TEST(StringTable, SuiteTableInUcs2AndTheOemRange)
{
    const zksupt::test::Sandbox &box = zksupt::test::sandbox();
    std::string table = "[ASCII EN_US DEFAULT STRING ID SECTION]\n";
    for (const uint32_t id : {99u, 100u, 102u, 103u, 1100u, 1102u, 2303u, 2304u, 2309u, 2336u, 2337u, 2341u}) {
        char line[40];
        std::snprintf(line, sizeof line, "0:%X=id%u\n", id, id);
        table += line;
    }
    table += "0:1=abcd\n";
    box.writeFile("suite/meridian/ini/ini/zksdst32.ini", table);
    const std::string settings = "suite/meridian/ini/ini/zkisdy32.ini";

    const auto idsLookedUp = [](const std::vector<uint32_t> &ids) {
        std::string found;
        for (const uint32_t id : ids) {
            ucs2 buffer[32];
            uint32_t size = sizeof buffer;
            if (SMGetUCS2StrFromID(id, nullptr, buffer, &size) == 0)
                return std::string("nothing for ") + std::to_string(id);
            std::u16string text = zksupt::test::units(buffer);
            found += std::string(text.begin(), text.end()) + " ";
        }
        return found;
    };
    const std::tuple<std::string, std::vector<uint32_t>, std::string> cases[] = {
        // Defaults (base 2304, range 32) with an offset: both ends move, the ID beyond does not.
        {"[OEM Configuration]\noffset=5\n", {2303, 2304, 2336, 2337}, "id2303 id2309 id2341 id2337 "},
        {"[OEM Configuration]\nBaseID=100\noemRange=2\noffset=1000\n",
         {99, 100, 102, 103},
         "id99 id1100 id1102 id103 "},
        {"", {2304, 2309}, "id2304 id2309 "},
    };
    for (const auto &[oem, ids, expected] : cases) {
        box.writeFile(settings, oem);
        const int result = zksupt::test::runInChild([&, ids = ids, expected = expected] {
            if (idsLookedUp(ids) != expected)
                return 1;
            // Read once: a changed file is not seen by this process.
            box.writeFile(settings, "[OEM Configuration]\nBaseID=1\noemRange=5000\noffset=1\n");
            return idsLookedUp(ids) == expected ? 0 : 2;
        });
        EXPECT_EQ(result, 0) << oem << " (1: wrong IDs, 2: settings read again)";
    }

    // The size contract, here with the default settings: "abcd" is 5 bytes of UTF-8.
    fs::remove(box.path(settings));
    const std::tuple<bool, uint32_t, uint32_t, uint32_t> sizes[] = {
        {true, 4, 10, 10}, {true, 9, 10, 10}, {true, 10, 10, 10}, {true, 64, 10, 10}, {false, 64, 5, 5},
    };
    for (const auto &[withBuffer, capacity, result, stored] : sizes) {
        std::vector<ucs2> buffer(33, 0xEEEE);
        uint32_t size = capacity;
        EXPECT_EQ(SMGetUCS2StrFromID(1, nullptr, withBuffer ? buffer.data() : nullptr, &size), result) << capacity;
        EXPECT_EQ(size, stored) << capacity;
        if (withBuffer && capacity >= 10) {
            EXPECT_EQ(zksupt::test::units(buffer.data()), u"abcd");
        }
    }
    uint32_t size = 64;
    ucs2 buffer[32];
    EXPECT_EQ(SMGetUCS2StrFromID(7777, nullptr, buffer, &size), 0u);
    EXPECT_EQ(size, 0u);
    fs::remove(box.path("suite/meridian/ini/ini/zksdst32.ini"));
}

}  // namespace
