// Rotated plain-text logs: generations moved up over a table of counts,
// prefixes, permissions and deletion.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <string>
#include <tuple>

#include <zksupt/zksupt.h>

#include "support/sandbox.h"

namespace {

namespace fs = std::filesystem;
using zksupt::test::readFile;
using Files = std::map<std::string, std::string>;

class RotatedLog : public ::testing::Test {
  protected:
    void SetUp() override { make({}); }
    void TearDown() override { fs::remove_all(dir); }
    // The directory holds exactly these files.
    void make(const Files &files) const
    {
        fs::remove_all(dir);
        fs::create_directories(dir);
        for (const auto &[name, text] : files)
            std::ofstream(dir + "/" + name, std::ios::binary) << text;
    }
    Files files() const
    {
        Files found;
        for (const auto &entry : fs::directory_iterator(dir))
            found[entry.path().filename()] = readFile(entry.path());
        return found;
    }
    const std::string dir = zksupt::test::sandbox().path("rotated"), path = dir + "/a";
};

TEST_F(RotatedLog, GenerationsMoveUpAndTheOldestIsDropped)
{
    const Files three{{"a", "now"}, {"a.1", "g1"}, {"a.2", "g2"}, {"a.3", "g3"}};
    // files, maximum size, count, status, files after
    const std::tuple<Files, uint32_t, uint32_t, int32_t, Files> rows[] = {
        {three, 3, 3, SM_STATUS_SUCCESS, three},
        {three, 2, 0, SM_STATUS_SUCCESS, {{"a.1", "g1"}, {"a.2", "g2"}, {"a.3", "g3"}}},
        {three, 2, 1, SM_STATUS_SUCCESS, {{"a.1", "now"}, {"a.2", "g2"}, {"a.3", "g3"}}},
        {three, 2, 3, SM_STATUS_SUCCESS, {{"a.1", "now"}, {"a.2", "g1"}, {"a.3", "g2"}}},
        {three, 2, 5, SM_STATUS_SUCCESS, {{"a.1", "now"}, {"a.2", "g1"}, {"a.3", "g2"}, {"a.4", "g3"}}},
        {{{"a", "now"}, {"a.2", "g2"}}, 0, 3, SM_STATUS_SUCCESS, {{"a.1", "now"}, {"a.3", "g2"}}},
        {{{"a.1", "g1"}}, 0, 3, SM_STATUS_FAILURE, {{"a.1", "g1"}}},
    };
    for (const auto &[before, maxSize, count, status, after] : rows) {
        make(before);
        EXPECT_EQ(SMFileRotateCheck(path.c_str(), maxSize, count), status) << "count " << count;
        EXPECT_EQ(files(), after) << "count " << count;
    }
    EXPECT_EQ(SMFileRotateCheck(nullptr, 0, 1), SM_STATUS_SUCCESS);

    // Deleting: the generations count to 1 with flag 1, then the log itself.
    make(three);
    EXPECT_EQ(SMFileDeleteRotated(path.c_str(), 0, 3), SM_STATUS_SUCCESS);
    EXPECT_EQ(SMFileDeleteRotated(path.c_str(), 1, 2), SM_STATUS_FAILURE) << "the log itself is gone";
    EXPECT_EQ(files(), (Files{{"a.3", "g3"}}));
    EXPECT_EQ(SMFileDeleteRotated(nullptr, 1, 3), SM_STATUS_INVALID_PARAMETER);
}

TEST_F(RotatedLog, MessagesCarryTheirPrefixesAndRotateBeforeTheyAreWritten)
{
    const std::string ids = "\\[" + std::to_string(getpid()) + ":" + std::to_string(gettid()) + "\\] ";
    const std::string time = "\\[[A-Z][a-z]{2} \\d\\d \\d{4} \\d\\d:\\d\\d:\\d\\d\\] ";
    const std::tuple<uint32_t, std::string> rows[] = {
        {0, "m"}, {4, "m\n"}, {1, time + "m"}, {2, ids + "m"}, {7, time + ids + "m\n"}};
    for (const auto &[flags, pattern] : rows) {
        make({});
        EXPECT_EQ(SMFileLogMsgToRotatedLog("m", path.c_str(), 1000, 2, flags), SM_STATUS_SUCCESS);
        EXPECT_TRUE(std::regex_match(readFile(path), std::regex(pattern))) << flags << ": " << readFile(path);
    }
    // The size is checked before the message goes in, which may take the log
    // past it; the next generation keeps the log's permissions.
    make({{"a", "12345"}});
    fs::permissions(path, fs::perms(0600));
    EXPECT_EQ(SMFileLogMsgToRotatedLog("abcdef", path.c_str(), 5, 2, 0), SM_STATUS_SUCCESS);
    EXPECT_EQ(SMFileLogMsgToRotatedLog("ghi", path.c_str(), 5, 2, 0), SM_STATUS_SUCCESS);
    EXPECT_EQ(files(), (Files{{"a", "ghi"}, {"a.1", "12345abcdef"}}));
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0600));
    make({});
    const mode_t mask = umask(077);
    EXPECT_EQ(SMFileLogMsgToRotatedLog("new", path.c_str(), 5, 2, 0), SM_STATUS_SUCCESS);
    umask(mask);
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0644));

    EXPECT_EQ(SMFileLogMsgToRotatedLog(nullptr, path.c_str(), 5, 2, 0), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMFileLogMsgToRotatedLog("m", nullptr, 5, 2, 0), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMFileLogMsgToRotatedLog("m", (dir + "/no/a").c_str(), 5, 2, 0), SM_STATUS_FAILURE);
}

}  // namespace
