// The text event log: its bytes (a little-endian header, host-order
// records), the backup at the size limit, refused records, failing files,
// clearing, the path and limit functions.
#include <gtest/gtest.h>

#include <linux/capability.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <climits>
#include <filesystem>
#include <fstream>
#include <string>
#include <tuple>
#include <vector>

#include <zksupt/zksupt.h>

#include "log/event.h"
#include "log/limits.h"
#include "log/log_files.h"
#include "log/text_log.h"
#include "support/child.h"
#include "support/sandbox.h"
#include "support/status_names.h"

namespace {

namespace fs = std::filesystem;
namespace lg = zksupt::log;
using namespace zksupt::test;

class TextLog : public ::testing::Test {
  protected:
    void SetUp() override { removeLogs(); }
    const std::string path = logPathOf(SM_LOG_TARGET_TEXT);
};

TEST_F(TextLog, HeaderThenOneRecordOfEachTypeInHostOrder)
{
    const std::string bytes17 =
        std::string("\0", 1) + "\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0A\x0B\x0C\x0D\x0E\x0F\x10";
    // type, its name, category, event ID, source, description, data, the data's dump
    const std::tuple<uint32_t, std::string, uint16_t, int32_t, std::string, std::string, std::string> rows[] = {
        {0, "None", 1, -5, "svc", "plain", ""},          {1, "Error", 2, 0, "Z\xC3\xBCrich", "two words", "ABCDE"},
        {2, "Warning", 3, INT32_MAX, "s", "d", bytes17}, {4, "Information", 4, 7, "s", "d", ""},
        {8, "Audit Success", 5, 8, "s", "d", ""},        {16, "Audit Failure", 6, 9, "s", "d", ""},
    };
    const std::string dumps[] = {
        "0x00000000: 41 42 43 44:45" + std::string(36, ' ') + "ABCDE" + std::string(12, ' ') + "\r\n",
        "0x00000000: 00 01 02 03:04 05 06 07:08 09 0A 0B:0C 0D 0E 0F   ................ \r\n0x00000010: 10" +
            std::string(48, ' ') + "." + std::string(16, ' ') + "\r\n",
    };
    const char *categories[] = {"",
                                "Lodestar Engine",
                                "Meridian Service",
                                "Pell Service",
                                "Quillon Connections Service",
                                "Tessel Framework",
                                "Varve Management"};
    for (const auto &[type, typeName, category, id, source, description, data] : rows) {
        SCOPED_TRACE(typeName);
        removeLogs();
        ASSERT_EQ(SMAppendToLog(SM_LOG_TARGET_TEXT, type, category, id, source.c_str(), description.c_str(),
                                data.empty() ? nullptr : data.data(), data.size()),
                  SM_STATUS_SUCCESS);
        const std::string file = readFile(path);
        ASSERT_GT(file.size(), 260u);
        EXPECT_EQ(file.substr(0, 256), headerBytes()) << "the same bytes on every host";
        // The record's units are in host order: "EventID" starts 00 45 on PowerPC.
        EXPECT_EQ(file.substr(256, 4), ZKSUPT_TARGET_BIG_ENDIAN ? std::string("\0E\0v", 4) : std::string("E\0v\0", 4));
        const std::string dump = data.empty() ? "" : dumps[data.size() == 5 ? 0 : 1];
        const std::u16string units = unitsOf(file.substr(256));
        EXPECT_EQ(units,
                  withTimes(textRecord(std::to_string(id), source, categories[category], typeName, description, dump),
                            units));
    }
}

TEST_F(TextLog, ShortFilesGetAHeaderAndAFullLogMovesToTheBackup)
{
    const std::string desc40(40, 'd');
    uint32_t limit = 0;
    ASSERT_EQ(SMGetLogMaxSize(path.c_str(), &limit), SM_STATUS_SUCCESS);
    EXPECT_EQ(limit, SM_LOG_DEFAULT_MAX_SIZE);
    // The estimate for "svc", 40 units and no data: 2 * (3 + 40 + 1024 + 83) bytes.
    const uint32_t threshold = limit - 2300;
    const std::tuple<std::string, uint32_t, int32_t, bool> rows[] = {
        {"", 4, SM_STATUS_SUCCESS, false},
        {"0123456789", 4, SM_STATUS_SUCCESS, false},
        {std::string(256, 'h'), 4, SM_STATUS_SUCCESS, false},
        {std::string(threshold - 1, 'x'), 4, SM_STATUS_SUCCESS, false},
        {std::string(threshold, 'x'), 4, SM_STATUS_SUCCESS, true},
        {std::string(1048000, 'x'), 1, SM_STATUS_SUCCESS, true},
        // The type is checked after the backup: the backup stays, the record is refused.
        {std::string(threshold, 'x'), 3, SM_STATUS_BAD_ARGUMENT, true},
    };
    for (const auto &[old, type, status, backup] : rows) {
        SCOPED_TRACE(std::to_string(old.size()) + " bytes, type " + std::to_string(type));
        removeLogs();
        if (!old.empty())
            fill(path, old);
        EXPECT_EQ(lg::writeTextRecord(
                      path.c_str(),
                      {.type = type, .category = 2, .eventId = 3, .source = "svc", .description = desc40.c_str()},
                      limit),
                  status);
        EXPECT_EQ(readFile(backupOf(path)), backup ? old : "");
        const std::string file = readFile(path);
        const bool header = backup || old.size() < 256;
        const std::string kept = backup ? "" : old;
        ASSERT_EQ(file.substr(0, kept.size()), kept);
        EXPECT_EQ(file.substr(kept.size(), header ? 256 : 0), header ? headerBytes() : "");
        const std::u16string units = unitsOf(file.substr(kept.size() + (header ? 256 : 0)));
        std::u16string expected =
            backup ? textRecord("1", "svc", "Lodestar Engine", "Information", "Log backup created", "") : u"";
        if (status == SM_STATUS_SUCCESS)
            expected += textRecord("3", "svc", "Meridian Service", type == 1 ? "Error" : "Information", desc40, "");
        EXPECT_EQ(units, withTimes(expected, units));
    }
}

TEST_F(TextLog, RefusedRecordsWriteNothing)
{
    const std::string tooLongSource(1024, 's'), longestSource(1023, 's'), tooLongText(16384, 'd');
    std::vector<char> data(32769, 'x');
    uint32_t size = 0;
    const int32_t invalidUtf8 = SMUTF8StrToUCS2Str(nullptr, &size, "a\xF8\x80");
    ASSERT_NE(invalidUtf8, SM_STATUS_SUCCESS);
    const std::tuple<const char *, lg::Event, int32_t> rows[] = {
        {nullptr, {.source = "s", .description = "d"}, SM_STATUS_BAD_ARGUMENT},
        {"", {.source = nullptr, .description = "d"}, SM_STATUS_BAD_ARGUMENT},
        {"", {.source = "s", .description = "d", .dataLength = 1}, SM_STATUS_BAD_ARGUMENT},
        {"", {.source = "s", .description = "d", .data = data.data(), .dataLength = 32769}, SM_STATUS_BAD_ARGUMENT},
        {"", {.source = "", .description = "d"}, SM_STATUS_BAD_ARGUMENT},
        {"", {.source = "s", .description = ""}, SM_STATUS_BAD_ARGUMENT},
        {"", {.source = "s", .description = nullptr}, SM_STATUS_INVALID_PARAMETER},
        {"", {.source = tooLongSource.c_str(), .description = "d"}, SM_STATUS_BUFFER_TOO_SMALL},
        {"", {.source = "s", .description = tooLongText.c_str()}, SM_STATUS_BUFFER_TOO_SMALL},
        {"", {.source = "a\xF8\x80", .description = "d"}, invalidUtf8},
        {"", {.source = "s", .description = "a\xF8\x80"}, invalidUtf8},
        {"", {.type = 3, .category = 1, .source = "s", .description = "d"}, SM_STATUS_BAD_ARGUMENT},
        {"", {.type = 4, .category = 0, .source = "s", .description = "d"}, SM_STATUS_SUCCESS},
        {"", {.type = 4, .category = 7, .source = "s", .description = "d"}, SM_STATUS_SUCCESS},
        {"", {.type = 5, .category = 7, .source = "s", .description = "d"}, SM_STATUS_SUCCESS},
    };
    for (const auto &[at, event, status] : rows) {
        SCOPED_TRACE("expecting " + statusName(status));
        EXPECT_EQ(lg::writeTextRecord(at == nullptr ? nullptr : path.c_str(), event, SM_LOG_DEFAULT_MAX_SIZE), status);
        EXPECT_FALSE(fs::exists(path));
    }
    EXPECT_EQ(lg::writeTextRecord(path.c_str(),
                                  {.source = longestSource.c_str(),
                                   .description = tooLongText.c_str() + 1,
                                   .data = data.data(),
                                   .dataLength = 32768},
                                  SM_LOG_MAX_SIZE_UPPER_BOUND),
              SM_STATUS_SUCCESS)
        << "the longest texts and data";
}

// Drops the power to override file permissions, so that root meets them too.
bool dropPermissionOverride()
{
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct caps[2] = {};
    if (syscall(SYS_capget, &header, caps) != 0)
        return false;
    caps[0].effective &= ~((1u << CAP_DAC_OVERRIDE) | (1u << CAP_DAC_READ_SEARCH) | (1u << CAP_FOWNER));
    return syscall(SYS_capset, &header, caps) == 0;
}

TEST_F(TextLog, FilesThatCannotBeWrittenFailCleanly)
{
    const std::string xml = logPathOf(SM_LOG_TARGET_XML);
    const lg::Event event{.type = 4, .category = 1, .source = "s", .description = "d"};
    const std::string deep = sandbox().logDir() + "/missing/log/zksys32.log";
    EXPECT_EQ(lg::writeTextRecord(deep.c_str(), event, SM_LOG_DEFAULT_MAX_SIZE), SM_STATUS_FAILURE);
    EXPECT_EQ(SMAppendToXMLLog(deep.c_str(), 4, 1, 0, nullptr, "s", "d", nullptr, nullptr, 0, 1 << 20),
              SM_STATUS_FAILURE);
    fs::create_directories(path);
    fs::create_directories(xml);
    EXPECT_EQ(lg::writeTextRecord(path.c_str(), event, SM_LOG_DEFAULT_MAX_SIZE), SM_STATUS_FAILURE);
    EXPECT_EQ(SMAppendToXMLLog(xml.c_str(), 4, 1, 0, nullptr, "s", "d", nullptr, nullptr, 0, 1 << 20),
              SM_STATUS_FAILURE);
    removeLogs();
    fill(path, "read only");
    fill(xml, "read only");
    fs::permissions(path, fs::perms::owner_read);
    fs::permissions(xml, fs::perms::owner_read);
    const int result = runInChild([&] {
        if (geteuid() == 0 && !dropPermissionOverride())
            return 77;
        return lg::writeTextRecord(path.c_str(), event, SM_LOG_DEFAULT_MAX_SIZE) == SM_STATUS_FAILURE &&
                       SMAppendToXMLLog(xml.c_str(), 4, 1, 0, nullptr, "s", "d", nullptr, nullptr, 0, 1 << 20) ==
                           SM_STATUS_FAILURE
                   ? 0
                   : 1;
    });
    if (result != 77) {
        EXPECT_EQ(result, 0);
    }
    EXPECT_EQ(readFile(path), "read only");
    EXPECT_EQ(readFile(xml), "read only");
}

TEST_F(TextLog, ARecordCutShortByAFullDiskStaysAndTheNextOneIsWhole)
{
    fill(path, headerBytes());
    const int result = runInChild([&] {
        signal(SIGXFSZ, SIG_IGN);
        rlimit limit{};
        getrlimit(RLIMIT_FSIZE, &limit);
        const rlim_t unlimited = limit.rlim_cur;
        limit.rlim_cur = 256 + 100;
        if (setrlimit(RLIMIT_FSIZE, &limit) != 0)
            return 77;
        const lg::Event event{.type = 1, .category = 1, .eventId = 5, .source = "s", .description = "full"};
        if (lg::writeTextRecord(path.c_str(), event, SM_LOG_DEFAULT_MAX_SIZE) != SM_STATUS_LIMIT_REACHED)
            return 1;
        limit.rlim_cur = unlimited;
        return setrlimit(RLIMIT_FSIZE, &limit) == 0 &&
                       lg::writeTextRecord(path.c_str(), event, SM_LOG_DEFAULT_MAX_SIZE) == SM_STATUS_SUCCESS
                   ? 0
                   : 2;
    });
    ASSERT_NE(result, 77) << "no file-size limit here";
    ASSERT_EQ(result, 0);
    const std::u16string units = unitsOf(readFile(path).substr(256));
    const std::u16string whole = withTimes(textRecord("5", "s", "Lodestar Engine", "Error", "full", ""), units);
    EXPECT_EQ(units, whole.substr(0, 50) + whole);
}

TEST_F(TextLog, ClearingStartsANewLogAndAMissingLogCannotBeCleared)
{
    EXPECT_EQ(SMClearLog(SM_LOG_TARGET_TEXT, 5, "admin"), SM_STATUS_FAILURE);
    EXPECT_FALSE(fs::exists(path));
    fill(path, std::string(1000, 'x'));
    EXPECT_EQ(SMClearLog(0, 5, "admin"), SM_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(SMClearLog(SM_LOG_TARGET_TEXT | SM_LOG_TARGET_OS, 5, "admin"), SM_STATUS_NOT_SERVED);
    EXPECT_EQ(readFile(path).size(), 1000u) << "nothing done";
    EXPECT_EQ(SMClearLog(SM_LOG_TARGET_TEXT, 5, "admin"), SM_STATUS_SUCCESS);
    const std::string file = readFile(path);
    const std::u16string units = unitsOf(file.substr(256));
    EXPECT_EQ(file.substr(0, 256), headerBytes());
    EXPECT_EQ(units,
              withTimes(textRecord("0", "admin", "Tessel Framework", "Information", "Log was cleared", ""), units));
}

TEST_F(TextLog, TargetsPathsAndBackupNames)
{
    const std::string text = sandbox().logDir() + "/log/zksys32.log", xml = sandbox().logDir() + "/log/zksys32.xml";
    const std::tuple<uint32_t, uint32_t, std::string> paths[] = {
        {0, 256, "BAD_ARGUMENT size 256"},
        {2, 256, "NOT_SERVED size 256"},
        {6, 256, "NOT_SERVED size 256"},
        {4, 255, "BUFFER_TOO_SMALL size 256"},
        {4, 256, text},
        {8, 300, xml},
        {12, 256, xml},
    };
    for (const auto &[target, capacity, expected] : paths)
        EXPECT_EQ(textOut(capacity, [&](char *b, uint32_t *s) { return SMGetLogPathFileName(target, b, s); }), expected)
            << "target " << target;
    EXPECT_EQ(textOut(256, [](char *b, uint32_t *s) { return SMGetBackupLogPathFileName(4, b, s); }), backupOf(text));
    char small[8] = "small";
    uint32_t size = sizeof small;
    EXPECT_EQ(SMGetBackupLogPathFileName(8, small, &size), SM_STATUS_SUCCESS) << "too small is no failure here";
    EXPECT_EQ(size, xml.size() + 1);
    EXPECT_STREQ(small, "small");
    const std::tuple<const char *, uint32_t, std::string> backups[] = {
        {nullptr, 8, "INVALID_PARAMETER size 8"},
        {"a", 8, "INVALID_PARAMETER size 8"},
        {"ab", 3, "a_"},
        {"a.log", 5, "BUFFER_TOO_SMALL size 6"},
    };
    for (const auto &[from, capacity, expected] : backups)
        EXPECT_EQ(textOut(capacity, [&](char *b, uint32_t *s) { return SMGetBackupXMLLogPathFileName(from, b, s); }),
                  expected);

    // Targets without a file log do nothing; both file logs get the event.
    EXPECT_EQ(SMAppendToLog(0, 4, 1, 1, "s", "d", nullptr, 0), SM_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(SMAppendToLog(16, 4, 1, 1, "s", "d", nullptr, 0), SM_STATUS_SUCCESS);
    EXPECT_FALSE(fs::exists(text));
    EXPECT_EQ(SMAppendToLog(4 | 8, 3, 1, 1, "s", "d", nullptr, 0), SM_STATUS_SUCCESS) << "the XML log takes any type";
    EXPECT_FALSE(fs::exists(text));
    EXPECT_NE(readFile(xml).find("<Type>3</Type>"), std::string::npos);
}

TEST(LogLimits, EachPathKeepsTheFirstLimitItIsGiven)
{
    const std::string longest(255, 'p');
    const std::tuple<std::string, uint32_t, int32_t> sets[] = {
        {"/a", SM_LOG_DEFAULT_MAX_SIZE - 1, SM_STATUS_INVALID_PARAMETER},
        {"/a", SM_LOG_MAX_SIZE_UPPER_BOUND + 1, SM_STATUS_INVALID_PARAMETER},
        {"", SM_LOG_DEFAULT_MAX_SIZE, SM_STATUS_INVALID_PARAMETER},
        {longest + "p", SM_LOG_DEFAULT_MAX_SIZE, SM_STATUS_INVALID_PARAMETER},
        {longest, SM_LOG_MAX_SIZE_UPPER_BOUND, SM_STATUS_SUCCESS},
        {"/a", 2000000, SM_STATUS_SUCCESS},
        {"/a", 3000000, SM_STATUS_SUCCESS},
    };
    for (const auto &[path, limit, status] : sets)
        EXPECT_EQ(SMSetLogMaxSize(path.c_str(), limit, 1), status) << path.size() << " bytes, " << limit;
    uint32_t limit = 0;
    const std::tuple<const char *, uint32_t> gets[] = {
        {"/a", 2000000}, {longest.c_str(), SM_LOG_MAX_SIZE_UPPER_BOUND}, {"/b", SM_LOG_DEFAULT_MAX_SIZE}};
    for (const auto &[path, expected] : gets) {
        EXPECT_EQ(SMGetLogMaxSize(path, &limit), SM_STATUS_SUCCESS);
        EXPECT_EQ(limit, expected) << path;
    }
    EXPECT_EQ(SMSetLogMaxSize("/b", 2000000, 1), SM_STATUS_SUCCESS);
    EXPECT_EQ(SMGetLogMaxSize("/b", &limit), SM_STATUS_SUCCESS);
    EXPECT_EQ(limit, SM_LOG_DEFAULT_MAX_SIZE) << "the lookup entered the default";
    EXPECT_EQ(SMGetLogMaxSize("", &limit), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMGetLogMaxSize(nullptr, &limit), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(lg::defaultLimitFor(SM_OS_TYPE_LINUX), SM_LOG_DEFAULT_MAX_SIZE);
    EXPECT_EQ(lg::defaultLimitFor(SM_OS_TYPE_VMWARE_ESX), SM_LOG_ESX_DEFAULT_MAX_SIZE);
}

}  // namespace
