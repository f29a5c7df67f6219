// Snapshots of a file's state, file names by process ID, and PCI
// configuration space read from a tree the test builds and from the real one.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <tuple>
#include <vector>

#include <zksupt/file.h>
#include <zksupt/status.h>

#include "file/process_files.h"
#include "support/sandbox.h"
#include "support/status_names.h"

namespace {

namespace fs = std::filesystem;
using zksupt::test::textOut;

// Sets the file's modification time (and its access time to a fixed value),
// so that a change is seen whatever the file system's clock granularity.
void setTimes(const std::string &path, time_t seconds, long nanoseconds)
{
    const timespec times[2] = {{1000, 0}, {seconds, nanoseconds}};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0) << path;
}

void putFile(const std::string &path, const std::string &text)
{
    std::ofstream(path, std::ios::binary | std::ios::trunc) << text;
}

TEST(FileSnapshot, EachKindOfChangeIsToldOnce)
{
    const std::string dir = zksupt::test::makeTempDir("zksupt-snapshot-");
    const std::string path = dir + "/watched", other = dir + "/other";
    void *snapshot = SMFilePropAlloc(path.c_str());
    ASSERT_NE(snapshot, nullptr);

    // Each step and whether it is a change; every step is followed by a look
    // that must find nothing new.
    const std::tuple<const char *, bool, std::function<void()>> steps[] = {
        {"nothing", false, [] {}},
        {"created", true,
         [&] {
             putFile(path, "abc");
             ::chmod(path.c_str(), 0644);
             setTimes(path, 5000, 0);
         }},
        {"read and access time", false,
         [&] {
             std::ifstream(path).get();
             const timespec times[2] = {{7777, 0}, {0, UTIME_OMIT}};
             ::utimensat(AT_FDCWD, path.c_str(), times, 0);
         }},
        {"same size, later time", true,
         [&] {
             putFile(path, "xyz");
             setTimes(path, 5001, 0);
         }},
        {"a nanosecond later", true, [&] { setTimes(path, 5001, 1); }},
        {"longer, same time", true,
         [&] {
             putFile(path, "abcd");
             setTimes(path, 5001, 1);
         }},
        {"chmod", true, [&] { ::chmod(path.c_str(), 0600); }},
        {"renamed over", true,
         [&] {
             putFile(other, "abcd");
             ::chmod(other.c_str(), 0600);
             setTimes(other, 5001, 1);
             ::rename(other.c_str(), path.c_str());
         }},
        {"deleted", true, [&] { ::unlink(path.c_str()); }},
        {"created again", true, [&] { putFile(path, ""); }},
    };
    for (const auto &[what, changed, step] : steps) {
        step();
        EXPECT_EQ(SMFilePropIsModified(snapshot), changed ? 1 : 0) << what;
        EXPECT_EQ(SMFilePropIsModified(snapshot), 0) << what << ", asked again";
    }
    SMFilePropFree(snapshot);

    EXPECT_EQ(SMFilePropAlloc(nullptr), nullptr);
    EXPECT_EQ(SMFilePropIsModified(nullptr), SM_STATUS_INVALID_PARAMETER);
    SMFilePropFree(nullptr);
    fs::remove_all(dir);
}

TEST(ProcessFileNames, NamesCarryTheProcessId)
{
    const std::string pid = std::to_string(::getpid()), inRun = "/run/x/app." + pid;
    const zksupt::test::Sandbox &box = zksupt::test::sandbox();
    const auto byPid = [](const char *directory, const char *base) {
        return [=](char *out, uint32_t *size) { return SMMakePathFileNameByPID(directory, base, out, size); };
    };
    const auto byType = [](uint32_t product, uint32_t kind, const char *base) {
        return
            [=](char *out, uint32_t *size) { return SMMakePathFileNameByPIDAndType(product, kind, base, out, size); };
    };
    const auto need = [](const std::string &path) { return static_cast<uint32_t>(path.size() + 1); };
    const std::tuple<std::function<int32_t(char *, uint32_t *)>, uint32_t, std::string> rows[] = {
        {byPid("/run/x", "app"), need(inRun), inRun},
        {byPid("/run/x", "app"), need(inRun) - 1, "BUFFER_TOO_SMALL size " + std::to_string(need(inRun))},
        {byPid(nullptr, "app"), 64, "INVALID_PARAMETER size 64"},
        {byPid("/run/x", nullptr), 64, "INVALID_PARAMETER size 64"},
        {byType(35, 8, "app"), 256, box.logDir() + "/app." + pid},
        {byType(0xFFFFFFFF, 2, "app"), 256, box.suiteDir() + "/app." + pid},
        {byType(35, 64, "app"), 8, "BUFFER_TOO_SMALL size " + std::to_string(need(box.iniDir() + "/app." + pid))},
        {byType(77, 8, "app"), 256, "NOT_FOUND size 256"},
        {byType(35, 3, "app"), 256, "INVALID_PARAMETER size 256"},
        {byType(35, 8, nullptr), 256, "INVALID_PARAMETER size 256"},
    };
    for (const auto &[call, capacity, expected] : rows)
        EXPECT_EQ(textOut(capacity, call), expected);
    uint32_t size = 100;
    EXPECT_EQ(SMMakePathFileNameByPID("/run/x", "app", nullptr, &size), SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(size, need(inRun));
}

// A made-up devices tree: one function with a configuration space of 64
// bytes, its byte i being i, and one whose "config" cannot be read.
TEST(PciConfig, ReadsFromATreeTheTestBuilds)
{
    const std::string root = zksupt::test::makeTempDir("zksupt-pci-");
    fs::create_directories(root + "/0001:0a:1f.7");
    std::string space(64, '\0');
    for (std::size_t i = 0; i < space.size(); ++i)
        space[i] = static_cast<char>(i);
    putFile(root + "/0001:0a:1f.7/config", space);
    fs::create_directories(root + "/0000:00:01.0/config");

    const auto read = [&](uint32_t domain, uint32_t bus, uint32_t device, uint32_t function, uint32_t offset,
                          uint32_t capacity) {
        std::vector<unsigned char> buffer(capacity + 1, 0xEE);
        uint32_t size = capacity;
        const int32_t status =
            zksupt::file::readPciConfig(root.c_str(), domain, bus, device, function, offset, buffer.data(), &size);
        std::string text = zksupt::test::statusName(status) + " size " + std::to_string(size);
        for (uint32_t i = 0; status == SM_STATUS_SUCCESS && i < size; ++i)
            text += " " + std::to_string(buffer[i]);
        if (buffer[capacity] != 0xEE)
            text += " written past the capacity";
        return text;
    };
    const std::tuple<uint32_t, uint32_t, uint32_t, uint32_t, uint32_t, uint32_t, std::string> rows[] = {
        {1, 10, 31, 7, 0, 2, "SUCCESS size 2 0 1"},       {1, 10, 31, 7, 60, 8, "SUCCESS size 4 60 61 62 63"},
        {1, 10, 31, 7, 64, 8, "SUCCESS size 0"},          {1, 10, 31, 7, 0xFFFFFFF0, 8, "SUCCESS size 0"},
        {1, 10, 31, 7, 10, 0, "SUCCESS size 0"},          {0, 10, 31, 7, 0, 2, "NOT_FOUND size 2"},
        {1, 10, 30, 7, 0, 2, "NOT_FOUND size 2"},         {1, 10, 32, 7, 0, 2, "INVALID_PARAMETER size 2"},
        {1, 10, 31, 8, 0, 2, "INVALID_PARAMETER size 2"}, {0, 0, 1, 0, 0, 2, "FAILURE size 2"},
    };
    for (const auto &[domain, bus, device, function, offset, capacity, expected] : rows)
        EXPECT_EQ(read(domain, bus, device, function, offset, capacity), expected)
            << domain << ":" << bus << ":" << device << "." << function << " +" << offset;

    uint32_t size = 4;
    EXPECT_EQ(SMReadPCIDevFile(0, 0, 0, 0, 0, nullptr, &size), SM_STATUS_INVALID_PARAMETER);
    fs::remove_all(root);
}

// Where the machine has a PCI device, its vendor ID read through the real
// tree is the one sysfs shows in "vendor".
TEST(PciConfig, TheRealTreeAgreesWithSysfs)
{
    const fs::path devices = "/sys/bus/pci/devices";
    std::error_code error;
    fs::directory_iterator it(devices, error);
    if (error || it == fs::directory_iterator())
        GTEST_SKIP() << "no PCI devices here";
    const std::string name = it->path().filename().string();
    unsigned domain = 0, bus = 0, device = 0, function = 0;
    ASSERT_EQ(std::sscanf(name.c_str(), "%x:%x:%x.%x", &domain, &bus, &device, &function), 4) << name;
    unsigned vendor = 0;
    ASSERT_EQ(std::sscanf(zksupt::test::readFile(it->path() / "vendor").c_str(), "%x", &vendor), 1);

    unsigned char bytes[2] = {};
    uint32_t size = sizeof bytes;
    ASSERT_EQ(SMReadPCIDevFile(domain, bus, device, function, 0, bytes, &size), SM_STATUS_SUCCESS) << name;
    ASSERT_EQ(size, 2u);
    // Configuration space is little-endian whatever the host.
    EXPECT_EQ(bytes[0] | (bytes[1] << 8), vendor) << name;
}

}  // namespace
