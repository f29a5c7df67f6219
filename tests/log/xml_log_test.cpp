// The XML event log: a whole document after each append, entries spliced
// over the closing tag, fields written as they are, refusals, the backup and
// clearing.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <tuple>
#include <vector>

#include <zksupt/zksupt.h>

#include "log/log_files.h"
#include "support/sandbox.h"
#include "support/status_names.h"

namespace {

namespace fs = std::filesystem;
using namespace zksupt::test;

const std::string kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";

class XmlLog : public ::testing::Test {
  protected:
    void SetUp() override { removeLogs(); }
    int32_t append(int32_t id, const char *user, const char *source, const char *description,
                   uint32_t limit = 1 << 20) const
    {
        return SMAppendToXMLLog(path.c_str(), 1, 2, id, user, source, description, nullptr, nullptr, 0, limit);
    }
    void expectWellFormed(bool expected) const
    {
        if (const std::optional<bool> answer = wellFormed(path)) {
            EXPECT_EQ(*answer, expected) << readFile(path);
        }
    }
    const std::string path = logPathOf(SM_LOG_TARGET_XML);
};

TEST_F(XmlLog, EntriesGoBeforeTheClosingTagOfAOneLineDocument)
{
    const uint8_t data[] = {0x01, 0xAB};
    ASSERT_EQ(SMAppendToXMLLog(path.c_str(), 2, 3, 77, "user", "svc", "disk low", "a&b?c", data, 2, 1 << 20), 0);
    std::string file = readFile(path);
    const std::string first =
        xmlEntry(file, 0, xmlFields(2, 77, "a&amp;b?c", "user", "svc", "Pell Service", "disk low", "0x01,0xAB"));
    EXPECT_EQ(file, kDeclaration + "<EventLog>" + first + "</EventLog>");
    expectWellFormed(true);

    // A line feed after the closing tag is covered by the next entry.
    std::ofstream(path, std::ios::app) << "\n";
    ASSERT_EQ(SMAppendToXMLLog(path.c_str(), 16, 6, -1, nullptr, nullptr, nullptr, nullptr, nullptr, 0, 1 << 20), 0);
    file = readFile(path);
    const std::string second =
        xmlEntry(file, first.size(), xmlFields(16, 4294967295, "", "", "", "Varve Management", ""));
    EXPECT_EQ(file, kDeclaration + "<EventLog>" + first + second + "</EventLog>");
    expectWellFormed(true);

    // Only the link is escaped: a description holding '<' spoils the document.
    ASSERT_EQ(append(1, "a&b", "s", "x < y"), SM_STATUS_SUCCESS);
    file = readFile(path);
    EXPECT_TRUE(file.ends_with("<UserInfo>a&b</UserInfo><Source>s</Source><Category>Meridian Service</Category>"
                               "<Description>x < y</Description><Data></Data></LogEntry></EventLog>"));
    expectWellFormed(false);
}

TEST_F(XmlLog, ShortFilesStartAfreshAndAFileWithoutItsClosingTagIsLeftAlone)
{
    const std::string tail(5000, ' ');
    const std::tuple<std::string, int32_t, std::string> rows[] = {
        {std::string(37, '#'), SM_STATUS_SUCCESS, kDeclaration + "<EventLog><LogEntry>"},
        {kDeclaration + "<EventL", SM_STATUS_BAD_OBJECT, ""},
        {kDeclaration + "</EventLog>", SM_STATUS_SUCCESS, kDeclaration + "<LogEntry>"},
        {kDeclaration.substr(0, 37) + "</EventLog>", SM_STATUS_BAD_OBJECT, ""},
        {kDeclaration + "<EventLog>" + tail + "</EventLog>" + tail, SM_STATUS_SUCCESS,
         kDeclaration + "<EventLog>" + tail + "<LogEntry>"},
    };
    for (const auto &[old, status, begins] : rows) {
        fill(path, old);
        EXPECT_EQ(append(1, nullptr, "s", "d"), status) << old.size();
        const std::string file = readFile(path);
        if (status != SM_STATUS_SUCCESS) {
            EXPECT_EQ(file, old);
            continue;
        }
        EXPECT_TRUE(file.starts_with(begins));
        // The file is never cut: old bytes past what the entry covers stay.
        const std::size_t end = file.find("</LogEntry></EventLog>") + 22;
        EXPECT_EQ(file.substr(end), old.size() > end ? old.substr(end) : "");
    }
}

TEST_F(XmlLog, RefusedEntriesWriteNothing)
{
    const std::string n511(511, 'n'), t8191(8191, 't'), n512 = n511 + "n", t8192 = t8191 + "t";
    const std::vector<char> data(32769, 'x');
    // path (null or the log), category, user info, source, description, data, length, status
    const std::tuple<bool, uint16_t, const char *, const char *, const char *, const char *, uint32_t, int32_t> rows[] =
        {
            {false, 1, "u", "s", "d", nullptr, 0, SM_STATUS_BAD_ARGUMENT},
            {true, 1, "u", "s", "d", nullptr, 2, SM_STATUS_BAD_ARGUMENT},
            {true, 1, "u", "s", "d", data.data(), 32769, SM_STATUS_BAD_ARGUMENT},
            {true, 1, "", "s", "d", nullptr, 0, SM_STATUS_BAD_ARGUMENT},
            {true, 1, "u", "", "d", nullptr, 0, SM_STATUS_BAD_ARGUMENT},
            {true, 1, "u", "s", "", nullptr, 0, SM_STATUS_BAD_ARGUMENT},
            {true, 1, n512.c_str(), "s", "d", nullptr, 0, SM_STATUS_BAD_ARGUMENT},
            {true, 1, "u", n512.c_str(), "d", nullptr, 0, SM_STATUS_BAD_ARGUMENT},
            {true, 1, "u", "s", t8192.c_str(), nullptr, 0, SM_STATUS_BAD_ARGUMENT},
            {true, 0, "u", "s", "d", nullptr, 0, SM_STATUS_FAILURE},
            {true, 7, "u", "s", "d", nullptr, 0, SM_STATUS_FAILURE},
            {true, 1, n511.c_str(), n511.c_str(), t8191.c_str(), data.data(), 32768, SM_STATUS_SUCCESS},
        };
    for (const auto &[named, category, user, source, description, bytes, length, status] : rows) {
        EXPECT_EQ(SMAppendToXMLLog(named ? path.c_str() : nullptr, 4, category, 1, user, source, description, nullptr,
                                   bytes, length, 1 << 20),
                  status);
        EXPECT_EQ(fs::exists(path), status == SM_STATUS_SUCCESS) << statusName(status);
    }
}

TEST_F(XmlLog, AFullLogMovesToItsBackupAndClearingStartsAfresh)
{
    ASSERT_EQ(append(10, "u", "s", "one"), SM_STATUS_SUCCESS);
    const std::string one = readFile(path);
    ASSERT_EQ(append(11, "u", "s", "two", one.size() * 2), SM_STATUS_SUCCESS);
    EXPECT_FALSE(fs::exists(backupOf(path))) << "both entries stay below the limit";
    const std::string both = readFile(path);
    ASSERT_EQ(append(12, "u", "s", "three", both.size() + 10), SM_STATUS_SUCCESS);
    EXPECT_EQ(readFile(backupOf(path)), both);
    std::string file = readFile(path);
    const std::string moved = xmlEntry(file, 0, xmlFields(4, 1, "", "u", "s", "Lodestar Engine", "Log backup created"));
    const std::string third = xmlEntry(file, moved.size(), xmlFields(1, 12, "", "u", "s", "Meridian Service", "three"));
    EXPECT_EQ(file, kDeclaration + "<EventLog>" + moved + third + "</EventLog>");

    EXPECT_EQ(SMClearLog(SM_LOG_TARGET_XML, 3, "admin"), SM_STATUS_SUCCESS);
    file = readFile(path);
    const std::string link = "help/nrx/en/msgguide/wwhelp/wwhimpl/common/html/wwhelp.htm?context=Messages_Guide";
    EXPECT_EQ(file, kDeclaration + "<EventLog>" +
                        xmlEntry(file, 0,
                                 xmlFields(4, 0, link + "&amp;topic=0000", "Local System", "admin", "Pell Service",
                                           "Log was cleared")) +
                        "</EventLog>");
    expectWellFormed(true);
    EXPECT_EQ(SMClearXMLLog(path.c_str(), 9, "u", "s"), SM_STATUS_FAILURE) << "an unknown category";
    EXPECT_FALSE(fs::exists(path)) << "deleted all the same";
    EXPECT_EQ(SMClearXMLLog(path.c_str(), 1, "u", "s"), SM_STATUS_FAILURE) << "a missing log";
    EXPECT_EQ(SMForceXMLLogExists(path.c_str()), SM_STATUS_SUCCESS);
    EXPECT_FALSE(fs::exists(path)) << "nothing is made";
}

}  // namespace
