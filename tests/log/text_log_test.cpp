// The text event log: its bytes (a little-endian header, host-order
// records), the backup at the size limit, refusals, failing files, clearing,
// the path and limit functions.
#include <gtest/gtest.h>

#include <linux/capability.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <climits>
#include <filesystem>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include <zksupt/zksupt.h>

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
    int32_t write(const lg::Event &event, uint32_t limit = SM_LOG_DEFAULT_MAX_SIZE) const
    {
        return lg::writeTextRecord(path.c_str(), event, limit);
    }
    const std::string path = logPathOf(SM_LOG_TARGET_TEXT);
};

TEST_F(TextLog, HeaderThenOneRecordOfEachTypeInHostOrder)
{
    const std::string pad = std::string(36, ' '), bytes17("\0\1\2\3\4\5\6\7\10\11\12\13\14\15\16\17\20", 17);
    const std::tuple<uint32_t, uint16_t, int32_t, std::string, std::string, std::string, std::string> rows[] = {
        {0, 1, -5, "svc", "None", "Lodestar Engine", ""},
        {1, 2, 0, "Z\xC3\xBCrich", "Error", "Meridian Service", "ABCDE"},
        {2, 3, INT32_MAX, "s", "Warning", "Pell Service", bytes17},
        {4, 4, 7, "s", "Information", "Quillon Connections Service", ""},
        {8, 5, 8, "s", "Audit Success", "Tessel Framework", ""},
        {16, 6, 9, "s", "Audit Failure", "Varve Management", ""},
    };
    const std::map<std::size_t, std::string> dumps = {
        {0, ""},
        {5, "0x00000000: 41 42 43 44:45" + pad + "ABCDE" + std::string(12, ' ') + "\r\n"},
        {17, "0x00000000: 00 01 02 03:04 05 06 07:08 09 0A 0B:0C 0D 0E 0F   ................ \r\n0x00000010: 10" + pad +
                 std::string(12, ' ') + "." + std::string(16, ' ') + "\r\n"}};
    for (const auto &[type, category, id, source, typeName, categoryName, data] : rows) {
        removeLogs();
        ASSERT_EQ(
            SMAppendToLog(SM_LOG_TARGET_TEXT, type, category, id, source.c_str(), "a b", data.data(), data.size()),
            SM_STATUS_SUCCESS);
        const std::string file = readFile(path);
        EXPECT_EQ(file.substr(0, 256), headerBytes()) << "the same bytes on every host";
        // The record's units are in host order: "EventID" starts 00 45 on PowerPC.
        EXPECT_EQ(file.substr(256, 2), ZKSUPT_TARGET_BIG_ENDIAN ? std::string("\0E", 2) : std::string("E\0", 2));
        const std::u16string units = unitsOf(path);
        EXPECT_EQ(units, withTimes(textRecord(std::to_string(id), source, categoryName, typeName, "a b",
                                              dumps.at(data.size())),
                                   units));
    }
}

TEST_F(TextLog, ShortLogsGetAHeaderAndAFullLogMovesToItsBackup)
{
    const std::string desc40(40, 'd');
    // "svc" and 40 units without data are estimated at 2 * (3 + 40 + 1024 + 83) bytes.
    const uint32_t full = SM_LOG_DEFAULT_MAX_SIZE - 2300;
    const std::tuple<std::string, uint32_t, int32_t, bool> rows[] = {
        {"", 4, SM_STATUS_SUCCESS, false},
        {"0123456789", 4, SM_STATUS_SUCCESS, false},
        {std::string(256, 'h'), 4, SM_STATUS_SUCCESS, false},
        {std::string(full - 1, 'x'), 4, SM_STATUS_SUCCESS, false},
        {std::string(full, 'x'), 1, SM_STATUS_SUCCESS, true},
        {std::string(1048000, 'x'), 4, SM_STATUS_SUCCESS, true},
        // The type is checked after the backup: the backup stays, the record is refused.
        {std::string(full, 'x'), 3, SM_STATUS_BAD_ARGUMENT, true},
    };
    for (const auto &[old, type, status, backup] : rows) {
        SCOPED_TRACE(std::to_string(old.size()) + " bytes, type " + std::to_string(type));
        removeLogs();
        if (!old.empty())
            fill(path, old);
        EXPECT_EQ(write({.type = type, .category = 2, .eventId = 3, .source = "svc", .description = desc40.c_str()}),
                  status);
        EXPECT_EQ(readFile(backupOf(path)), backup ? old : "");
        const std::string kept = backup ? "" : old;
        const std::size_t header = kept.size() < 256 ? 256 : 0;
        EXPECT_EQ(readFile(path).substr(0, kept.size() + header), kept + (header != 0 ? headerBytes() : ""));
        std::u16string expected =
            backup ? textRecord("1", "svc", "Lodestar Engine", "Information", "Log backup created") : u"";
        if (status == SM_STATUS_SUCCESS)
            expected += textRecord("3", "svc", "Meridian Service", type == 1 ? "Error" : "Information", desc40);
        const std::u16string units = unitsOf(path, kept.size() + header);
        EXPECT_EQ(units, withTimes(expected, units));
    }
}

TEST_F(TextLog, RefusedRecordsWriteNothing)
{
    const std::string longest(16383, 'd'), tooLong = longest + "d";
    const std::vector<char> data(32769, 'x');
    uint32_t size = 0;
    const int32_t invalid = SMUTF8StrToUCS2Str(nullptr, &size, "a\xF8\x80");
    const std::tuple<lg::Event, int32_t> rows[] = {
        {{.source = nullptr, .description = "d"}, SM_STATUS_BAD_ARGUMENT},
        {{.source = "s", .description = "d", .dataLength = 1}, SM_STATUS_BAD_ARGUMENT},
        {{.source = "s", .description = "d", .data = data.data(), .dataLength = 32769}, SM_STATUS_BAD_ARGUMENT},
        {{.source = "", .description = "d"}, SM_STATUS_BAD_ARGUMENT},
        {{.source = "s", .description = ""}, SM_STATUS_BAD_ARGUMENT},
        {{.source = "s", .description = nullptr}, SM_STATUS_INVALID_PARAMETER},
        {{.source = longest.c_str() + 15359, .description = "d"}, SM_STATUS_BUFFER_TOO_SMALL},  // 1,024 units
        {{.source = "s", .description = tooLong.c_str()}, SM_STATUS_BUFFER_TOO_SMALL},
        {{.source = "a\xF8\x80", .description = "d"}, invalid},
        {{.source = "s", .description = "a\xF8\x80"}, invalid},
        {{.type = 3, .category = 1, .source = "s", .description = "d"}, SM_STATUS_BAD_ARGUMENT},
        {{.type = 4, .category = 0, .source = "s", .description = "d"}, SM_STATUS_SUCCESS},
        {{.type = 5, .category = 7, .source = "s", .description = "d"}, SM_STATUS_SUCCESS},
    };
    ASSERT_NE(invalid, SM_STATUS_SUCCESS);
    for (const auto &[event, status] : rows) {
        EXPECT_EQ(write(event), status);
        EXPECT_FALSE(fs::exists(path)) << statusName(status);
    }
    EXPECT_EQ(lg::writeTextRecord(nullptr, {.source = "s", .description = "d"}, 1 << 20), SM_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(write({.source = longest.c_str() + 15360,
                     .description = longest.c_str(),
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
    const lg::Event event{.type = 1, .category = 1, .eventId = 5, .source = "s", .description = "full"};
    const std::string xml = logPathOf(SM_LOG_TARGET_XML), deep = sandbox().logDir() + "/no/log/zksys32.log";
    const auto appendXml = [](const std::string &at) {
        return SMAppendToXMLLog(at.c_str(), 4, 1, 0, nullptr, "s", "d", nullptr, nullptr, 0, 1 << 20);
    };
    EXPECT_EQ(lg::writeTextRecord(deep.c_str(), event, 1 << 20), SM_STATUS_FAILURE) << "no directory made";
    EXPECT_EQ(appendXml(deep), SM_STATUS_FAILURE);
    fill(path, "read only");
    fill(xml, "read only");
    fs::permissions(path, fs::perms::owner_read);
    fs::permissions(xml, fs::perms::owner_read);
    // The log cannot be opened (-1), or, when its lock file has taken the
    // log's bits already, the lock cannot be had (0x10E).
    const auto refused = [](int32_t status) {
        return status == SM_STATUS_FAILURE || status == SM_STATUS_ACCESS_DENIED;
    };
    EXPECT_EQ(runInChild([&] {
                  if (geteuid() == 0 && !dropPermissionOverride())
                      return 1;
                  return refused(write(event)) && refused(appendXml(xml)) ? 0 : 2;
              }),
              0);
    EXPECT_EQ(readFile(path), "read only");
    EXPECT_EQ(readFile(xml), "read only");

    // A record cut short by a full disk stays; the next one is whole.
    removeLogs();
    fill(path, headerBytes());
    EXPECT_EQ(runInChild([&] {
                  signal(SIGXFSZ, SIG_IGN);
                  rlimit limit{};
                  getrlimit(RLIMIT_FSIZE, &limit);
                  const rlim_t unlimited = limit.rlim_cur;
                  limit.rlim_cur = 256 + 100;
                  if (setrlimit(RLIMIT_FSIZE, &limit) != 0 || write(event) != SM_STATUS_LIMIT_REACHED)
                      return 1;
                  limit.rlim_cur = unlimited;
                  return setrlimit(RLIMIT_FSIZE, &limit) == 0 && write(event) == SM_STATUS_SUCCESS ? 0 : 2;
              }),
              0);
    const std::u16string units = unitsOf(path);
    const std::u16string whole = withTimes(textRecord("5", "s", "Lodestar Engine", "Error", "full"), units);
    EXPECT_EQ(units, whole.substr(0, 50) + whole);
}

TEST_F(TextLog, ClearingTargetsAndPaths)
{
    EXPECT_EQ(SMClearLog(SM_LOG_TARGET_TEXT, 5, "admin"), SM_STATUS_FAILURE) << "a missing log";
    EXPECT_FALSE(fs::exists(path));
    fill(path, std::string(1000, 'x'));
    EXPECT_EQ(SMClearLog(0, 5, "admin"), SM_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(SMClearLog(SM_LOG_TARGET_TEXT | SM_LOG_TARGET_OS, 5, "admin"), SM_STATUS_NOT_SERVED);
    EXPECT_EQ(SMClearLog(SM_LOG_TARGET_TEXT, 5, "admin"), SM_STATUS_SUCCESS);
    const std::u16string units = unitsOf(path);
    EXPECT_EQ(units, withTimes(textRecord("0", "admin", "Tessel Framework", "Information", "Log was cleared"), units));

    const std::string dir = sandbox().logDir() + "/log/";
    const std::tuple<uint32_t, uint32_t, std::string> paths[] = {
        {0, 256, "BAD_ARGUMENT size 256"}, {6, 256, "NOT_SERVED size 256"}, {4, 255, "BUFFER_TOO_SMALL size 256"},
        {4, 256, dir + "zksys32.log"},     {12, 300, dir + "zksys32.xml"},
    };
    for (const auto &[target, capacity, expected] : paths)
        EXPECT_EQ(textOut(capacity, [&](char *b, uint32_t *s) { return SMGetLogPathFileName(target, b, s); }),
                  expected);
    EXPECT_EQ(textOut(256, [](char *b, uint32_t *s) { return SMGetBackupLogPathFileName(4, b, s); }),
              dir + "zksys32.lo_");
    // Too small is no failure here: nothing is copied, and *size is the need.
    EXPECT_EQ(textOut(8, [](char *b, uint32_t *s) { return SMGetBackupLogPathFileName(8, b, s); }),
              "unterminated or miscounted: size " + std::to_string(dir.size() + 12));
    const std::tuple<const char *, uint32_t, std::string> backups[] = {
        {nullptr, 8, "INVALID_PARAMETER size 8"},
        {"a", 8, "INVALID_PARAMETER size 8"},
        {"ab", 3, "a_"},
        {"a.log", 5, "BUFFER_TOO_SMALL size 6"},
    };
    for (const auto &[from, capacity, expected] : backups)
        EXPECT_EQ(textOut(capacity, [&](char *b, uint32_t *s) { return SMGetBackupXMLLogPathFileName(from, b, s); }),
                  expected);

    removeLogs();
    EXPECT_EQ(SMAppendToLog(0, 4, 1, 1, "s", "d", nullptr, 0), SM_STATUS_BAD_ARGUMENT);
    EXPECT_EQ(SMAppendToLog(16, 4, 1, 1, "s", "d", nullptr, 0), SM_STATUS_SUCCESS);
    EXPECT_EQ(SMAppendToLog(4 | 8, 3, 1, 1, "s", "d", nullptr, 0), SM_STATUS_SUCCESS) << "the XML log takes any type";
    EXPECT_FALSE(fs::exists(path));
    EXPECT_NE(readFile(dir + "zksys32.xml").find("<Type>3</Type>"), std::string::npos);
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
    EXPECT_EQ(lg::defaultLimitFor(SM_OS_TYPE_LINUX), SM_LOG_DEFAULT_MAX_SIZE);
    EXPECT_EQ(lg::defaultLimitFor(SM_OS_TYPE_VMWARE_ESX), SM_LOG_ESX_DEFAULT_MAX_SIZE);
}

}  // namespace
