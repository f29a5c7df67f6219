// File operations inside a directory of the sandbox: statuses, contents,
// permissions, partial results and descriptors.
#include <gtest/gtest.h>

#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <zksupt/file.h>
#include <zksupt/status.h>

#include "support/child.h"
#include "support/sandbox.h"

namespace {

namespace fs = std::filesystem;

std::string randomText(std::size_t size, unsigned seed)
{
    std::mt19937 random(seed);
    std::string text(size, '\0');
    for (auto &c : text)
        c = static_cast<char>(random());
    return text;
}

int openDescriptors()
{
    int count = 0;
    for ([[maybe_unused]] const auto &entry : fs::directory_iterator("/proc/self/fd"))
        ++count;
    return count;
}

class FileOps : public ::testing::Test {
  protected:
    void SetUp() override
    {
        const auto *info = ::testing::UnitTest::GetInstance()->current_test_info();
        dir_ = zksupt::test::sandbox().path(std::string("file-ops/") + info->name());
        fs::create_directories(dir_);
    }
    void TearDown() override { fs::remove_all(dir_); }

    std::string at(const std::string &name) const { return dir_ + "/" + name; }

    std::string write(const std::string &name, const std::string &contents, mode_t mode = 0644) const
    {
        const std::string path = at(name);
        std::ofstream(path, std::ios::binary) << contents;
        fs::permissions(path, static_cast<fs::perms>(mode));
        return path;
    }

    static std::string read(const std::string &path)
    {
        std::ifstream in(path, std::ios::binary);
        std::ostringstream text;
        text << in.rdbuf();
        return text.str();
    }

    static mode_t modeOf(const std::string &path)
    {
        struct stat status {};
        EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
        return status.st_mode & 07777;
    }

    std::string dir_;
};

TEST_F(FileOps, CopyCreatesOrReplacesWithTheSourcesBytesAndMode)
{
    const std::string contents = randomText(3 * 8192 + 123, 1);  // several chunks
    const auto source = write("source", contents, 0640);

    for (auto copy : {SMFileCopy, SMFileCopyAndSync}) {
        const auto target = at("fresh");
        ASSERT_EQ(copy(source.c_str(), target.c_str(), 0), SM_STATUS_SUCCESS);
        EXPECT_EQ(read(target), contents);
        EXPECT_EQ(modeOf(target), 0640u);
        fs::remove(target);
    }

    const auto longer = write("longer", randomText(100000, 2), 0600);
    ASSERT_EQ(SMFileCopy(source.c_str(), longer.c_str(), 1), SM_STATUS_SUCCESS);
    EXPECT_EQ(read(longer), contents) << "a replaced file is truncated first";
    EXPECT_EQ(modeOf(longer), 0640u);
}

TEST_F(FileOps, CopyOntoAnExistingFileNeedsOverwrite)
{
    const auto source = write("source", "new", 0640);
    const auto target = write("target", "old", 0600);
    EXPECT_EQ(SMFileCopy(source.c_str(), target.c_str(), 0), SM_STATUS_DESTINATION_EXISTS);
    EXPECT_EQ(SMFileCopyAndSync(source.c_str(), target.c_str(), 0), 0x14);
    EXPECT_EQ(read(target), "old");
    EXPECT_EQ(modeOf(target), 0600u);
    EXPECT_EQ(read(source), "new");
    // Checked before the source is opened.
    EXPECT_EQ(SMFileCopy(at("missing").c_str(), target.c_str(), 0), 0x14);
    // A link that leads nowhere still takes the name.
    fs::create_symlink(at("nowhere"), at("link"));
    EXPECT_EQ(SMFileCopy(source.c_str(), at("link").c_str(), 0), 0x14);
    EXPECT_FALSE(fs::exists(at("nowhere")));
}

TEST_F(FileOps, AppendAddsToTheEndAndCreatesOnlyWhenAsked)
{
    const auto source = write("source", "tail", 0750);
    const auto target = write("target", "head-", 0600);
    EXPECT_EQ(SMFileAppend(source.c_str(), target.c_str(), 0), SM_STATUS_SUCCESS);
    EXPECT_EQ(SMFileAppendAndSync(source.c_str(), target.c_str(), 1), SM_STATUS_SUCCESS);
    EXPECT_EQ(read(target), "head-tailtail");
    EXPECT_EQ(modeOf(target), 0600u) << "an existing file keeps its mode";

    const auto fresh = at("fresh");
    EXPECT_EQ(SMFileAppend(source.c_str(), fresh.c_str(), 0), SM_STATUS_FILE_NOT_FOUND);
    EXPECT_FALSE(fs::exists(fresh));
    const std::string big = randomText(20000, 3);
    const auto bigSource = write("big", big, 0750);
    EXPECT_EQ(SMFileAppendAndSync(bigSource.c_str(), fresh.c_str(), 1), SM_STATUS_SUCCESS);
    EXPECT_EQ(read(fresh), big);
    EXPECT_EQ(modeOf(fresh), 0750u);
}

TEST_F(FileOps, FailuresOfArgumentsOpeningAndReading)
{
    const auto source = write("source", "data");
    const auto target = at("target");
    EXPECT_EQ(SMFileCopy(nullptr, target.c_str(), 1), SM_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(SMFileAppend(source.c_str(), nullptr, 1), SM_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(SMFileCopy(at("missing").c_str(), target.c_str(), 1), SM_STATUS_FILE_NOT_FOUND);
    EXPECT_EQ(SMFileAppend(at("missing").c_str(), target.c_str(), 1), SM_STATUS_FILE_NOT_FOUND);
    EXPECT_FALSE(fs::exists(target));
    // The destination's directory does not exist.
    EXPECT_EQ(SMFileCopy(source.c_str(), at("no/such/file").c_str(), 1), SM_STATUS_FAILURE);
    EXPECT_EQ(SMFileAppend(source.c_str(), at("no/such/file").c_str(), 1), SM_STATUS_FAILURE);

    // A directory opens for reading, but reading it fails: the destination
    // stays as far as it got, truncated and empty.
    fs::create_directory(at("folder"));
    const auto previous = write("previous", "previous");
    EXPECT_EQ(SMFileCopy(at("folder").c_str(), previous.c_str(), 1), SM_STATUS_FAILURE);
    EXPECT_EQ(read(previous), "");
}

TEST_F(FileOps, WriteFailureKeepsWhatWasWrittenAndDropsAShortWritesRest)
{
    // Under a file-size limit of 10000 bytes the first chunk of 8192 is
    // written, the second only in part (and its rest is not retried), the
    // third fails.
    const std::string contents = randomText(3 * 8192, 4);
    const auto source = write("source", contents);
    const auto target = at("target");
    const int result = zksupt::test::runInChild([&] {
        ::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{10000, 10000};
        if (::setrlimit(RLIMIT_FSIZE, &limit) != 0)
            return 100;
        return SMFileCopy(source.c_str(), target.c_str(), 1) == SM_STATUS_FAILURE ? 0 : 101;
    });
    EXPECT_EQ(result, 0);
    EXPECT_EQ(read(target), contents.substr(0, 10000));
}

TEST_F(FileOps, FullDiskIsReportedAndKeepsWhatFitted)
{
    // A 32 KiB file system of our own, mounted in a private mount namespace
    // of a child process, so that nobody else ever sees it.
    const std::string contents = randomText(100000, 6);
    const auto source = write("source", contents);
    fs::create_directory(at("small"));
    const auto target = at("small/target");
    const int result = zksupt::test::runInChild([&] {
        if (::unshare(CLONE_NEWNS) != 0 || ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
            ::mount("zksupt-test", at("small").c_str(), "tmpfs", 0, "size=32k") != 0)
            return 77;
        if (SMFileCopy(source.c_str(), target.c_str(), 1) != SM_STATUS_LIMIT_REACHED)
            return 1;
        const std::string kept = read(target);
        return !kept.empty() && kept.size() < contents.size() && contents.compare(0, kept.size(), kept) == 0 ? 0 : 2;
    });
    if (result == 77)
        GTEST_SKIP() << "no private mount namespace for a small file system here";
    EXPECT_EQ(result, 0);
}

TEST_F(FileOps, NoDescriptorIsLeftOpenOnAnyPath)
{
    const auto source = write("source", randomText(10000, 5));
    fs::create_directory(at("folder"));
    const int before = openDescriptors();
    for (int round = 0; round < 20; ++round) {
        SMFileCopy(source.c_str(), at("copy").c_str(), 1);
        SMFileAppend(source.c_str(), at("copy").c_str(), 1);
        SMFileCopy(at("folder").c_str(), at("copy").c_str(), 1);
        SMFileCopy(source.c_str(), at("no/such").c_str(), 1);
        uint32_t size = 0;
        SMGetSizeOfFile(source.c_str(), &size);
    }
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(FileOps, MakeAndRemoveOneDirectoryLevel)
{
    const auto made = at("made");
    EXPECT_EQ(SMMkDir(made.c_str()), SM_STATUS_SUCCESS);
    EXPECT_TRUE(fs::is_directory(made));
    EXPECT_EQ(modeOf(made) & ~0755u, 0u);
    EXPECT_EQ(SMMkDir(made.c_str()), SM_STATUS_SUCCESS) << "an existing directory is fine";
    EXPECT_EQ(SMMkDir(write("plain", "x").c_str()), SM_STATUS_SUCCESS) << "so is anything at the path";
    EXPECT_EQ(SMMkDir(at("missing/child").c_str()), SM_STATUS_FAILURE) << "no parents are made";

    fs::create_directory(made + "/inner");
    EXPECT_EQ(SMRmDir(made.c_str()), 0x101);
    EXPECT_EQ(SMRmDir((made + "/inner").c_str()), SM_STATUS_SUCCESS);
    EXPECT_EQ(SMRmDir(made.c_str()), SM_STATUS_SUCCESS);
    EXPECT_FALSE(fs::exists(made));
    EXPECT_EQ(SMRmDir(made.c_str()), 0x100);
    EXPECT_EQ(SMRmDir(at("plain").c_str()), SM_STATUS_FAILURE);
}

TEST_F(FileOps, SizeAndDeletion)
{
    uint32_t size = 77;
    for (std::size_t bytes : {0u, 1u, 65537u}) {
        const auto path = write("sized", std::string(bytes, 'q'));
        EXPECT_EQ(SMGetSizeOfFile(path.c_str(), &size), SM_STATUS_SUCCESS);
        EXPECT_EQ(size, bytes);
        EXPECT_EQ(SMDeleteFile(path.c_str()), SM_STATUS_SUCCESS);
        EXPECT_FALSE(fs::exists(path));
        size = 77;
        EXPECT_EQ(SMGetSizeOfFile(path.c_str(), &size), SM_STATUS_FAILURE);
        EXPECT_EQ(size, 0u);
        EXPECT_EQ(SMDeleteFile(path.c_str()), SM_STATUS_FAILURE);
    }
    fs::create_directory(at("folder"));
    EXPECT_EQ(SMDeleteFile(at("folder").c_str()), SM_STATUS_FAILURE);
    EXPECT_TRUE(fs::exists(at("folder")));
}

TEST_F(FileOps, TemporaryNamesAreFreeAndUseTheAlphabet)
{
    const std::string alphabet = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    std::set<char> seen;
    for (int i = 0; i < 500; ++i) {
        char name[32];
        std::memset(name, '#', sizeof name);
        uint32_t size = sizeof name;
        ASSERT_EQ(SMGetTmpFile(dir_.c_str(), name, &size), SM_STATUS_SUCCESS);
        EXPECT_EQ(size, 9u);
        ASSERT_EQ(std::strlen(name), 8u);
        for (int c = 0; c < 8; ++c) {
            ASSERT_NE(alphabet.find(name[c]), std::string::npos) << name;
            seen.insert(name[c]);
        }
        EXPECT_EQ(name[9], '#') << "nothing is written past the terminator";
        EXPECT_FALSE(fs::exists(at(name))) << "the file is not created";
    }
    EXPECT_EQ(seen.size(), alphabet.size()) << "4000 draws reach every character";

    char unchanged[16] = "unchanged";
    for (uint32_t small : {0u, 8u}) {
        uint32_t size = small;
        EXPECT_EQ(SMGetTmpFile(dir_.c_str(), unchanged, &size), SM_STATUS_BUFFER_TOO_SMALL);
        EXPECT_EQ(size, 9u);
        EXPECT_STREQ(unchanged, "unchanged");
    }
}

TEST_F(FileOps, TemporaryNameGivesUpAfterAHundredTakenNames)
{
    // The names come from the C random generator: replay its sequence, take
    // the first 99 or 100 names it will produce, and ask.
    const std::string alphabet = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
    char name[9];
    uint32_t size = sizeof name;
    ASSERT_EQ(SMGetTmpFile(dir_.c_str(), name, &size), 0);  // seeds, if not done yet

    std::srand(4242);
    std::vector<std::string> upcoming(100);
    for (auto &next : upcoming)
        for (int c = 0; c < 8; ++c)
            next += alphabet[static_cast<unsigned>(std::rand()) % 62];
    for (const auto &taken : upcoming)
        write(taken, "");

    std::srand(4242);
    EXPECT_EQ(SMGetTmpFile(dir_.c_str(), name, &size), SM_STATUS_FAILURE);

    fs::remove(at(upcoming.back()));
    std::srand(4242);
    size = sizeof name;
    EXPECT_EQ(SMGetTmpFile(dir_.c_str(), name, &size), SM_STATUS_SUCCESS);
    EXPECT_EQ(name, upcoming.back());
}

}  // namespace
