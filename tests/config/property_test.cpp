// Property files: how lines read, the files after writes, typed values,
// refusals, and a reader beside a writer in another process.
#include <gtest/gtest.h>

#include <linux/capability.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
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

constexpr uint32_t kText = 13;  // the SDO code of UTF-8 text, which also lists keys

class Property : public ::testing::Test {
  protected:
    Property() { fs::create_directories(dir_); }
    ~Property() override { fs::remove_all(dir_); }

    void put(const std::string &text) const { std::ofstream(path_, std::ios::binary) << text; }
    std::vector<std::string> names() const
    {
        std::vector<std::string> found;
        for (const auto &entry : fs::directory_iterator(dir_))
            found.push_back(entry.path().filename().string());
        std::sort(found.begin(), found.end());
        return found;
    }

    // The value of key as text, or the status and *size.
    std::string read(const char *key, uint32_t capacity = 200000) const
    {
        return zksupt::test::textOut(capacity, [&](char *buffer, uint32_t *size) {
            return SMPropertyFileReadValue(key, kText, buffer, size, nullptr, 0, path_.c_str(), 1);
        });
    }

    // The key list with '|' between the keys, or the status and *size.
    std::string keys(uint32_t capacity = 4096) const
    {
        std::string buffer(capacity, '?');
        uint32_t size = capacity;
        const int32_t status =
            SMPropertyFileReadValue(nullptr, kText, buffer.data(), &size, nullptr, 0, path_.c_str(), 1);
        if (status != SM_STATUS_SUCCESS)
            return statusName(status) + " size " + std::to_string(size);
        EXPECT_EQ(buffer.substr(size - 2, 2), std::string(2, '\0'));
        buffer.resize(size - 2);
        std::replace(buffer.begin(), buffer.end(), '\0', '|');
        return buffer;
    }

    int32_t write(const char *key, uint32_t type, const void *value, uint32_t size) const
    {
        return SMPropertyFileWriteValue(key, type, value, size, path_.c_str(), 1);
    }
    int32_t writeText(const char *key, const char *value) const
    {
        return write(key, kText, value, static_cast<uint32_t>(std::strlen(value) + 1));
    }

    const std::string dir_ = zksupt::test::sandbox().path("property-tests");
    const std::string path_ = dir_ + "/t.properties";
};

TEST_F(Property, WhatEachLineReadsAs)
{
    const std::string longValue(100000, 'v');
    const std::string notFound = "KEY_NOT_FOUND size 0";
    const std::tuple<std::string, const char *, std::string> rows[] = {
        {"x : 1\n", "x", "1"},
        {"x=1\n", "x", "1"},
        {"x\t=:= 1 \t\r\n", "x", "1"},
        {"\n \t\r x = 1 = 2 \n", "x", "1 = 2"},
        {"x=1", "x", "1"},
        {"x=\nx=2\n", "x", ""},
        {"x\ny=2\n", "x", notFound},
        {"xy\n", "xy", ""},
        {";x=1\n#x=2\n!x=3\n//x=4\n  ;x=5\nx=6\n", "x", "6"},
        {"/x=1\n", "x", notFound},
        {"=1\n:x\n", "x", notFound},
        {" x \n", "x", ""},
        {"x=a\\\n  two\nnext=3\n", "x", "a\n  two"},
        {"x=a\\\n  two  \\\n three \n", "x", "a\n  two  \n three"},
        {"x=a\\\\\nnext=3\n", "x", "a\\\\"},
        {"x=a\\", "x", "a\n"},
        {"a=1\\\nx=2\nx=3\n", "x", "3"},
        {"p=1\nport=2\n", "port", "1"},
        {"port=2\n", "p", notFound},
        {"Port=2\n", "port", notFound},
        {std::string("x=1\0junk\ny=2", 12), "y", "2"},
        {std::string("x=1\0junk\ny=2", 12), "x", "1"},
        {"x=" + longValue + "\ny=2", "y", "2"},
        {"x=" + longValue + "\ny=2", "x", longValue.substr(0, 8447)},
    };
    for (const auto &[text, key, expected] : rows) {
        put(text);
        EXPECT_EQ(read(key), expected) << text.substr(0, 40) << " / " << key;
    }

    const std::tuple<std::string, std::string> listings[] = {
        {"a=1\n;c=2\nb=3\\\n  cont=4\n/\nc\nd e\n", "a|b|d"},
        {"# nothing\n", "KEY_NOT_FOUND size 0"},
    };
    for (const auto &[text, expected] : listings) {
        put(text);
        EXPECT_EQ(keys(), expected) << text;
    }
    put("ab=1\ncd=2\n");
    EXPECT_EQ(keys(7), "ab|cd");
    EXPECT_EQ(keys(6), "BUFFER_TOO_SMALL size 7");
    EXPECT_EQ(read("ab", 1), "BUFFER_TOO_SMALL size 2");
    uint32_t size = 8;
    EXPECT_EQ(SMPropertyFileReadValue(nullptr, 7, nullptr, &size, nullptr, 0, path_.c_str(), 1), SM_STATUS_SUCCESS);
    EXPECT_EQ(size, 8u) << "a null key of another type reads nothing";
}

TEST_F(Property, TheFileAfterAWrite)
{
    const std::tuple<std::string, const char *, std::string> rows[] = {
        {"a=1\nk=2\nz=3\n", "k", "a=1\nk=9\nz=3\n"},
        {"#c\r\n  k = 1\r\nz=2\r\n", "k", "#c\r\nk=9\nz=2\r\n"},
        {"a=1\nk=old\\\n  more\\\n  end\nz=3\n", "k", "a=1\nk=9\nz=3\n"},
        {"k=1\nk=2\n", "k", "k=9\nk=2\n"},
        {"a=1\nk=2", "k", "a=1\nk=9\n"},
        {"k=1\\", "k", "k=9\n"},
        {"p=1\nport=2\n", "port", "port=9\nport=2\n"},
        // A key the file does not hold empties the file.
        {"a=1\nb=2\n", "k", ""},
    };
    for (const auto &[before, key, after] : rows) {
        put(before);
        ::chmod(path_.c_str(), 0640);
        EXPECT_EQ(writeText(key, "9"), SM_STATUS_SUCCESS) << before;
        EXPECT_EQ(readFile(path_), after) << before;
        EXPECT_EQ(fs::status(path_).permissions(), fs::perms(0640)) << before;
        EXPECT_EQ(names(), std::vector<std::string>{"t.properties"}) << before;
    }
}

TEST_F(Property, EveryValueTypeThroughItsText)
{
    const char utf8[] = "h\xC3\xA9llo";
    const auto wide = zksupt::test::wide(u"h\u00E9");
    const auto *wideBytes = reinterpret_cast<const uint8_t *>(wide.data());
    const std::tuple<uint32_t, Bytes, std::string> rows[] = {
        {0, bytesOf(uint16_t{1}), "true"},
        {1, bytesOf(int8_t{-5}), "-5"},
        {3, bytesOf(int32_t{-70000}), "-70000"},
        {4, bytesOf(INT64_MIN), "-9223372036854775808"},
        {7, bytesOf(uint32_t{4000000000}), "4000000000"},
        {7 | 0x400, bytesOf(uint32_t{255}), "0xff"},
        {8, bytesOf(UINT64_MAX), "18446744073709551615"},
        {9, bytesOf(1.5), "1.500"},
        {10, bytesOf(uint32_t{1031}), "de"},
        {12, {0x01, 0xAB}, "01AB"},
        {13, Bytes(utf8, utf8 + sizeof utf8), utf8},
        {14, Bytes(wideBytes, wideBytes + wide.size() * 2), "h\xC3\xA9"},
        {15, {10, 1, 2, 3}, "10.1.2.3"},
    };
    for (const auto &[type, bytes, text] : rows) {
        put("a=1\nk=old\\\n  more\nz=2\n");
        ASSERT_EQ(write("k", type, bytes.data(), static_cast<uint32_t>(bytes.size())), SM_STATUS_SUCCESS) << text;
        EXPECT_EQ(readFile(path_), "a=1\nk=" + text + "\nz=2\n");
        Bytes back(bytes.size() + 1, 0xEE);
        uint32_t size = static_cast<uint32_t>(bytes.size());
        EXPECT_EQ(SMPropertyFileReadValue("k", type, back.data(), &size, nullptr, 0, path_.c_str(), 1),
                  SM_STATUS_SUCCESS)
            << text;
        back.resize(size);
        EXPECT_EQ(back, bytes) << text;
    }
}

TEST_F(Property, RefusalsAndDefaults)
{
    put("k=1\nn=abc\n");
    const std::string path = path_, missing = dir_ + "/missing.properties";
    uint32_t four = 4;
    constexpr int32_t kInvalid = SM_STATUS_INVALID_PARAMETER;
    const std::tuple<const char *, uint32_t, const void *, std::string, int32_t> writes[] = {
        {nullptr, 7, &four, path, kInvalid},
        {"k", 7, nullptr, path, kInvalid},
        {"k", 17, &four, path, SM_STATUS_BAD_ARGUMENT},
        {"k", 3, &four, missing, SM_STATUS_FILE_OPEN_FAILED},
    };
    for (const auto &[key, type, value, where, status] : writes)
        EXPECT_EQ(SMPropertyFileWriteValue(key, type, value, 4, where.c_str(), 1), status) << type << " " << where;
    EXPECT_EQ(SMPropertyFileWriteValue("k", 7, &four, 4, nullptr, 1), kInvalid);
    EXPECT_EQ(readFile(path_), "k=1\nn=abc\n");
    EXPECT_EQ(names(), std::vector<std::string>{"t.properties"});

    char buffer[8];
    uint32_t size = sizeof buffer;
    EXPECT_EQ(SMPropertyFileReadValue("k", kText, buffer, nullptr, nullptr, 0, path_.c_str(), 1), kInvalid);
    EXPECT_EQ(SMPropertyFileReadValue("k", kText, buffer, &size, nullptr, 0, nullptr, 1), kInvalid);
    EXPECT_EQ(SMPropertyFileReadValue("k", kText, buffer, &size, nullptr, 0, missing.c_str(), 1),
              SM_STATUS_FILE_OPEN_FAILED);

    // A failed read copies a default that fits the capacity; its status stays.
    const std::tuple<const char *, uint32_t, uint32_t, std::string> reads[] = {
        {"x", 4, 4, "KEY_NOT_FOUND size 4 default"},     {"x", 3, 4, "KEY_NOT_FOUND size 0"},
        {"n", 4, 4, "INVALID_PARAMETER size 4 default"}, {"k", 3, 4, "BUFFER_TOO_SMALL size 4"},
        {"k", 3, 2, "BUFFER_TOO_SMALL size 2 default"},
    };
    for (const auto &[key, capacity, defaultSize, expected] : reads) {
        const uint32_t fallback = 0xCAFEBABE;
        uint32_t value = 0;
        size = capacity;
        const int32_t status = SMPropertyFileReadValue(key, 7, &value, &size, &fallback, defaultSize, path_.c_str(), 1);
        const std::string defaulted = std::memcmp(&value, &fallback, defaultSize) == 0 ? " default" : "";
        EXPECT_EQ(statusName(status) + " size " + std::to_string(size) + defaulted, expected) << key;
    }
}

// Takes from this process the right to pass over permission bits, which root
// otherwise has.
bool dropFileOverride()
{
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct data[2]{};
    if (::syscall(SYS_capget, &header, data) != 0)
        return false;
    data[0].effective &= ~((1u << CAP_DAC_OVERRIDE) | (1u << CAP_DAC_READ_SEARCH) | (1u << CAP_FOWNER));
    return ::syscall(SYS_capset, &header, data) == 0;
}

TEST_F(Property, ADirectoryWithoutRoomForTheCopyLeavesTheFile)
{
    put("k=1\n");
    ::chmod(dir_.c_str(), 0555);
    const int result = zksupt::test::runInChild([&] {
        if (!dropFileOverride())
            return 2;
        return writeText("k", "2") == SM_STATUS_FILE_NOT_FOUND ? 0 : 1;
    });
    ::chmod(dir_.c_str(), 0755);
    EXPECT_EQ(result, 0);
    EXPECT_EQ(readFile(path_), "k=1\n");
    EXPECT_EQ(names(), std::vector<std::string>{"t.properties"});
}

// One process rewrites the file over and over with values of two lengths
// while another reads it until the writer is done: every read finds the
// whole file, one value or the other, and the lines around it.
TEST_F(Property, AReaderBesideAWriterNeverSeesATornFile)
{
    const std::string shortValue = "short", longValue(3000, 'L');
    put("a=first\nk=" + shortValue + "\nz=last\n");
    const std::string done = zksupt::test::sandbox().path("property-writer-done");
    constexpr int kWrites = 60;
    const int writer = zksupt::test::startChild([&] {
        int failed = 0;
        for (int i = 0; i < kWrites; ++i)
            failed += writeText("k", (i % 2 == 0 ? longValue : shortValue).c_str()) != SM_STATUS_SUCCESS;
        std::ofstream{done};
        return failed;
    });
    const zksupt::test::ChildEnd reader = zksupt::test::runInChildBounded(
        [&] {
            while (!fs::exists(done)) {
                const std::string k = read("k");
                if ((k != shortValue && k != longValue) || read("a") != "first" || read("z") != "last")
                    return 1;
            }
            return 0;
        },
        std::chrono::seconds(300));
    const zksupt::test::ChildEnd written = zksupt::test::waitForChild(writer, std::chrono::seconds(300));
    EXPECT_TRUE(zksupt::test::succeeded(reader)) << "a read found a torn file, or the reader hung";
    EXPECT_TRUE(zksupt::test::succeeded(written)) << "a write failed, or the writer hung";
    EXPECT_EQ(readFile(path_), "a=first\nk=" + shortValue + "\nz=last\n");
    EXPECT_EQ(names(), std::vector<std::string>{"t.properties"});
    fs::remove(done);
}

}  // namespace
