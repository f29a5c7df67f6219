// Copy and append in a sandbox directory: outcomes, bytes, modes, failures;
// separated text.
#include <gtest/gtest.h>

#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <iterator>
#include <filesystem>
#include <fstream>
#include <string>
#include <tuple>

#include <zksupt/file.h>
#include <zksupt/status.h>
#include <zksupt/zksupt.h>

#include "support/child.h"
#include "support/sandbox.h"

namespace {

namespace fs = std::filesystem;
using zksupt::test::readFile;
using Transfer = int32_t (*)(const char *, const char *, int32_t);

std::string at(const std::string &name)
{
    return zksupt::test::sandbox().path("file-ops/" + name);
}

std::string write(const std::string &name, const std::string &contents, mode_t mode = 0644)
{
    std::ofstream(at(name), std::ios::binary) << contents;
    fs::permissions(at(name), static_cast<fs::perms>(mode));
    return at(name);
}

std::string someBytes(std::size_t size, unsigned seed)
{
    std::string text;
    while (text.size() < size)
        text += static_cast<char>(text.size() * seed % 251);
    return text;
}

auto openDescriptors()
{
    return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
}

class FileOps : public ::testing::Test {
  protected:
    FileOps() { fs::create_directories(dir_); }
    ~FileOps() override { fs::remove_all(dir_); }
    const std::string dir_ = at("");
};

TEST_F(FileOps, CopyAndAppendOutcomesWithTheBytesAndModesTheyLeave)
{
    // Several 8192-byte chunks; "old" is longer, so a copy must truncate it.
    const std::string source = someBytes(3 * 8192 + 123, 7), old = someBytes(40000, 11);
    write("source", source, 0640);
    fs::create_directory(at("folder"));
    fs::create_symlink(at("nowhere"), at("link"));
    fs::create_hard_link(at("source"), at("same"));
    enum Leaves { nothing, kept, copied, appended, emptied };
    const std::string leftBytes[] = {"", old, source, old + source, ""};
    constexpr int32_t kOk = SM_STATUS_SUCCESS, kExists = SM_STATUS_DESTINATION_EXISTS, kFailed = SM_STATUS_FAILURE;
    constexpr int32_t kMissing = SM_STATUS_FILE_NOT_FOUND;
    const std::tuple<Transfer, const char *, const char *, int32_t, int32_t, Leaves> rows[] = {
        {SMFileCopy, "source", "new", 0, kOk, copied},
        {SMFileCopyAndSync, "source", "old", 1, kOk, copied},
        {SMFileCopyAndSync, "source", "old", 0, kExists, kept},
        {SMFileCopy, "missing", "old", 0, kExists, kept},     // checked before the source is opened
        {SMFileCopy, "source", "link", 0, kExists, nothing},  // a link that leads nowhere takes the name
        {SMFileCopy, "missing", "new", 1, kMissing, nothing},
        {SMFileCopy, "folder", "old", 1, kFailed, emptied},  // opens, but reading fails after the truncation
        {SMFileCopy, "source", "no/new", 1, kFailed, nothing},
        {SMFileAppend, "source", "old", 0, kOk, appended},  // an existing file keeps its mode
        {SMFileAppend, "source", "new", 0, kMissing, nothing},
        {SMFileAppendAndSync, "source", "new", 1, kOk, copied},
        // The source itself, under its own name or another, is refused whole.
        {SMFileCopy, "source", "source", 1, SM_STATUS_INVALID_PARAMETER, copied},
        {SMFileCopyAndSync, "source", "folder/../source", 1, SM_STATUS_INVALID_PARAMETER, copied},
        {SMFileAppend, "same", "source", 0, SM_STATUS_INVALID_PARAMETER, copied},
        {SMFileAppendAndSync, "source", "folder/../same", 1, SM_STATUS_INVALID_PARAMETER, copied},
    };
    // A file appended to itself without end meets a file-size limit first.
    rlimit previous{};
    ::getrlimit(RLIMIT_FSIZE, &previous);
    const rlimit bound{std::min<rlim_t>(1 << 20, previous.rlim_max), previous.rlim_max};
    const auto handler = ::signal(SIGXFSZ, SIG_IGN);
    ::setrlimit(RLIMIT_FSIZE, &bound);
    const mode_t previousMask = ::umask(077);
    for (const auto &[call, from, to, flag, status, leaves] : rows) {
        SCOPED_TRACE(std::string(from) + " to " + to + ", flag " + std::to_string(flag));
        write("old", old, 0604);
        fs::remove(at("new"));
        const auto descriptors = openDescriptors();
        EXPECT_EQ(call(at(from).c_str(), at(to).c_str(), flag), status);
        EXPECT_EQ(openDescriptors(), descriptors) << "every descriptor is closed";
        const std::string left = readFile(at(to));
        EXPECT_TRUE(left == leftBytes[leaves]) << left.size() << " bytes left";
        const fs::perms mode = leaves == nothing ? fs::perms::unknown : fs::perms(leaves == copied ? 0640 : 0604);
        EXPECT_EQ(fs::status(at(to)).permissions(), mode) << "unknown: no file there";
    }
    ::umask(previousMask);
    ::setrlimit(RLIMIT_FSIZE, &previous);
    ::signal(SIGXFSZ, handler);
}

TEST_F(FileOps, WriteFailuresKeepWhatWasWritten)
{
    // Under a 10000-byte limit the second chunk is written in part and counts
    // as done; a third chunk fails. What was written stays.
    const std::string contents = someBytes(100000, 13);
    const auto source = write("source", contents), twoChunks = write("two", contents.substr(0, 2 * 8192));
    const auto underLimit = [&] {
        ::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{10000, 10000};
        if (::setrlimit(RLIMIT_FSIZE, &limit) != 0 ||
            SMFileCopy(twoChunks.c_str(), at("short").c_str(), 1) != SM_STATUS_SUCCESS)
            return 1;
        return SMFileCopy(source.c_str(), at("limited").c_str(), 1) == SM_STATUS_FAILURE ? 0 : 2;
    };
    EXPECT_EQ(zksupt::test::runInChild(underLimit), 0);
    EXPECT_EQ(readFile(at("short")), contents.substr(0, 10000));
    EXPECT_EQ(readFile(at("limited")), contents.substr(0, 10000));

    // A full disk (a 32 KiB tmpfs in a child's own mount namespace) is LIMIT_REACHED.
    fs::create_directory(at("small"));
    const int result = zksupt::test::runInChild([&] {
        if (::unshare(CLONE_NEWNS) != 0 || ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            ::mount("zksupt-test", at("small").c_str(), "tmpfs", 0, "size=32k") != 0)
            return 77;
        const int32_t status = SMFileCopy(source.c_str(), at("small/full").c_str(), 1);
        const std::string kept = readFile(at("small/full"));
        return status == SM_STATUS_LIMIT_REACHED && !kept.empty() && contents.starts_with(kept) ? 0 : 1;
    });
    if (result == 77)
        GTEST_SKIP() << "no private mount namespace for a small file system here";
    EXPECT_EQ(result, 0);
}

TEST(SeparatedText, SwapsEverySeparatorAndClosesTheList)
{
    using namespace std::string_literals;
    const std::tuple<std::string, char, char, std::string> cases[] = {
        {"a,b,c", ',', '\0', "a\0b\0c\0\0"s},
        {"a,,b", ',', '\0', "a\0\0b\0\0"s},
        {" a , b ", ',', '\0', " a \0 b \0\0"s},
        {"", ',', '\0', "\0\0"s},
        {"a,b", ',', ';', "a;b;\0"s},
    };
    for (const auto &[text, from, to, expected] : cases) {
        uint32_t size = 0;
        char *copy = SMUTF8ConvertXSVToYSV(text.c_str(), &size, from, to);
        ASSERT_NE(copy, nullptr) << text;
        EXPECT_EQ(size, expected.size()) << text;
        EXPECT_EQ(std::string(copy, expected.size()), expected) << text;
        SMFreeMem(copy);
    }
    char *copy = SMUTF8ConvertXSVToYSV("x", nullptr, ',', '\0');
    ASSERT_NE(copy, nullptr) << "the size is optional";
    SMFreeMem(copy);
    uint32_t size = 5;
    EXPECT_EQ(SMUTF8ConvertXSVToYSV(nullptr, &size, ',', '\0'), nullptr);
    EXPECT_EQ(size, 5u);
}

}  // namespace
