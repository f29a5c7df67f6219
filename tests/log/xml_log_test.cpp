// The XML event log: whole documents after each append, entries spliced
// before the closing tag, the fields written as they are, refusals, the
// backup and clearing.
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
    void expectWellFormed(bool expected)
    {
        if (const std::optional<bool> answer = wellFormed(path)) {
            EXPECT_EQ(*answer, expected) << readFile(path);
        }
    }
    const std::string path = logPathOf(SM_LOG_TARGET_XML);
};

TEST_F(XmlLog, EntriesGoBeforeTheClosingTagOfOneLineDocument)
{
    const uint8_t data[] = {0x01, 0xAB};
    ASSERT_EQ(SMAppendToXMLLog(path.c_str(), 2, 3, 77, "user", "svc", "disk low", "a&b?c", data, 2, 1 << 20),
              SM_STATUS_SUCCESS);
    std::string file = readFile(path);
    const std::string first =
        xmlEntry(file, 0,
                 "<Type>2</Type><ID>77</ID><Link>a&amp;b?c</Link><UserInfo>user</UserInfo><Source>svc</Source>"
                 "<Category>Pell Service</Category><Description>disk low</Description><Data>0x01,0xAB</Data>");
    EXPECT_EQ(file, kDeclaration + "<EventLog>" + first + "</EventLog>");
    expectWellFormed(true);

    // A line feed after the closing tag is covered by the next entry.
    std::ofstream(path, std::ios::app) << "\n";
    ASSERT_EQ(SMAppendToXMLLog(path.c_str(), 16, 6, -1, nullptr, nullptr, nullptr, nullptr, nullptr, 0, 1 << 20),
              SM_STATUS_SUCCESS);
    file = readFile(path);
    const std::string second = xmlEntry(file, first.size(),
                                        "<Type>16</Type><ID>4294967295</ID><Link></Link><UserInfo></UserInfo><Source>"
                                        "</Source><Category>Varve Management</Category><Description></Description>"
                                        "<Data></Data>");
    EXPECT_EQ(file, kDeclaration + "<EventLog>" + first + second + "</EventLog>");
    expectWellFormed(true);

    // Only the link is escaped: a description holding '<' spoils the document.
    ASSERT_EQ(SMAppendToXMLLog(path.c_str(), 1, 1, 1, "a&b", "s", "x < y", nullptr, nullptr, 0, 1 << 20),
              SM_STATUS_SUCCESS);
    file = readFile(path);
    EXPECT_NE(file.find("<UserInfo>a&b</UserInfo>"), std::string::npos);
    EXPECT_TRUE(file.ends_with("<Description>x < y</Description><Data></Data></LogEntry></EventLog>"));
    expectWellFormed(false);
}

TEST_F(XmlLog, ShortFilesStartAfreshAndAFileWithoutItsClosingTagIsLeftAlone)
{
    const std::tuple<std::string, int32_t, std::string> rows[] = {
        {std::string(37, '#'), SM_STATUS_SUCCESS, kDeclaration + "<EventLog><LogEntry>"},
        {kDeclaration + "<EventL", SM_STATUS_BAD_OBJECT, kDeclaration + "<EventL"},
        {kDeclaration + "</EventLog>", SM_STATUS_SUCCESS, kDeclaration + "<LogEntry>"},
        {kDeclaration.substr(0, 37) + "</EventLog>", SM_STATUS_BAD_OBJECT, kDeclaration.substr(0, 37)},
        {kDeclaration + "<EventLog>" + std::string(5000, ' ') + "</EventLog>" + std::string(5000, ' '),
         SM_STATUS_SUCCESS, kDeclaration + "<EventLog>" + std::string(5000, ' ') + "<LogEntry>"},
    };
    for (const auto &[old, status, begins] : rows) {
        SCOPED_TRACE(old.size());
        fill(path, old);
        EXPECT_EQ(SMAppendToXMLLog(path.c_str(), 4, 1, 1, nullptr, "s", "d", nullptr, nullptr, 0, 1 << 20), status);
        const std::string file = readFile(path);
        EXPECT_EQ(file.substr(0, begins.size()), begins);
        if (status != SM_STATUS_SUCCESS)
            EXPECT_EQ(file, old);
        else if (old.size() < 5000)
            EXPECT_TRUE(file.ends_with("</LogEntry></EventLog>"));
        else {
            EXPECT_EQ(file.size(), old.size()) << "the file is not cut";
            EXPECT_EQ(file.find_last_not_of(' ') + 1, file.rfind("</LogEntry></EventLog>") + 22)
                << "bytes past the old closing tag that the entry does not cover stay";
        }
    }
}

TEST_F(XmlLog, RefusedEntriesWriteNothing)
{
    const std::string name512(512, 'n'), text8192(8192, 't');
    const std::vector<char> data(32769, 'x');
    struct Row {
        const char *path;
        uint16_t category;
        const char *userInfo, *source, *description;
        const void *data;
        uint32_t length;
        int32_t status;
    };
    const Row rows[] = {
        {nullptr, 1, "u", "s", "d", nullptr, 0, SM_STATUS_BAD_ARGUMENT},
        {"", 1, "u", "s", "d", nullptr, 2, SM_STATUS_BAD_ARGUMENT},
        {"", 1, "u", "s", "d", data.data(), 32769, SM_STATUS_BAD_ARGUMENT},
        {"", 1, "", "s", "d", nullptr, 0, SM_STATUS_BAD_ARGUMENT},
        {"", 1, "u", "", "d", nullptr, 0, SM_STATUS_BAD_ARGUMENT},
        {"", 1, "u", "s", "", nullptr, 0, SM_STATUS_BAD_ARGUMENT},
        {"", 1, name512.c_str(), "s", "d", nullptr, 0, SM_STATUS_BAD_ARGUMENT},
        {"", 1, "u", name512.c_str(), "d", nullptr, 0, SM_STATUS_BAD_ARGUMENT},
        {"", 1, "u", "s", text8192.c_str(), nullptr, 0, SM_STATUS_BAD_ARGUMENT},
        {"", 0, "u", "s", "d", nullptr, 0, SM_STATUS_FAILURE},
        {"", 7, "u", "s", "d", nullptr, 0, SM_STATUS_FAILURE},
    };
    for (const Row &row : rows) {
        EXPECT_EQ(SMAppendToXMLLog(row.path == nullptr ? nullptr : path.c_str(), 4, row.category, 1, row.userInfo,
                                   row.source, row.description, nullptr, row.data, row.length, 1 << 20),
                  row.status);
        EXPECT_FALSE(fs::exists(path)) << statusName(row.status);
    }
    EXPECT_EQ(SMAppendToXMLLog(path.c_str(), 4, 1, 1, name512.c_str() + 1, name512.c_str() + 1, text8192.c_str() + 1,
                               nullptr, data.data(), 32768, 1 << 20),
              SM_STATUS_SUCCESS)
        << "the longest texts and data";
}

TEST_F(XmlLog, AFullLogMovesToItsBackupAndClearingStartsAfresh)
{
    ASSERT_EQ(SMAppendToXMLLog(path.c_str(), 1, 2, 10, "u", "s", "one", nullptr, nullptr, 0, 1 << 20), 0);
    const std::string old = readFile(path);
    ASSERT_EQ(SMAppendToXMLLog(path.c_str(), 1, 2, 11, "u", "s", "two", nullptr, nullptr, 0, old.size() * 2), 0);
    EXPECT_EQ(readFile(backupOf(path)), "") << "the log with both entries stays below the limit";
    const std::string both = readFile(path);
    ASSERT_EQ(SMAppendToXMLLog(path.c_str(), 1, 2, 12, "u", "s", "three", nullptr, nullptr, 0, both.size() + 10), 0);
    EXPECT_EQ(readFile(backupOf(path)), both);
    std::string file = readFile(path);
    const std::string backedUp =
        xmlEntry(file, 0,
                 "<Type>4</Type><ID>1</ID><Link></Link><UserInfo>u</UserInfo><Source>s</Source>"
                 "<Category>Lodestar Engine</Category><Description>Log backup created"
                 "</Description><Data></Data>");
    const std::string third =
        xmlEntry(file, backedUp.size(),
                 "<Type>1</Type><ID>12</ID><Link></Link><UserInfo>u</UserInfo><Source>s</Source>"
                 "<Category>Meridian Service</Category><Description>three</Description><Data></Data>");
    EXPECT_EQ(file, kDeclaration + "<EventLog>" + backedUp + third + "</EventLog>");

    EXPECT_EQ(SMClearLog(SM_LOG_TARGET_XML, 3, "admin"), SM_STATUS_SUCCESS);
    file = readFile(path);
    EXPECT_EQ(file, kDeclaration + "<EventLog>" +
                        xmlEntry(file, 0,
                                 "<Type>4</Type><ID>0</ID><Link>help/nrx/en/msgguide/wwhelp/wwhimpl/common/html/"
                                 "wwhelp.htm?context=Messages_Guide&amp;topic=0000</Link><UserInfo>Local System"
                                 "</UserInfo><Source>admin</Source><Category>Pell Service</Category><Description>Log "
                                 "was cleared</Description><Data></Data>") +
                        "</EventLog>");
    expectWellFormed(true);
    EXPECT_EQ(SMClearXMLLog(path.c_str(), 9, "u", "s"), SM_STATUS_FAILURE) << "an unknown category";
    EXPECT_FALSE(fs::exists(path)) << "deleted all the same";
    EXPECT_EQ(SMClearXMLLog(path.c_str(), 1, "u", "s"), SM_STATUS_FAILURE) << "a missing log";
    EXPECT_EQ(SMForceXMLLogExists(path.c_str()), SM_STATUS_SUCCESS);
    EXPECT_FALSE(fs::exists(path)) << "nothing is made";
}

}  // namespace
