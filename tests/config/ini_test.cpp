// The INI engine: files after each write, reads, types, refusals, failed copies.
#include <gtest/gtest.h>

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include <zksupt/config.h>
#include <zksupt/status.h>

#include "support/child.h"
#include "support/sandbox.h"
#include "support/status_names.h"
#include "support/values.h"

namespace {

namespace fs = std::filesystem;
using zksupt::test::Bytes;
using zksupt::test::bytesOf;
using zksupt::test::readFile;
using zksupt::test::statusName;

class Ini : public ::testing::Test {
  protected:
    Ini() { fs::create_directories(dir_); }
    ~Ini() override { fs::remove_all(dir_); }

    std::string at(const std::string &name) const { return dir_ + "/" + name; }
    void put(const std::string &name, const std::string &text) const
    {
        std::ofstream(at(name), std::ios::binary) << text;
    }
    std::vector<std::string> names() const
    {
        std::vector<std::string> found;
        for (const auto &entry : fs::directory_iterator(dir_))
            found.push_back(entry.path().filename().string());
        std::sort(found.begin(), found.end());
        return found;
    }

    int32_t write(const char *section, const char *key, const char *value, const std::string &name = "t.ini") const
    {
        const uint32_t size = value != nullptr ? static_cast<uint32_t>(std::strlen(value) + 1) : 0;
        return SMWriteINIPathFileValue(section, key, 1, value, size, at(name).c_str(), 1);
    }

    std::string read(const char *section, const char *key, uint32_t capacity = 9000) const
    {
        std::string buffer(capacity, '?');
        uint32_t size = capacity;
        const int32_t status =
            SMReadINIPathFileValue(section, key, 1, buffer.data(), &size, nullptr, 0, at("t.ini").c_str(), 1);
        if (status != SM_STATUS_SUCCESS)
            return statusName(status) + " size " + std::to_string(size);
        return buffer.substr(0, size - 1);
    }

    // A typed read of t.ini: the status and *size, and the bytes *size names.
    std::tuple<std::string, Bytes> readTyped(const char *key, uint32_t type, uint32_t capacity) const
    {
        Bytes value(capacity + 1, 0xEE);
        uint32_t size = capacity;
        const int32_t status =
            SMReadINIPathFileValue("s", key, type, value.data(), &size, nullptr, 0, at("t.ini").c_str(), 1);
        EXPECT_EQ(value[capacity], 0xEE) << "written past the capacity";
        value.resize(std::min(size, capacity));
        return {statusName(status) + " size " + std::to_string(size), value};
    }

    const std::string dir_ = zksupt::test::sandbox().path("ini-tests");
};

TEST_F(Ini, TheFileAfterEachKindOfWrite)
{
    const std::tuple<std::optional<std::string>, const char *, const char *, const char *, std::string> rows[] = {
        {"[a]\nk=1\nj=2\n", "a", "k", "9", "[a]\nk=9\nj=2\n"},
        {"[a]\nk=1\nj=2\n", "a", "k", nullptr, "[a]\nj=2\n"},
        {"[a]\nk=1\n\n[b]\nx=1\n", "a", "n", "2", "[a]\nk=1\nn=2\n\n[b]\nx=1\n"},
        {"[a]\nk=1\n;c\n \t\r\n[b]\n", "a", "n", "2", "[a]\nk=1\nn=2\n;c\n \t\r\n[b]\n"},
        {"[a]\n\n;c\nk=1\n\n[b]\n", "a", "k", "2", "[a]\n\n;c\nk=2\n\n[b]\n"},
        {"[a]\nk=1", "a", "n", "2", "[a]\nk=1\nn=2\n"},
        {"[a]", "a", "n", "2", "[a]\nn=2\n"},
        {"[b]\nx=1\n[a]\nk=1\n", "a", "k", "", "[b]\nx=1\n[a]\nk=\n"},
        // A section ending in the next header: the new line takes its place.
        {"[a]\nk=1\n[b]\nx=1\n", "a", "n", "2", "[a]\nk=1\nn=2\nx=1\n"},
        {"[a]\nk\nj=1\n", "a", "k", "v", "[a]\nk=v\nj=1\n"},
        {"[a]\nk = 1\n", "a", "k", "2", "[a]\nk = 1\nk=2\n"},
        {"[a]\n  k=1\n", "a", "k", "2", "[a]\nk=2\n"},
        {"[a]\r\nk=1\r\n", "a", "k", "2", "[a]\r\nk=2\n"},
        {"[ a ]\nk=1\n[a]\n", "a", "k", "2", "[ a ]\nk=1\n[a]\nk=2\n"},
        {"[A]\nk=1\n", "a", "K", "2", "[A]\nk=1\n\n[a]\nK=2\n"},
        // An indented ';' line is a comment to the writer.
        {"[a]\n ;k=1\n", "a", ";k", "2", "[a]\n;k=2\n ;k=1\n"},
        {"[a]\nk=1\n", "b", "k", "v", "[a]\nk=1\n\n[b]\nk=v\n"},
        {"", "b", "k", "v", "[b]\nk=v\n"},
        {std::nullopt, "b", "k", "v", "[b]\nk=v\n"},
        // Deleting sections: ';' comments go with them, '#' lines end them.
        {"[a]\nk=1\n;c\n\n[b]\nx=1\n", "a", nullptr, nullptr, "[b]\nx=1\n"},
        {"[z]\n[a]\nk=1\n#keep\nj=2\n[b]\n", "a", nullptr, nullptr, "[z]\n#keep\nj=2\n[b]\n"},
        {"[a]\nk=1\n", "a", nullptr, nullptr, ""},
    };
    for (const auto &[before, section, key, value, after] : rows) {
        fs::remove(at("t.ini"));
        if (before)
            put("t.ini", *before);
        EXPECT_EQ(write(section, key, value), SM_STATUS_SUCCESS) << before.value_or("(none)");
        EXPECT_EQ(readFile(at("t.ini")), after) << before.value_or("(none)");
        EXPECT_EQ(names(), std::vector<std::string>{"t.ini"});
    }
}

TEST_F(Ini, TextReadsAndTheReaderOwnRules)
{
    put("t.ini", "; [main]\n[main]\nkey=value\n spaced = both \n  ;semi=reader key\n#hash=1\ncr=v\r\nbare\n\tx=a=b\n"
                 "[ blank ]\nk=blank section\n[empty]\n");
    const std::string noKey = "KEY_NOT_FOUND size 0";
    const std::tuple<const char *, const char *, std::string> rows[] = {
        {"main", "key", "value"},
        {"main", "spaced", noKey},
        {"main", "spaced ", " both "},
        {"main", ";semi", "reader key"},
        {"main", "#hash", noKey},
        {"main", "cr", "v\r"},
        {"main", "bare", noKey},
        {"main", "x", "a=b"},
        {"main", "k", noKey},
        {" blank ", "k", "blank section"},
        {"blank", "k", "SECTION_NOT_FOUND size 0"},
    };
    for (const auto &[section, key, expected] : rows)
        EXPECT_EQ(read(section, key), expected) << section << "/" << key;
    EXPECT_EQ(read("main", "key", 6), "value");
    EXPECT_EQ(read("main", "key", 5), "BUFFER_TOO_SMALL size 6");

    put("t.ini", "[a]\nk=1\n[bad\n[c]\nk=3\n");
    EXPECT_EQ(read("c", "k"), "BAD_SECTION_HEADER size 0");
    EXPECT_EQ(read(nullptr, nullptr), "BAD_SECTION_HEADER size 0");
    EXPECT_EQ(write("c", "k", "4"), SM_STATUS_BAD_SECTION_HEADER);
    EXPECT_EQ(readFile(at("t.ini")), "[a]\nk=1\n[bad\n[c]\nk=3\n");
    EXPECT_EQ(names().size(), 2u) << "the copy of a failed rewrite stays";
}

TEST_F(Ini, EveryTypeWrittenAndReadBack)
{
    const ucs2 wide[] = {'h', 0x263A, 0};
    const std::tuple<uint32_t, Bytes, std::string> rows[] = {
        {3, {0x01, 0x0A, 0xFF}, "0x01,0x0A,0xFF"},
        {4, bytesOf(uint16_t{1}), "TRUE"},
        {4, bytesOf(uint16_t{2}), "FALSE"},
        {5, {0xFF, 0xFF, 0xFF, 0xFF}, "4294967295"},
        {6, bytesOf(int32_t{-5}), "-5"},
        {7, Bytes(8, 0xFF), "18446744073709551615"},
        {8, bytesOf(INT64_MIN), "-9223372036854775808"},
        {9, bytesOf(1.5), "1.50000000"},
        {2, Bytes(reinterpret_cast<const uint8_t *>(wide), reinterpret_cast<const uint8_t *>(wide) + 6),
         "0x68,0x00,0x3A,0x26,0x00,0x00"},
    };
    for (const auto &[type, bytes, text] : rows) {
        fs::remove(at("t.ini"));
        ASSERT_EQ(SMWriteINIPathFileValue("s", "k", type, bytes.data(), static_cast<uint32_t>(bytes.size()),
                                          at("t.ini").c_str(), 1),
                  SM_STATUS_SUCCESS);
        if (type != 2 || std::endian::native == std::endian::little) {
            EXPECT_EQ(readFile(at("t.ini")), "[s]\nk=" + text + "\n");
        }
        if (text == "FALSE")
            continue;  // reads back as 0
        EXPECT_EQ(readTyped("k", type, 16), std::tuple("SUCCESS size " + std::to_string(bytes.size()), bytes)) << text;
    }
    fs::remove(at("t.ini"));

    // The most a three-character key holds: "abc=", 8,444 characters and '\n'.
    const Bytes longest(1689, 0xA5);
    EXPECT_EQ(SMWriteINIPathFileValue("s", "abc", 3, longest.data(), 1689, at("t.ini").c_str(), 1), SM_STATUS_SUCCESS);
    EXPECT_EQ(readTyped("abc", 3, 2048), std::tuple("SUCCESS size 1689", longest));
}

TEST_F(Ini, RefusalsAndTheirStatuses)
{
    const std::string path = at("t.ini");
    const std::string name256(256, 'n');
    const uint32_t four = 4;
    const std::string tooMany(2049, 'b');
    // Lines one ("abcd=", 1,689 bytes) and three ("k=", 845 units) characters too long.
    std::vector<ucs2> wideLong(845, 'w');
    wideLong.back() = 0;
    constexpr int32_t kArgument = SM_STATUS_BAD_ARGUMENT, kLength = SM_STATUS_BAD_LENGTH;
    const std::tuple<const char *, const char *, uint32_t, const void *, uint32_t, std::string, int32_t> writes[] = {
        {nullptr, "k", 1, "v", 2, path, kArgument},
        {name256.c_str(), "k", 1, "v", 2, path, kArgument},
        {"s", name256.c_str(), 1, "v", 2, path, kArgument},
        {"s", "k", 1, "v", 2, "", kArgument},
        {"s", "k", 1, "v", 2, dir_ + "/", kArgument},
        {"s", "k", 0, "v", 2, path, kArgument},
        {"s", "k", 10, "v", 2, path, kArgument},
        {"s", nullptr, 5, &four, 4, path, kArgument},
        {"s", "k", 1, "v", 3, path, kLength},
        {"s", "k", 1, nullptr, 2, path, kLength},
        {"s", "k", 4, &four, 1, path, kLength},
        {"s", "k", 7, &four, 7, path, kLength},
        {"s", "k", 3, name256.c_str(), 0, path, kLength},
        {"s", "k", 3, tooMany.c_str(), 2049, path, kLength},
        {"s", "abcd", 3, tooMany.c_str(), 1689, path, kLength},
        {"s", "k", 2, wideLong.data(), 1690, path, kLength},
        {"s", "k", 2, u"ab", 4, path, kLength},
        {"s", "k", 1, nullptr, 0, path, kLength},
        {"s", nullptr, 1, nullptr, 0, path, kLength},
        {"s", "k", 1, "v", 2, dir_ + "/missing/deeper/t.ini", SM_STATUS_FAILURE},
    };
    for (const auto &[section, key, type, value, size, where, status] : writes)
        EXPECT_EQ(SMWriteINIPathFileValue(section, key, type, value, size, where.c_str(), 1), status)
            << (section != nullptr ? std::string(section).substr(0, 10) : "null") << " type " << type << " size "
            << size << " at " << where;
    EXPECT_TRUE(names().empty());

    EXPECT_EQ(read("s", "k"), "FILE_OPEN_FAILED size 0");
    char text[8];
    uint32_t size = 8, none = 0;
    const int32_t reads[] = {
        SMReadINIPathFileValue("s", "k", 0, text, &size, nullptr, 0, path.c_str(), 1),
        SMReadINIPathFileValue("s", "k", 1, text, &none, nullptr, 0, path.c_str(), 1),
        SMReadINIPathFileValue("s", "k", 1, nullptr, &size, nullptr, 0, path.c_str(), 1),
        SMReadINIPathFileValue("s", "k", 1, text, nullptr, nullptr, 0, path.c_str(), 1),
        SMReadINIPathFileValue("s", "k", 6, text, &size, nullptr, 0, nullptr, 1),
    };
    for (const int32_t status : reads)
        EXPECT_EQ(status, SM_STATUS_BAD_ARGUMENT);

    EXPECT_EQ(write("s", "k", "v", "new/t.ini"), SM_STATUS_SUCCESS);
    EXPECT_EQ(readFile(at("new/t.ini")), "[s]\nk=v\n");
}

// A backup left by an interrupted replacement is what a read or write finds.
TEST_F(Ini, BackupsLeftByAnInterruptedReplacement)
{
    put("t.ini", "[s]\nk=new\n");
    put("t.bak", "[s]\nk=old\n");
    EXPECT_EQ(read("s", "k"), "old");
    EXPECT_EQ(names(), std::vector<std::string>{"t.ini"});
    fs::rename(at("t.ini"), at("t.bak"));  // interrupted between the renames
    EXPECT_EQ(write("s", "j", "1"), SM_STATUS_SUCCESS);
    EXPECT_EQ(readFile(at("t.ini")), "[s]\nk=old\nj=1\n");
    EXPECT_EQ(names(), std::vector<std::string>{"t.ini"});
}

// Makes fsync and fdatasync fail with EIO here; false where no filter can be set.
bool failSyncs()
{
    sock_filter program[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, __NR_fsync, 1, 0),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, __NR_fdatasync, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EIO),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog filter{static_cast<unsigned short>(std::size(program)), program};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
}

// A copy not written whole or not confirmed never replaces the file.
TEST_F(Ini, FailedCopiesLeaveTheOldFile)
{
    const auto keptWithCopy = [&](const std::string &before) {
        const std::vector<std::string> found = names();
        for (const std::string &name : found)
            if (name != "t.ini")
                fs::remove(at(name));
        return readFile(at("t.ini")) == before && found.size() == 2;
    };
    // The size limit fails a small copy when closed, a large one while copying.
    const std::string small = "[s]\nk=1\n\n[t]\nj=2\n", large = small + ";" + std::string(200000, 'c') + "\n";
    for (const auto &[before, limit] : {std::pair(small, small.size()), std::pair(large, large.size() / 2)}) {
        put("t.ini", before);
        const int result = zksupt::test::runInChild([&, limit = limit] {
            ::signal(SIGXFSZ, SIG_IGN);
            const rlimit bound{limit, limit};
            if (::setrlimit(RLIMIT_FSIZE, &bound) != 0)
                return 2;
            return write("s", "k", "longer") == SM_STATUS_LIMIT_REACHED ? 0 : 1;
        });
        EXPECT_EQ(result, 0) << before.size();
        EXPECT_TRUE(keptWithCopy(before)) << before.size();
    }

    put("t.ini", small);
    const int result = zksupt::test::runInChild([&] {
        if (!failSyncs())
            return 77;
        return write("s", "k", "2") == SM_STATUS_LIMIT_REACHED ? 0 : 1;
    });
    if (result == 77)
        GTEST_SKIP() << "no system-call filter here to make fsync fail";
    EXPECT_EQ(result, 0) << "a copy not flushed to the disk replaced the file";
    EXPECT_TRUE(keptWithCopy(small));
}

}  // namespace
