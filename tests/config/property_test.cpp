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
#include <string>
#include <tuple>

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

constexpr uint32_t kText = 13;  // UTF-8 text; with a null key, the list of keys

class Property : public ::testing::Test {
  protected:
    Property() { fs::create_directories(dir_); }
    ~Property() override { fs::remove_all(dir_); }

    void put(const std::string &text) const { std::ofstream(path_, std::ios::binary) << text; }
    long files() const { return std::distance(fs::directory_iterator(dir_), fs::directory_iterator()); }

    // A text value, or a key list with '|' for each NUL; else the status and *size.
    std::string read(const char *key, uint32_t capacity = 200000) const
    {
        std::string buffer(capacity, '?');
        uint32_t size = capacity;
        const int32_t status = SMPropertyFileReadValue(key, kText, buffer.data(), &size, nullptr, 0, path_.c_str(), 1);
        if (status != SM_STATUS_SUCCESS)
            return zksupt::test::statusName(status) + " size " + std::to_string(size);
        buffer.resize(size - 1);
        std::replace(buffer.begin(), buffer.end(), '\0', '|');
        return buffer;
    }
    int32_t write(const char *key, const std::string &value) const
    {
        return SMPropertyFileWriteValue(key, kText, value.c_str(), static_cast<uint32_t>(value.size() + 1),
                                        path_.c_str(), 1);
    }

    const std::string dir_ = zksupt::test::sandbox().path("property-tests");
    const std::string path_ = dir_ + "/t.properties";
};

TEST_F(Property, WhatEachFileReadsAs)
{
    const std::string longValue(100000, 'v'), notFound = "KEY_NOT_FOUND size 0";
    const std::tuple<std::string, const char *, std::string> rows[] = {
        {"x : 1\n", "x", "1"},
        {"\n \t\r x\t=:= 1 = 2 \t\r\n", "x", "1 = 2"},
        {"x=1", "x", "1"},
        {"x=\nx=2\n", "x", ""},
        {"x\ny=2\n", "x", notFound},
        {" x \n", "x", ""},
        {"=1\n:x\n", "x", notFound},
        {";x=1\n#x=2\n!x=3\n//x=4\n  ;x=5\nx=6\n", "x", "6"},
        {"x=a\\\n  two  \\\n three \nnext=3\n", "x", "a\n  two  \n three"},
        {"x=a\\\\\nnext=3\n", "x", "a\\\\"},
        {"x=a\\", "x", "a\n"},
        {"a=1\\\nx=2\nx=3\n", "x", "3"},
        // A line's key selects every key it begins.
        {"p=1\nport=2\n", "port", "1"},
        {"port=2\n", "p", notFound},
        {std::string("x=1\0junk\ny=2", 12), "y", "2"},
        {"x=" + longValue + "\ny=2", "y", "2"},
        {"x=" + longValue + "\ny=2", "x", longValue.substr(0, 8447)},
        // Keys, continued lines and one-character lines skipped.
        {"a=1\n;c=2\nb=3\\\n  cont=4\n/\nc\nd e\n", nullptr, "a|b|d|"},
        {"# nothing\n", nullptr, notFound},
    };
    for (const auto &[text, key, expected] : rows) {
        put(text);
        EXPECT_EQ(read(key), expected) << text.substr(0, 40) << " / " << (key != nullptr ? key : "(keys)");
    }
    put("ab=1\ncd=2\n");
    EXPECT_EQ(read(nullptr, 7), "ab|cd|");
    EXPECT_EQ(read(nullptr, 6), "BUFFER_TOO_SMALL size 7");
    EXPECT_EQ(read("ab", 1), "BUFFER_TOO_SMALL size 2");
}

TEST_F(Property, TheFileAfterAWrite)
{
    const std::tuple<std::string, const char *, std::string> rows[] = {
        {"#c\r\n  k = 1\r\nz=2\r\n", "k", "#c\r\nk=9\nz=2\r\n"},
        {"a=1\nk=old\\\n  more\\\n  end\nz=3\n", "k", "a=1\nk=9\nz=3\n"},
        {"k=1\nk=2\n", "k", "k=9\nk=2\n"},
        {"a=1\nk=2", "k", "a=1\nk=9\n"},
        {"p=1\nport=2\n", "port", "port=9\nport=2\n"},
        // A key the file does not hold empties the file.
        {"a=1\nb=2\n", "k", ""},
    };
    for (const auto &[before, key, after] : rows) {
        put(before);
        ::chmod(path_.c_str(), 0640);
        EXPECT_EQ(write(key, "9"), SM_STATUS_SUCCESS) << before;
        EXPECT_EQ(readFile(path_), after) << before;
        EXPECT_EQ(fs::status(path_).permissions(), fs::perms(0640)) << before;
        EXPECT_EQ(files(), 1) << before;
    }
}

TEST_F(Property, EveryValueTypeThroughItsText)
{
    const auto wide = zksupt::test::wide(u"h\u00E9");
    const auto *wideBytes = reinterpret_cast<const uint8_t *>(wide.data());
    const std::tuple<uint32_t, Bytes, std::string> rows[] = {
        {0, bytesOf(uint16_t{1}), "true"},
        {1, bytesOf(int8_t{-5}), "-5"},
        {3, bytesOf(int32_t{-70000}), "-70000"},
        {4, bytesOf(INT64_MIN), "-9223372036854775808"},
        {7 | 0x400, bytesOf(uint32_t{255}), "0xff"},
        {8, bytesOf(UINT64_MAX), "18446744073709551615"},
        {9, bytesOf(1.5), "1.500"},
        {10, bytesOf(uint32_t{1031}), "de"},
        {12, {0x01, 0xAB}, "01AB"},
        {13, {'h', 0xC3, 0xA9, 0}, "h\xC3\xA9"},
        {14, Bytes(wideBytes, wideBytes + wide.size() * 2), "h\xC3\xA9"},
        {15, {10, 1, 2, 3}, "10.1.2.3"},
        {16, {0xDE, 0xAD}, "DEAD"},
    };
    for (const auto &[type, bytes, text] : rows) {
        put("a=1\nk=old\nz=2\n");
        const auto size = static_cast<uint32_t>(bytes.size());
        ASSERT_EQ(SMPropertyFileWriteValue("k", type, bytes.data(), size, path_.c_str(), 1), SM_STATUS_SUCCESS);
        EXPECT_EQ(readFile(path_), "a=1\nk=" + text + "\nz=2\n");
        Bytes back(size);
        uint32_t backSize = size;
        EXPECT_EQ(SMPropertyFileReadValue("k", type, back.data(), &backSize, nullptr, 0, path_.c_str(), 1), 0) << text;
        EXPECT_EQ(back, bytes) << text;
    }
}

TEST_F(Property, RefusalsAndDefaults)
{
    put("k=1\nn=abc\n");
    const std::string missing = dir_ + "/missing.properties";
    uint32_t four = 4, size = 4;
    const int32_t refusals[] = {
        SMPropertyFileWriteValue(nullptr, 7, &four, 4, path_.c_str(), 1),
        SMPropertyFileWriteValue("k", 7, nullptr, 4, path_.c_str(), 1),
        SMPropertyFileWriteValue("k", 7, &four, 4, nullptr, 1),
        SMPropertyFileReadValue("k", 7, &four, nullptr, nullptr, 0, path_.c_str(), 1),
        SMPropertyFileReadValue("k", 7, &four, &size, nullptr, 0, nullptr, 1),
    };
    for (const int32_t status : refusals)
        EXPECT_EQ(status, SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMPropertyFileWriteValue("k", 17, &four, 4, path_.c_str(), 1), SM_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(SMPropertyFileWriteValue("k", 7, &four, 4, missing.c_str(), 1), SM_STATUS_FILE_OPEN_FAILED);
    EXPECT_EQ(SMPropertyFileReadValue("k", 7, &four, &size, nullptr, 0, missing.c_str(), 1),
              SM_STATUS_FILE_OPEN_FAILED);
    EXPECT_EQ(readFile(path_), "k=1\nn=abc\n");
    EXPECT_EQ(files(), 1);

    // After any failure a default no larger than the capacity is copied.
    const std::tuple<const char *, uint32_t, uint32_t, std::string> reads[] = {
        {"x", 4, 4, "KEY_NOT_FOUND size 4 default"},
        {"n", 4, 4, "INVALID_PARAMETER size 4 default"},
        {"k", 3, 4, "BUFFER_TOO_SMALL size 4"},
        {"k", 3, 2, "BUFFER_TOO_SMALL size 2 default"},
    };
    for (const auto &[key, capacity, defaultSize, expected] : reads) {
        const uint32_t fallback = 0xCAFEBABE;
        uint32_t value = 0;
        size = capacity;
        const int32_t status = SMPropertyFileReadValue(key, 7, &value, &size, &fallback, defaultSize, path_.c_str(), 1);
        EXPECT_EQ(zksupt::test::statusName(status) + " size " + std::to_string(size) +
                      (std::memcmp(&value, &fallback, defaultSize) == 0 ? " default" : ""),
                  expected)
            << key;
    }
}

TEST_F(Property, ADirectoryWithoutRoomForTheCopyLeavesTheFile)
{
    put("k=1\n");
    ::chmod(dir_.c_str(), 0555);
    const int result = zksupt::test::runInChild([&] {
        // Root passes over permission bits unless it gives up the right to.
        __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
        __user_cap_data_struct caps[2]{};
        if (::syscall(SYS_capget, &header, caps) != 0)
            return 2;
        caps[0].effective &= ~((1u << CAP_DAC_OVERRIDE) | (1u << CAP_DAC_READ_SEARCH));
        if (::syscall(SYS_capset, &header, caps) != 0)
            return 2;
        return write("k", "2") == SM_STATUS_FILE_NOT_FOUND ? 0 : 1;
    });
    ::chmod(dir_.c_str(), 0755);
    EXPECT_EQ(result, 0);
    EXPECT_EQ(readFile(path_), "k=1\n");
    EXPECT_EQ(files(), 1);
}

// One process rewrites the file with values of two lengths while another
// reads it until the writer is done: every read finds the whole file.
TEST_F(Property, AReaderBesideAWriterNeverSeesATornFile)
{
    const std::string shortValue = "short", longValue(3000, 'L');
    const std::string done = zksupt::test::sandbox().path("property-writer-done");
    put("a=first\nk=" + shortValue + "\nz=last\n");
    const int writer = zksupt::test::startChild([&] {
        int failed = 0;
        for (int i = 0; i < 60; ++i)
            failed += write("k", i % 2 == 0 ? longValue : shortValue) != SM_STATUS_SUCCESS;
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
    fs::remove(done);
}

}  // namespace
