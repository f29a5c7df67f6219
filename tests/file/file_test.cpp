// File operations inside a directory of the sandbox: every outcome of copy and
// append with the bytes and modes it leaves, write failures, directories,
// sizes, deletion and temporary names.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <tuple>
#include <vector>

#include <zksupt/file.h>
#include <zksupt/status.h>

#include "support/child.h"
#include "support/sandbox.h"

namespace {

namespace fs = std::filesystem;
using zksupt::test::readFile;
using Transfer = int32_t (*)(const char *, const char *, int32_t);
const std::string kNameAlphabet = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";

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

// Bytes of every value, in an order that differs from seed to seed.
std::string someBytes(std::size_t size, unsigned seed)
{
    std::string text;
    while (text.size() < size)
        text += static_cast<char>(text.size() * seed % 251);
    return text;
}

int openDescriptors()
{
    int count = 0;
    for (int fd = 0; fd < 1024; ++fd)
        count += ::fcntl(fd, F_GETFD) != -1;
    return count;
}

// A lower soft file-size limit while it lives, with SIGXFSZ ignored so that
// a write past the limit fails instead of ending the program.
class FileSizeLimit {
  public:
    explicit FileSizeLimit(rlim_t bytes)
    {
        ::getrlimit(RLIMIT_FSIZE, &previous_);
        const rlimit lower{std::min(bytes, previous_.rlim_max), previous_.rlim_max};
        previousHandler_ = ::signal(SIGXFSZ, SIG_IGN);
        ::setrlimit(RLIMIT_FSIZE, &lower);
    }
    ~FileSizeLimit()
    {
        ::setrlimit(RLIMIT_FSIZE, &previous_);
        ::signal(SIGXFSZ, previousHandler_);
    }
    FileSizeLimit(const FileSizeLimit &) = delete;
    FileSizeLimit &operator=(const FileSizeLimit &) = delete;

  private:
    rlimit previous_{};
    void (*previousHandler_)(int) = SIG_DFL;
};

// Each test starts with an empty directory in the sandbox and removes it after.
class FileOps : public ::testing::Test {
  protected:
    FileOps() { fs::create_directories(dir_); }
    ~FileOps() override { fs::remove_all(dir_); }
    const std::string dir_ = at("");
};

TEST_F(FileOps, CopyAndAppendOutcomesWithTheBytesAndModesTheyLeave)
{
    // The source spans several 8192-byte chunks; "old" is longer, so a copy
    // over it must truncate. Under the umask of 077 a file made without
    // setting its mode would not have the source's.
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
        {SMFileAppend, "source", "no/new", 1, kFailed, nothing},
        // The source itself, under its own name or another, is refused whole.
        {SMFileCopy, "source", "source", 1, SM_STATUS_INVALID_PARAMETER, copied},
        {SMFileCopyAndSync, "source", "folder/../source", 1, SM_STATUS_INVALID_PARAMETER, copied},
        {SMFileAppend, "same", "source", 0, SM_STATUS_INVALID_PARAMETER, copied},
        {SMFileAppendAndSync, "source", "folder/../same", 1, SM_STATUS_INVALID_PARAMETER, copied},
    };
    // Should a file ever be appended to itself without end, the file-size
    // limit stops it with a failed write long before the disk is full.
    const FileSizeLimit bound(1 << 20);
    const mode_t previousMask = ::umask(077);
    for (const auto &[call, from, to, flag, status, leaves] : rows) {
        SCOPED_TRACE(std::string(from) + " to " + to + ", flag " + std::to_string(flag));
        write("old", old, 0604);
        fs::remove(at("new"));
        const int descriptors = openDescriptors();
        EXPECT_EQ(call(at(from).c_str(), at(to).c_str(), flag), status);
        EXPECT_EQ(openDescriptors(), descriptors) << "every descriptor is closed";
        const std::string left = readFile(at(to));
        EXPECT_TRUE(left == leftBytes[leaves]) << left.size() << " bytes left";
        const fs::perms mode = leaves == nothing ? fs::perms::unknown : fs::perms(leaves == copied ? 0640 : 0604);
        EXPECT_EQ(fs::status(at(to)).permissions(), mode) << "unknown: no file there";
    }
    ::umask(previousMask);
}

TEST_F(FileOps, WriteFailuresKeepWhatWasWritten)
{
    // Under a file-size limit of 10000 bytes the second 8192-byte chunk is
    // written only in part. That counts as done, its rest is not tried again:
    // two chunks copy with 0, while a third fails (-1). What was written stays.
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

    // A full disk is LIMIT_REACHED: a 32 KiB file system of our own, mounted in a
    // private mount namespace of a child, so that nobody else ever sees it.
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

TEST_F(FileOps, DirectoriesSizesDeletionAndMissingArguments)
{
    const auto made = at("made"), plain = write("plain", "x");
    const mode_t previousMask = ::umask(0);
    EXPECT_EQ(SMMkDir(made.c_str()), SM_STATUS_SUCCESS);
    ::umask(previousMask);
    EXPECT_EQ(fs::status(made).permissions(), fs::perms(0755));
    EXPECT_EQ(SMMkDir(made.c_str()), SM_STATUS_SUCCESS) << "an existing directory is fine";
    EXPECT_EQ(SMMkDir(plain.c_str()), SM_STATUS_SUCCESS) << "so is anything at the path";
    EXPECT_EQ(SMMkDir(at("missing/child").c_str()), SM_STATUS_FAILURE) << "no parents are made";
    EXPECT_EQ(SMMkDir((made + "/inner").c_str()), SM_STATUS_SUCCESS);
    EXPECT_EQ(SMRmDir(made.c_str()), SM_STATUS_BAD_OBJECT);
    EXPECT_EQ(SMDeleteFile((made + "/inner").c_str()), SM_STATUS_FAILURE);
    EXPECT_EQ(SMRmDir((made + "/inner").c_str()), SM_STATUS_SUCCESS);
    EXPECT_EQ(SMRmDir(made.c_str()), SM_STATUS_SUCCESS);
    EXPECT_EQ(SMRmDir(made.c_str()), SM_STATUS_NOT_FOUND);
    EXPECT_EQ(SMRmDir(plain.c_str()), SM_STATUS_FAILURE);

    const int descriptors = openDescriptors();
    uint32_t size = 77;
    for (std::size_t bytes : {0u, 1u, 65537u}) {
        EXPECT_EQ(SMGetSizeOfFile(write("plain", std::string(bytes, 'q')).c_str(), &size), SM_STATUS_SUCCESS);
        EXPECT_EQ(size, bytes);
    }
    EXPECT_EQ(SMDeleteFile(plain.c_str()), SM_STATUS_SUCCESS);
    EXPECT_EQ(SMDeleteFile(plain.c_str()), SM_STATUS_FAILURE);
    EXPECT_EQ(SMGetSizeOfFile(plain.c_str(), &size), SM_STATUS_FAILURE);
    EXPECT_EQ(size, 0u);
    EXPECT_EQ(openDescriptors(), descriptors);

    // A missing path or pointer is BAD_ARGUMENT everywhere.
    char name[9];
    std::vector<int32_t> answers{SMGetSizeOfFile(nullptr, &size), SMGetSizeOfFile(dir_.c_str(), nullptr),
                                 SMGetTmpFile(nullptr, name, &size)};
    for (Transfer call : {SMFileCopy, SMFileCopyAndSync, SMFileAppend, SMFileAppendAndSync})
        answers.insert(answers.end(), {call(nullptr, dir_.c_str(), 1), call(dir_.c_str(), nullptr, 1)});
    for (auto call : {SMMkDir, SMRmDir, SMDeleteFile})
        answers.push_back(call(nullptr));
    EXPECT_EQ(answers, std::vector<int32_t>(answers.size(), SM_STATUS_BAD_ARGUMENT));
}

TEST_F(FileOps, TemporaryNamesReplayTheRandomGeneratorAndGiveUpAfterAHundred)
{
    char name[12] = "unchanged";
    uint32_t size = 8;
    EXPECT_EQ(SMGetTmpFile(dir_.c_str(), name, &size), SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(size, 9u);
    EXPECT_STREQ(name, "unchanged");
    ASSERT_EQ(SMGetTmpFile(dir_.c_str(), name, &size), SM_STATUS_SUCCESS);  // the generator is seeded now

    // Each name is eight draws of rand() % 62 from the alphabet. Replay the
    // sequence so that the 100 names tried all exist, then free the last.
    std::srand(4242);
    std::vector<std::string> upcoming(100);
    for (auto &next : upcoming) {
        for (int c = 0; c < 8; ++c)
            next += kNameAlphabet[static_cast<unsigned>(std::rand()) % 62];
        write(next, "");
    }
    std::srand(4242);
    EXPECT_EQ(SMGetTmpFile(dir_.c_str(), name, &size), SM_STATUS_FAILURE);
    fs::remove(at(upcoming.back()));
    std::srand(4242);
    std::strcpy(name, "###########");
    size = sizeof name;
    EXPECT_EQ(SMGetTmpFile(dir_.c_str(), name, &size), SM_STATUS_SUCCESS);
    EXPECT_EQ(std::string(name, 10), upcoming.back() + std::string("\0#", 2)) << "nothing after the 0";
    EXPECT_EQ(size, 9u);
    EXPECT_FALSE(fs::exists(at(name))) << "the name is only chosen, not created";
}

}  // namespace
