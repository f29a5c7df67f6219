// Several processes of several threads append to the text, XML and rotated
// logs at once: every record found is whole and found once, and with no
// backup every record is there.
#include <gtest/gtest.h>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <zksupt/zksupt.h>

#include "log/log_files.h"
#include "log/text_log.h"
#include "support/sandbox.h"

namespace {

namespace fs = std::filesystem;
namespace lg = zksupt::log;
using namespace zksupt::test;

constexpr int kProcesses = 4, kThreads = 4, kRecords = 200;
constexpr int kAll = kProcesses * kThreads * kRecords;
constexpr auto kBound = std::chrono::minutes(5);

// Runs write(process, thread, record) for every record in kProcesses forked
// children of kThreads threads each, after prepare() in each child. False
// when a child fails, or is still running at the bound (it is killed then).
bool inProcesses(
    const std::function<bool(int, int, int)> &write, const std::function<void()> &prepare = [] {})
{
    std::vector<pid_t> children;
    for (int p = 0; p < kProcesses; ++p) {
        const pid_t pid = fork();
        if (pid == 0) {
            prepare();
            std::vector<std::thread> threads;
            std::atomic<bool> ok = true;
            for (int t = 0; t < kThreads; ++t)
                threads.emplace_back([&, t] {
                    for (int i = 0; i < kRecords; ++i)
                        if (!write(p, t, i))
                            ok = false;
                });
            for (std::thread &thread : threads)
                thread.join();
            _exit(ok ? 0 : 1);
        }
        children.push_back(pid);
    }
    const auto deadline = std::chrono::steady_clock::now() + kBound;
    bool ok = true;
    for (const pid_t pid : children) {
        int status = -1;
        while (waitpid(pid, &status, WNOHANG) == 0 && std::chrono::steady_clock::now() < deadline)
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        if (kill(pid, SIGKILL) == 0)
            waitpid(pid, &status, 0);
        ok = ok && WIFEXITED(status) && WEXITSTATUS(status) == 0;
    }
    return ok;
}

std::string name(int p, int t, int i)
{
    return std::to_string(p) + "." + std::to_string(t) + "." + std::to_string(i);
}

int32_t eventId(int p, int t, int i)
{
    return (p * kThreads + t) * 1000 + i;
}

const char kData[] = "twenty bytes of data";

// Adds the records of one text log to seen; false when one is not whole,
// was seen before or the file does not start with its header. startsBackedUp:
// the first record must say that the log was backed up.
bool readTextLog(const std::string &path, std::multiset<std::string> &seen, bool startsBackedUp)
{
    const std::string file = readFile(path);
    if (file.substr(0, 256) != headerBytes())
        return false;
    const std::u16string units = unitsOf(file.substr(256));
    bool ok = units.starts_with(u"EventID: ");
    for (std::size_t at = 0; ok && at < units.size();) {
        const std::size_t next = std::min(units.find(u"EventID: ", at + 1), units.size());
        const std::u16string record = units.substr(at, next - at);
        const std::size_t d = record.find(u"Description:\r\n") + 14;
        const std::u16string description = record.substr(d, record.find(u"\r\n", d) - d);
        const std::size_t s = record.find(u"Source: ") + 8;
        const std::u16string source = record.substr(s, record.find(u"\r\n", s) - s);
        std::u16string expected;
        if (description == u"Log backup created")
            expected = textRecord("1", std::string(source.begin(), source.end()), "Lodestar Engine", "Information",
                                  "Log backup created", "");
        else if (description.starts_with(u"record ")) {
            const std::string key(description.begin() + 7, description.end());
            int p = 0, t = 0, i = 0;
            std::sscanf(key.c_str(), "%d.%d.%d", &p, &t, &i);
            seen.insert(key);
            expected = textRecord(std::to_string(eventId(p, t, i)), "P" + std::to_string(p), "Pell Service", "Warning",
                                  "record " + key,
                                  "0x00000000: 74 77 65 6E:74 79 20 62:79 74 65 73:20 6F 66 20   twenty bytes of  "
                                  "\r\n0x00000010: 64 61 74 61" +
                                      std::string(39, ' ') + "data" + std::string(13, ' ') + "\r\n");
        }
        ok = !expected.empty() && record == withTimes(expected, record) &&
             (at != 0 || !startsBackedUp || description == u"Log backup created");
        at = next;
    }
    return ok;
}

// Adds the entries of one XML log to seen; false when the document is not
// well-formed or an entry is not whole.
bool readXmlLog(const std::string &path, std::multiset<std::string> &seen)
{
    const std::string file = readFile(path);
    if (wellFormed(path) == false || !file.starts_with("<?xml") || !file.ends_with("</LogEntry></EventLog>"))
        return false;
    for (std::size_t at = file.find("<LogEntry>"); at != std::string::npos; at = file.find("<LogEntry>", at + 1)) {
        const std::size_t d = file.find("<Description>", at) + 13;
        const std::string description = file.substr(d, file.find('<', d) - d);
        const std::size_t s = file.find("<Source>", at) + 8;
        const std::string source = file.substr(s, file.find('<', s) - s);
        std::string fields;
        if (description == "Log backup created")
            fields = "<Type>4</Type><ID>1</ID><Link></Link><UserInfo></UserInfo><Source>" + source +
                     "</Source><Category>Lodestar Engine</Category><Description>Log backup created</Description>"
                     "<Data></Data>";
        else if (description.starts_with("record ")) {
            const std::string key = description.substr(7);
            int p = 0, t = 0, i = 0;
            std::sscanf(key.c_str(), "%d.%d.%d", &p, &t, &i);
            seen.insert(key);
            fields = "<Type>2</Type><ID>" + std::to_string(eventId(p, t, i)) +
                     "</ID><Link></Link><UserInfo></UserInfo><Source>P" + std::to_string(p) +
                     "</Source><Category>Pell Service</Category><Description>record " + key +
                     "</Description><Data>0x74,0x77,0x65,0x6E,0x74,0x79,0x20,0x62,0x79,0x74,0x65,0x73,0x20,0x6F,"
                     "0x66,0x20,0x64,0x61,0x74,0x61</Data>";
        } else
            return false;
        const std::string expected = xmlEntry(file, at, fields);
        if (file.compare(at, expected.size(), expected) != 0)
            return false;
    }
    return true;
}

bool noneTwice(const std::multiset<std::string> &seen)
{
    return std::set<std::string>(seen.begin(), seen.end()).size() == seen.size();
}

class LogStress : public ::testing::Test {
  protected:
    void SetUp() override { removeLogs(); }
    void TearDown() override { removeLogs(); }
    const std::string text = logPathOf(SM_LOG_TARGET_TEXT), xml = logPathOf(SM_LOG_TARGET_XML);
};

// Every record, with the limits high enough that no backup is made.
TEST_F(LogStress, EveryRecordOnceAndWholeWithoutBackups)
{
    // Each writing process raises its own limits; this one's stay as they are.
    ASSERT_TRUE(inProcesses(
        [](int p, int t, int i) {
            const std::string source = "P" + std::to_string(p), description = "record " + name(p, t, i);
            return SMAppendToLog(SM_LOG_TARGET_TEXT | SM_LOG_TARGET_XML, 2, 3, eventId(p, t, i), source.c_str(),
                                 description.c_str(), kData, 20) == SM_STATUS_SUCCESS;
        },
        [&] {
            SMSetLogMaxSize(text.c_str(), SM_LOG_MAX_SIZE_UPPER_BOUND, 1);
            SMSetLogMaxSize(xml.c_str(), SM_LOG_MAX_SIZE_UPPER_BOUND, 1);
        }));
    EXPECT_FALSE(fs::exists(backupOf(text)));
    EXPECT_FALSE(fs::exists(backupOf(xml)));
    std::multiset<std::string> texts, entries;
    EXPECT_TRUE(readTextLog(text, texts, false));
    EXPECT_TRUE(readXmlLog(xml, entries));
    EXPECT_EQ(texts.size(), static_cast<std::size_t>(kAll));
    EXPECT_TRUE(noneTwice(texts));
    EXPECT_EQ(entries.size(), static_cast<std::size_t>(kAll));
    EXPECT_TRUE(noneTwice(entries));
}

// Limits small enough for many backups: what the log and its backup hold is
// whole, found once, and each file starts with its header and the record of
// its backup.
TEST_F(LogStress, RecordsStayWholeAcrossBackups)
{
    constexpr uint32_t kLimit = 64 * 1024;
    ASSERT_TRUE(inProcesses([&](int p, int t, int i) {
        const std::string source = "P" + std::to_string(p), description = "record " + name(p, t, i);
        return lg::writeTextRecord(text.c_str(),
                                   {.type = 2,
                                    .category = 3,
                                    .eventId = eventId(p, t, i),
                                    .source = source.c_str(),
                                    .description = description.c_str(),
                                    .data = kData,
                                    .dataLength = 20},
                                   kLimit) == SM_STATUS_SUCCESS &&
               SMAppendToXMLLog(xml.c_str(), 2, 3, eventId(p, t, i), nullptr, source.c_str(), description.c_str(),
                                nullptr, kData, 20, kLimit) == SM_STATUS_SUCCESS;
    }));
    std::multiset<std::string> texts, entries;
    EXPECT_TRUE(readTextLog(text, texts, true));
    EXPECT_TRUE(readTextLog(backupOf(text), texts, true));
    EXPECT_TRUE(readXmlLog(xml, entries));
    EXPECT_TRUE(readXmlLog(backupOf(xml), entries));
    EXPECT_TRUE(noneTwice(texts));
    EXPECT_TRUE(noneTwice(entries));
    EXPECT_GT(texts.size(), 0u);
    EXPECT_GT(entries.size(), 0u);
}

// Rotated logs take no lock: each line still goes in whole, and without a
// rotation every line is there; two processes rotating at once may drop a
// generation, so across rotations lines are only found whole and once.
TEST_F(LogStress, RotatedLinesStayWhole)
{
    const std::string dir = sandbox().path("rotated-stress"), path = dir + "/app.log";
    for (const uint32_t maxSize : {UINT32_MAX, 16u * 1024}) {
        fs::remove_all(dir);
        fs::create_directories(dir);
        ASSERT_TRUE(inProcesses([&](int p, int t, int i) {
            const std::string line = "line " + name(p, t, i) + " " + std::string(40, '=');
            return SMFileLogMsgToRotatedLog(line.c_str(), path.c_str(), maxSize, 50, SM_ROTATED_LOG_NEWLINE) ==
                   SM_STATUS_SUCCESS;
        }));
        std::multiset<std::string> lines;
        bool whole = true;
        for (const auto &entry : fs::directory_iterator(dir)) {
            const std::string file = readFile(entry.path());
            for (std::size_t at = 0, end; at < file.size(); at = end + 1) {
                end = file.find('\n', at);
                const std::string line = file.substr(at, end - at);
                const std::size_t blank = line.find(' ', 5);
                whole = whole && line.starts_with("line ") && blank != std::string::npos &&
                        line.substr(blank) == " " + std::string(40, '=');
                lines.insert(line.substr(0, blank));
            }
        }
        EXPECT_TRUE(whole) << "max size " << maxSize;
        EXPECT_TRUE(noneTwice(lines));
        if (maxSize == UINT32_MAX) {
            EXPECT_EQ(lines.size(), static_cast<std::size_t>(kAll));
        }
    }
    fs::remove_all(dir);
}

}  // namespace
