// Rotated plain-text logs: generations moved up over a table of counts, the
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
    void SetUp() override
    {
        fs::remove_all(dir);
        fs::create_directories(dir);
    }
    void TearDown() override { fs::remove_all(dir); }

    void make(const Files &files) const
    {
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
    const std::string dir = zksupt::test::sandbox().path("rotated");
    const std::string path = dir + "/app.log";
};

TEST_F(RotatedLog, GenerationsMoveUpAndTheOldestIsDropped)
{
    const Files three{{"app.log", "now"}, {"app.log.1", "g1"}, {"app.log.2", "g2"}, {"app.log.3", "g3"}};
    const std::tuple<Files, uint32_t, uint32_t, int32_t, Files> rows[] = {
        {three, 3, 3, SM_STATUS_SUCCESS, three},  // at most the limit: nothing moves
        {three, 2, 0, SM_STATUS_SUCCESS, {{"app.log.1", "g1"}, {"app.log.2", "g2"}, {"app.log.3", "g3"}}},
        {three, 2, 1, SM_STATUS_SUCCESS, {{"app.log.1", "now"}, {"app.log.2", "g2"}, {"app.log.3", "g3"}}},
        {three, 2, 3, SM_STATUS_SUCCESS, {{"app.log.1", "now"}, {"app.log.2", "g1"}, {"app.log.3", "g2"}}},
        {three,
         2,
         5,
         SM_STATUS_SUCCESS,
         {{"app.log.1", "now"}, {"app.log.2", "g1"}, {"app.log.3", "g2"}, {"app.log.4", "g3"}}},
        {{{"app.log", "now"}, {"app.log.2", "g2"}},
         0,
         3,
         SM_STATUS_SUCCESS,
         {{"app.log.1", "now"}, {"app.log.3", "g2"}}},
        {{{"app.log.1", "g1"}}, 0, 3, SM_STATUS_FAILURE, {{"app.log.1", "g1"}}},
    };
    for (const auto &[before, maxSize, count, status, after] : rows) {
        SCOPED_TRACE("count " + std::to_string(count) + ", " + std::to_string(before.size()) + " files");
        SetUp();
        make(before);
        EXPECT_EQ(SMFileRotateCheck(path.c_str(), maxSize, count), status);
        EXPECT_EQ(files(), after);
    }
    EXPECT_EQ(SMFileRotateCheck(nullptr, 0, 1), SM_STATUS_SUCCESS);
}

TEST_F(RotatedLog, MessagesCarryTheirPrefixesAndRotateBeforeTheyAreWritten)
{
    const std::string pidThread = "\\[" + std::to_string(getpid()) + ":" + std::to_string(gettid()) + "\\] ";
    const std::string time = "\\[[A-Z][a-z]{2} \\d\\d \\d{4} \\d\\d:\\d\\d:\\d\\d\\] ";
    const std::tuple<uint32_t, std::string> rows[] = {
        {0, "msg"}, {4, "msg\n"}, {1, time + "msg"}, {2, pidThread + "msg"}, {7, time + pidThread + "msg\n"},
    };
    for (const auto &[flags, pattern] : rows) {
        fs::remove(path);
        EXPECT_EQ(SMFileLogMsgToRotatedLog("msg", path.c_str(), 1000, 2, flags), SM_STATUS_SUCCESS);
        EXPECT_TRUE(std::regex_match(readFile(path), std::regex(pattern))) << flags << ": " << readFile(path);
    }
    // A log one byte over the limit is rotated before the next message; the
    // message itself may take the log past it. The log's mode carries over.
    make({{"app.log", "12345"}});
    fs::permissions(path, fs::perms(0600));
    EXPECT_EQ(SMFileLogMsgToRotatedLog("abcdef", path.c_str(), 5, 2, 0), SM_STATUS_SUCCESS);
    EXPECT_EQ(SMFileLogMsgToRotatedLog("ghi", path.c_str(), 5, 2, 0), SM_STATUS_SUCCESS);
    EXPECT_EQ(files(), (Files{{"app.log", "ghi"}, {"app.log.1", "12345abcdef"}}));
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0600));
    fs::remove_all(dir);
    fs::create_directories(dir);
    const mode_t mask = umask(077);
    EXPECT_EQ(SMFileLogMsgToRotatedLog("new", path.c_str(), 5, 2, 0), SM_STATUS_SUCCESS);
    umask(mask);
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0644));

    EXPECT_EQ(SMFileLogMsgToRotatedLog(nullptr, path.c_str(), 5, 2, 0), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMFileLogMsgToRotatedLog("m", nullptr, 5, 2, 0), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMFileLogMsgToRotatedLog("m", (dir + "/no/app.log").c_str(), 5, 2, 0), SM_STATUS_FAILURE);
}

TEST_F(RotatedLog, DeletingGenerationsAndTheLog)
{
    const Files all{{"app.log", "now"}, {"app.log.1", "g1"}, {"app.log.2", "g2"}, {"app.log.3", "g3"}};
    make(all);
    EXPECT_EQ(SMFileDeleteRotated(path.c_str(), 0, 3), SM_STATUS_SUCCESS);
    EXPECT_EQ(files(), (Files{{"app.log.1", "g1"}, {"app.log.2", "g2"}, {"app.log.3", "g3"}}));
    EXPECT_EQ(SMFileDeleteRotated(path.c_str(), 1, 2), SM_STATUS_FAILURE) << "the log itself is missing";
    EXPECT_EQ(files(), (Files{{"app.log.3", "g3"}}));
    make(all);
    EXPECT_EQ(SMFileDeleteRotated(path.c_str(), 1, 3), SM_STATUS_SUCCESS);
    EXPECT_TRUE(files().empty());
    EXPECT_EQ(SMFileDeleteRotated(nullptr, 1, 3), SM_STATUS_INVALID_PARAMETER);
}

}  // namespace
