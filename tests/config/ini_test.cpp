// The INI engine: the file after each kind of write, byte for byte; reads of
// every type; listings and defaults with their sizes; refusals; failed
// copies, backups, permissions, long lines and concurrent writers.
#include <gtest/gtest.h>

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <future>
#include <optional>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include <zksupt/config.h>
#include <zksupt/frame.h>
#include <zksupt/status.h>

#include "config/file_guard.h"
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

// Each test works in an empty directory of the sandbox, and finds nothing
// there afterwards but the files it named.
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

    // The value read as text, or the status and the size left.
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

    // A typed read of t.ini with a default: the status, the bytes *size names
    // (value bytes kept in full), and *size.
    std::tuple<std::string, Bytes> readTyped(const char *section, const char *key, uint32_t type, uint32_t capacity,
                                             const Bytes &fallback = {}) const
    {
        Bytes value(capacity + 1, 0xEE);
        uint32_t size = capacity;
        const int32_t status = SMReadINIPathFileValue(section, key, type, value.data(), &size,
                                                      fallback.empty() ? nullptr : fallback.data(),
                                                      static_cast<uint32_t>(fallback.size()), at("t.ini").c_str(), 1);
        EXPECT_EQ(value[capacity], 0xEE) << "written past the capacity";
        value.resize(std::min(size, capacity));
        return {statusName(status) + " size " + std::to_string(size), value};
    }

    const std::string dir_ = zksupt::test::sandbox().path("ini-tests");
};

TEST_F(Ini, TheFileAfterEachKindOfWrite)
{
    const std::tuple<std::optional<std::string>, const char *, const char *, const char *, std::string> rows[] = {
        // Replacing, adding and deleting keys.
        {"[a]\nk=1\nj=2\n", "a", "k", "9", "[a]\nk=9\nj=2\n"},
        {"[a]\nk=1\nj=2\n", "a", "k", nullptr, "[a]\nj=2\n"},
        {"[a]\nk=1\n\n[b]\nx=1\n", "a", "n", "2", "[a]\nk=1\nn=2\n\n[b]\nx=1\n"},
        {"[a]\nk=1\n;c\n \t\r\n[b]\n", "a", "n", "2", "[a]\nk=1\nn=2\n;c\n \t\r\n[b]\n"},
        {"[a]\n\n;c\nk=1\n\n[b]\n", "a", "k", "2", "[a]\n\n;c\nk=2\n\n[b]\n"},
        {"[a]\nk=1\n\n", "a", "n", "2", "[a]\nk=1\nn=2\n\n"},
        {"[a]\nk=1", "a", "n", "2", "[a]\nk=1\nn=2\n"},
        {"[a]", "a", "n", "2", "[a]\nn=2\n"},
        {"[b]\nx=1\n[a]\nk=1\n", "a", "k", "", "[b]\nx=1\n[a]\nk=\n"},
        // A section ending directly in the next header: the new line takes
        // the header's place.
        {"[a]\nk=1\n[b]\nx=1\n", "a", "n", "2", "[a]\nk=1\nn=2\nx=1\n"},
        {"[a]\n[b]\nx=1\n", "a", "n", "2", "[a]\nn=2\nx=1\n"},
        // Key matching: bare keys, blanks around '=', CR LF lines, blank names.
        {"[a]\nk\nj=1\n", "a", "k", "v", "[a]\nk=v\nj=1\n"},
        {"[a]\nk = 1\n", "a", "k", "2", "[a]\nk = 1\nk=2\n"},
        {"[a]\n  k=1\n", "a", "k", "2", "[a]\nk=2\n"},
        {"[a]\r\nk=1\r\n", "a", "k", "2", "[a]\r\nk=2\n"},
        {"[ a ]\nk=1\n[a]\n", "a", "k", "2", "[ a ]\nk=1\n[a]\nk=2\n"},
        {"[A]\nk=1\n", "a", "K", "2", "[A]\nk=1\n\n[a]\nK=2\n"},
        // An indented ';' line is a comment to the writer.
        {"[a]\n ;k=1\n", "a", ";k", "2", "[a]\n;k=2\n ;k=1\n"},
        // Missing sections and files.
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
        {"empty", "k", noKey},
    };
    for (const auto &[section, key, expected] : rows)
        EXPECT_EQ(read(section, key), expected) << section << "/" << key;
    EXPECT_EQ(read("main", "key", 6), "value");
    EXPECT_EQ(read("main", "key", 5), "BUFFER_TOO_SMALL size 6");

    put("t.ini", "[a]\nk=1\n[bad\n[c]\nk=3\n");
    EXPECT_EQ(read("a", "k"), "1");
    EXPECT_EQ(read("c", "k"), "BAD_SECTION_HEADER size 0");
    EXPECT_EQ(read(nullptr, nullptr), "BAD_SECTION_HEADER size 0");
    EXPECT_EQ(write("c", "k", "4"), SM_STATUS_BAD_SECTION_HEADER);
    EXPECT_EQ(readFile(at("t.ini")), "[a]\nk=1\n[bad\n[c]\nk=3\n");
    EXPECT_EQ(names().size(), 2u) << "the copy of a failed rewrite stays";
}

// {section, capacity, status and size, the names or the first byte left}
TEST_F(Ini, ListingsWithExactSizes)
{
    put("t.ini", "[a]\nk1=1\n;c=1\nk2=2\n[bb]\n");
    const std::tuple<const char *, uint32_t, std::string, std::string> rows[] = {
        {nullptr, 6, "SUCCESS size 6", std::string("a\0bb\0\0", 6)},
        {nullptr, 5, "BUFFER_TOO_SMALL size 6", "a"},
        {nullptr, 1, "BAD_ARGUMENT size 1", "?"},
        {"a", 7, "SUCCESS size 7", std::string("k1\0k2\0\0", 7)},
        {"a", 5, "BUFFER_TOO_SMALL size 7", "k"},
        {"bb", 10, "KEY_NOT_FOUND size 0", std::string(1, '\0')},
        {"cc", 10, "SECTION_NOT_FOUND size 0", std::string(1, '\0')},
    };
    const auto list = [&](const char *section, uint32_t capacity) {
        std::string buffer(capacity + 1, '?');
        uint32_t size = capacity;
        const int32_t status =
            SMReadINIPathFileValue(section, nullptr, 1, buffer.data(), &size, nullptr, 0, at("t.ini").c_str(), 1);
        return std::pair{statusName(status) + " size " + std::to_string(size),
                         buffer.substr(0, status == SM_STATUS_SUCCESS ? size : 1)};
    };
    for (const auto &[section, capacity, status, listed] : rows)
        EXPECT_EQ(list(section, capacity), std::pair(status, listed)) << (section ? section : "sections");
    put("t.ini", "; nothing\n");
    EXPECT_EQ(list(nullptr, 10), std::pair(std::string("SECTION_NOT_FOUND size 0"), std::string(1, '\0')));
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
        EXPECT_EQ(readTyped("s", "k", type, 16), std::tuple("SUCCESS size " + std::to_string(bytes.size()), bytes))
            << text;
    }
    fs::remove(at("t.ini"));
    const double huge = -1e300;
    EXPECT_EQ(SMWriteINIPathFileValue("s", "k", 9, &huge, 8, at("t.ini").c_str(), 1), SM_STATUS_SUCCESS);
    EXPECT_EQ(readFile(at("t.ini")).size(), std::string("[s]\nk=-1\n").size() + 300 + 9);

    // The most bytes a three-character key can hold: "abc=", 8,444 characters
    // and the line feed are exactly what a reader takes as one line.
    const Bytes longest(1689, 0xA5);
    EXPECT_EQ(SMWriteINIPathFileValue("s", "abc", 3, longest.data(), 1689, at("t.ini").c_str(), 1), SM_STATUS_SUCCESS);
    EXPECT_EQ(readTyped("s", "abc", 3, 2048), std::tuple("SUCCESS size 1689", longest));
}

TEST_F(Ini, TypedReadsFromText)
{
    const auto value = [&](const std::string &text, uint32_t type) {
        put("t.ini", "[s]\nk=" + text + "\n");
        return readTyped("s", "k", type, 8);
    };
    const auto as = [](auto v) { return std::tuple("SUCCESS size " + std::to_string(sizeof v), bytesOf(v)); };
    const std::tuple<std::string, Bytes> badLength{"BAD_LENGTH size 0", {}};
    EXPECT_EQ(value("true ", 4), as(uint16_t{1}));
    EXPECT_EQ(value(" False\r", 4), as(uint16_t{0}));
    EXPECT_EQ(value("yes", 4), badLength);
    EXPECT_EQ(value("TRUEX", 4), badLength);
    EXPECT_EQ(value("42", 5), as(uint32_t{42}));
    EXPECT_EQ(value("-1", 5), as(uint32_t{4294967295u}));
    EXPECT_EQ(value("12abc", 5), as(uint32_t{12}));
    EXPECT_EQ(value(" -7", 6), as(int32_t{-7}));
    EXPECT_EQ(value("-9223372036854775808", 8), as(INT64_MIN));
    EXPECT_EQ(value("2.5", 9), as(2.5));
    EXPECT_EQ(value("x", 9), as(0.0));
    EXPECT_EQ(std::get<0>(value("0x01,0x0", 3)), "FAILURE size 0");
    EXPECT_EQ(value("zzzz", 3), badLength);
    EXPECT_EQ(value("0x01,0x02,0x03", 3), std::tuple("SUCCESS size 3", Bytes{1, 2, 3}));
    put("t.ini", "[s]\nk=0x01,0x02,0x03\nb=TRUE\n");
    EXPECT_EQ(std::get<0>(readTyped("s", "k", 3, 2)), "BUFFER_TOO_SMALL size 3");
    EXPECT_EQ(std::get<0>(readTyped("s", "b", 4, 1)), "BUFFER_TOO_SMALL size 2");
}

// A failed read leaves the default: text cut to the capacity and terminated,
// numbers whole when the default is as wide as the type, byte lists cut.
TEST_F(Ini, DefaultsOnFailure)
{
    put("t.ini", "[s]\nk=1\nb=maybe\n");
    const Bytes text{'d', 'f', 'l', 't', 0};
    EXPECT_EQ(readTyped("s", "none", 1, 3, text), std::tuple("KEY_NOT_FOUND size 3", Bytes{'d', 'f', 0}));
    char empty[8] = "xxxxxxx";
    uint32_t size = sizeof empty;
    EXPECT_EQ(SMReadINIPathFileValue("s", "none", 1, empty, &size, nullptr, 0, at("t.ini").c_str(), 1),
              SM_STATUS_KEY_NOT_FOUND);
    EXPECT_EQ(std::pair(std::string(empty), size), std::pair(std::string(), 0u)) << "no default: an empty text";
    const Bytes fallback = bytesOf(int32_t{77});
    EXPECT_EQ(readTyped("t", "k", 6, 4, fallback), std::tuple("SECTION_NOT_FOUND size 4", fallback));
    EXPECT_EQ(readTyped("s", "b", 4, 2, bytesOf(uint16_t{1})), std::tuple("BAD_LENGTH size 2", bytesOf(uint16_t{1})));
    EXPECT_EQ(std::get<0>(readTyped("s", "none", 6, 4, Bytes(2, 7))), "KEY_NOT_FOUND size 0") << "too narrow";
    EXPECT_EQ(readTyped("s", "none", 3, 2, Bytes{7, 8, 9}), std::tuple("KEY_NOT_FOUND size 2", Bytes{7, 8}));
    EXPECT_EQ(std::get<0>(readTyped("s", "none", 2, 4, Bytes{'a', 0, 0})), "BAD_ARGUMENT size 4")
        << "a UCS-2 default must end where its size says";
}

TEST_F(Ini, RefusalsAndTheirStatuses)
{
    const std::string path = at("t.ini");
    const std::string name256(256, 'n');
    const uint32_t four = 4;
    const std::string tooMany(2049, 'b');
    // 5 characters a byte: the line of "abcd=" and 1,689 bytes is one
    // character longer than a reader takes at once, that of "k=" and 845
    // UCS-2 units three.
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
        {"s", "k", 1, "v", 0, path, kLength},
        {"s", "k", 4, &four, 1, path, kLength},
        {"s", "k", 5, &four, 3, path, kLength},
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
        SMReadINIPathFileValue("s", "k", 10, text, &size, nullptr, 0, path.c_str(), 1),
        SMReadINIPathFileValue("s", "k", 1, text, &none, nullptr, 0, path.c_str(), 1),
        SMReadINIPathFileValue("s", "k", 1, nullptr, &size, nullptr, 0, path.c_str(), 1),
        SMReadINIPathFileValue("s", "k", 1, text, nullptr, nullptr, 0, path.c_str(), 1),
        SMReadINIPathFileValue("s", "k", 1, text, &size, nullptr, 0, "", 1),
        SMReadINIPathFileValue("s", "k", 6, text, &size, nullptr, 0, nullptr, 1),
    };
    for (const int32_t status : reads)
        EXPECT_EQ(status, SM_STATUS_BAD_ARGUMENT);

    // A directory one level below an existing one is made.
    EXPECT_EQ(write("s", "k", "v", "new/t.ini"), SM_STATUS_SUCCESS);
    EXPECT_EQ(readFile(at("new/t.ini")), "[s]\nk=v\n");
}

TEST_F(Ini, BackupsLeftByAnInterruptedReplacement)
{
    put("t.ini", "[s]\nk=new\n");
    put("t.bak", "[s]\nk=old\n");
    EXPECT_EQ(read("s", "k"), "old");
    EXPECT_EQ(names(), std::vector<std::string>{"t.ini"});

    // Interrupted between the renames: only the backup is there.
    fs::rename(at("t.ini"), at("t.bak"));
    EXPECT_EQ(write("s", "j", "1"), SM_STATUS_SUCCESS);
    EXPECT_EQ(readFile(at("t.ini")), "[s]\nk=old\nj=1\n");
    EXPECT_EQ(names(), std::vector<std::string>{"t.ini"});

    // The backup name replaces what follows the path's last '.'.
    fs::create_directories(at("d.x"));
    put("d.x/plain", "[s]\nk=1\n");
    put("d.bak", "[s]\nk=2\n");
    EXPECT_EQ(write("s", "k", "3", "d.x/plain"), SM_STATUS_SUCCESS);
    EXPECT_EQ(readFile(at("d.x/plain")), "[s]\nk=3\n");
    EXPECT_FALSE(fs::exists(at("d.bak")));
}

// Makes fsync and fdatasync fail with EIO in this process, as on a failing
// disk. False where no system-call filter can be set (under an emulator).
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

// A copy that cannot be written whole, or that the disk does not confirm,
// never replaces the file: 0x13, the old file as it was, the copy beside it.
TEST_F(Ini, FailedCopiesLeaveTheOldFile)
{
    const auto keptWithCopy = [&](const std::string &before) {
        const std::vector<std::string> found = names();
        for (const std::string &name : found)
            if (name != "t.ini")
                fs::remove(at(name));
        return readFile(at("t.ini")) == before && found.size() == 2;
    };
    // Under a file-size limit the longer copy fails in its last part, after
    // the changed line: in a small file only when the copy is closed, in a
    // large one while it is being copied.
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

TEST_F(Ini, PermissionsOfMadeAndReplacedFiles)
{
    const auto mode = [&] { return static_cast<unsigned>(fs::status(at("t.ini")).permissions() & fs::perms::mask); };
    const mode_t old = ::umask(077);
    EXPECT_EQ(write("s", "k", "1"), SM_STATUS_SUCCESS);
    EXPECT_EQ(mode(), 0644u);
    for (const unsigned before : {0755u, 0600u, 01664u, 0666u}) {
        fs::permissions(at("t.ini"), static_cast<fs::perms>(before));
        EXPECT_EQ(write("s", "k", "2"), SM_STATUS_SUCCESS);
        EXPECT_EQ(mode(), before & 01666u) << std::oct << before;
        EXPECT_EQ(write("t", "k", "3"), SM_STATUS_SUCCESS);
        EXPECT_EQ(mode(), before & 01666u) << std::oct << before;
    }
    ::umask(old);
}

TEST_F(Ini, LongLinesAreReadInPieces)
{
    const std::string longest(8447, 'v');
    put("t.ini", "[s]\nk=" + longest + "\n" + std::string(8449, 'x') + "j=2\nm=" + longest + "w\n");
    EXPECT_EQ(read("s", "k"), longest);
    EXPECT_EQ(read("s", "j"), "2");
    EXPECT_EQ(read("s", "m"), longest);
    const std::string before = readFile(at("t.ini"));
    EXPECT_EQ(write("s", "n", "3"), SM_STATUS_SUCCESS);
    EXPECT_EQ(readFile(at("t.ini")), before + "n=3\n");

    const std::string big(8192, 'b');
    uint32_t size = 0;
    EXPECT_EQ(write("s", "big", big.c_str()), SM_STATUS_SUCCESS);
    char *text = SMReadINISectionKeyUTF8Value("s", "big", nullptr, &size, at("t.ini").c_str(), 1);
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(std::pair(std::string(text), size), std::pair(big, 8193u));
    SMFreeMem(text);
}

TEST_F(Ini, TextValuesEnumerationsAndPlainNames)
{
    put("t.ini",
        "[s]\nshort=v\none=TWO\nnone=nine\nmulti=one,FOUR\nspaced=one, two\nlong=" + std::string(9000, 'l') + "\n");
    const std::string path = at("t.ini");
    const auto textOf = [&](const char *key, const char *fallback) {
        uint32_t size = 99;
        char *text = SMReadINISectionKeyUTF8Value("s", key, fallback, &size, path.c_str(), 1);
        const std::string got = text != nullptr ? text : "(null)";
        SMFreeMem(text);
        return got + " " + std::to_string(size);
    };
    EXPECT_EQ(textOf("short", "d"), "v 2");
    EXPECT_EQ(textOf("missing", "dflt"), "dflt 5");
    EXPECT_EQ(textOf("missing", nullptr), "(null) 0");

    const SMEnumRow rows[] = {{"dflt", 100, 0}, {"one", 1, 0}, {"two", 2, 0}, {"four", 4, 0}};
    const std::tuple<const char *, int32_t, uint32_t> enums[] = {
        {"one", 0, 2}, {"none", 0, 100}, {"missing", 0, 1}, {"multi", 1, 5}, {"spaced", 1, 1}, {"multi", 0, 100},
    };
    for (const auto &[key, multi, expected] : enums)
        EXPECT_EQ(SMReadINIEnums32Value("s", key, rows, 4, multi, path.c_str(), 1), expected) << key;
    EXPECT_EQ(SMReadINIEnums32Value("s", "one", rows, 1, 0, path.c_str(), 1), 0x80000000u);
    EXPECT_EQ(SMReadINIEnums32Value("s", "one", nullptr, 4, 0, path.c_str(), 1), 0x80000000u);

    // Plain names live in the "ini" directory under product 35's ini path.
    const std::string iniDir = zksupt::test::sandbox().iniDir();
    EXPECT_EQ(SMWriteINIFileValue("s", "k", 1, "v", 2, "plain.ini", 1), SM_STATUS_SUCCESS);
    EXPECT_EQ(readFile(iniDir + "/ini/plain.ini"), "[s]\nk=v\n");
    char value[4];
    uint32_t size = sizeof value;
    EXPECT_EQ(SMReadINIFileValue("s", "k", 1, value, &size, nullptr, 0, "plain.ini", 1), SM_STATUS_SUCCESS);
    EXPECT_EQ(std::string(value), "v");
    fs::remove_all(iniDir + "/ini");
    const std::string tooLong(256 - 6 - iniDir.size() + 1, 'x');
    EXPECT_EQ(SMWriteINIFileValue("s", "k", 1, "v", 2, tooLong.c_str(), 1), SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(SMWriteINIFileValue("s", "k", 1, "v", 2, nullptr, 1), SM_STATUS_BAD_ARGUMENT);
}

TEST_F(Ini, ASingleTryFindsTheFileLockedAndChangesNothing)
{
    put("t.ini", "[s]\nk=1\n");
    const std::string path = at("t.ini");
    std::promise<void> locked;
    std::promise<void> done;
    std::thread holder([&] {
        const zksupt::config::FileGuard guard(path.c_str(), zksupt::config::FileAccess::write, 1);
        locked.set_value();
        done.get_future().wait();
    });
    locked.get_future().wait();
    EXPECT_EQ(SMWriteINIPathFileValue("s", "k", 1, "2", 2, path.c_str(), 0), SM_STATUS_TIMEOUT);
    char text[8];
    uint32_t size = sizeof text;
    EXPECT_EQ(SMReadINIPathFileValue("s", "k", 1, text, &size, "d", 2, path.c_str(), 0), SM_STATUS_TIMEOUT);
    EXPECT_EQ(std::pair(std::string(text), size), std::pair(std::string("d"), 2u));
    done.set_value();
    holder.join();
    EXPECT_EQ(readFile(path), "[s]\nk=1\n");
    EXPECT_EQ(read("s", "k"), "1");
}

TEST_F(Ini, ConcurrentWritersLoseNothing)
{
    const auto keyOf = [](int t, int k) { return "k" + std::to_string(t) + "_" + std::to_string(k); };
    std::vector<std::thread> writers;
    for (int t = 0; t < 4; ++t)
        writers.emplace_back([&, t] {
            for (int k = 0; k < 25; ++k)
                EXPECT_EQ(write(t % 2 == 0 ? "even" : "odd", keyOf(t, k).c_str(), keyOf(t, k).c_str()),
                          SM_STATUS_SUCCESS);
        });
    for (auto &writer : writers)
        writer.join();
    for (int t = 0; t < 4; ++t)
        for (int k = 0; k < 25; ++k)
            EXPECT_EQ(read(t % 2 == 0 ? "even" : "odd", keyOf(t, k).c_str()), keyOf(t, k));
    EXPECT_EQ(names(), std::vector<std::string>{"t.ini"});
}

}  // namespace
