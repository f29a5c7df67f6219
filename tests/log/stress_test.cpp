// Processes of several threads append to the text, XML and rotated logs at
// once: every record found is whole and found once, and without backups or
// rotation every record is there.
#include <gtest/gtest.h>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
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
#include "support/stress_scale.h"

namespace {

namespace fs = std::filesystem;
using namespace zksupt::test;
using Ids = std::vector<std::string>;

constexpr int kProcesses = 4, kThreads = 4;
const int kRecords = scaled(200), kAll = kProcesses * kThreads * kRecords;

// Runs write(n) for n = 1000 up to 1000 + kAll in forked children of kThreads
// threads each, after prepare() in each child. False when a child fails or
// is still running after five minutes (it is killed then).
bool inProcesses(const std::function<bool(int)> &write, const std::function<void()> &prepare)
{
    std::vector<pid_t> children;
    for (int p = 0; p < kProcesses; ++p)
        if (const pid_t pid = fork(); pid != 0)
            children.push_back(pid);
        else {
            prepare();
            std::atomic<bool> ok = true;
            std::vector<std::thread> threads;
            for (int t = 0; t < kThreads; ++t)
                threads.emplace_back([&, t] {
                    for (int i = 0; i < kRecords; ++i)
                        if (!write(1000 + (p * kThreads + t) * kRecords + i))
                            ok = false;
                });
            for (std::thread &thread : threads)
                thread.join();
            _exit(ok ? 0 : 1);
        }
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(5);
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

// Writes record n to every log: through SMAppendToLog with limit 0, else to
// the text and XML logs under that limit.
bool writeAll(int n, uint32_t limit, uint32_t rotateAt)
{
    const std::string description = "record " + std::to_string(n), line = "line " + std::to_string(n) + " =====";
    const bool logged =
        limit == 0 ? SMAppendToLog(SM_LOG_TARGET_TEXT | SM_LOG_TARGET_XML, 2, 3, n, "stress", description.c_str(),
                                   "data", 4) == 0
                   : zksupt::log::writeTextRecord(logPathOf(SM_LOG_TARGET_TEXT).c_str(),
                                                  {2, 3, n, nullptr, "stress", description.c_str(), nullptr, "data", 4},
                                                  limit) == 0 &&
                         SMAppendToXMLLog(logPathOf(SM_LOG_TARGET_XML).c_str(), 2, 3, n, nullptr, "stress",
                                          description.c_str(), nullptr, "data", 4, limit) == 0;
    return logged && SMFileLogMsgToRotatedLog(line.c_str(), sandbox().path("rotated/a").c_str(), rotateAt, 50,
                                              SM_ROTATED_LOG_NEWLINE) == 0;
}

// The event IDs of a text log's records in file order, after "header" when
// the file starts with one; "broken" for a record that is not whole.
Ids textIds(const std::string &path)
{
    Ids ids{readFile(path).starts_with(headerBytes()) ? "header" : "no header"};
    for (const LoggedRecord &record : textLogRecords(path, "stress"))
        ids.push_back(record.whole ? record.id : "broken");
    return ids;
}

// The event IDs of an XML log's entries, after "document" when xmllint
// takes the file; "broken" for an entry that is not whole.
Ids xmlIds(const std::string &path)
{
    const std::string file = readFile(path);
    Ids ids{wellFormed(path) != false && file.ends_with("</LogEntry></EventLog>") ? "document" : "ill-formed"};
    for (const LoggedRecord &record : xmlLogRecords(file, "stress"))
        ids.push_back(record.whole ? record.id : "broken");
    return ids;
}

// The numbers of the rotated logs' lines; "broken" for a line that is not whole.
Ids rotatedIds()
{
    Ids ids;
    for (const auto &entry : fs::directory_iterator(sandbox().path("rotated"))) {
        const std::string file = readFile(entry.path());
        for (std::size_t at = 0, end; at < file.size(); at = end + 1) {
            end = file.find('\n', at);
            const std::string line = file.substr(at, end - at), n = between(line, 0, "line ", " ");
            ids.push_back(line == "line " + n + " =====" ? n : "broken");
        }
    }
    return ids;
}

// Every ID after the first `skip` is whole and found once (backup records
// aside), and there are `count` of them (any number for count 0).
void expectWholeAndOnce(const Ids &ids, std::size_t skip, std::size_t count)
{
    std::set<std::string> once;
    for (std::size_t k = skip; k < ids.size(); ++k) {
        EXPECT_TRUE(ids[k] != "broken" && (ids[k] == "1" || once.insert(ids[k]).second)) << ids[k];
    }
    EXPECT_EQ(once.size(), count != 0 ? count : once.size());
}

class LogStress : public ::testing::Test {
  protected:
    void SetUp() override
    {
        removeLogs();
        fs::remove_all(sandbox().path("rotated"));
        fs::create_directories(sandbox().path("rotated"));
    }
    void TearDown() override { SetUp(); }
    const std::string text = logPathOf(SM_LOG_TARGET_TEXT), xml = logPathOf(SM_LOG_TARGET_XML);
};

TEST_F(LogStress, EveryRecordOnceAndWholeWithoutBackupsOrRotation)
{
    // Each writing process raises its own limits; this one's stay as they are.
    ASSERT_TRUE(inProcesses([](int n) { return writeAll(n, 0, UINT32_MAX); },
                            [this] {
                                SMSetLogMaxSize(text.c_str(), SM_LOG_MAX_SIZE_UPPER_BOUND, 1);
                                SMSetLogMaxSize(xml.c_str(), SM_LOG_MAX_SIZE_UPPER_BOUND, 1);
                            }));
    EXPECT_FALSE(fs::exists(backupOf(text)) || fs::exists(backupOf(xml)));
    const Ids texts = textIds(text), entries = xmlIds(xml);
    EXPECT_EQ(texts.front() + entries.front(), "headerdocument");
    expectWholeAndOnce(texts, 1, kAll);
    expectWholeAndOnce(entries, 1, kAll);
    expectWholeAndOnce(rotatedIds(), 0, kAll);
}

// With small limits the logs move to their backups many times: a log and its
// backup start with their header and the record of their backup (ID 1). The
// rotated logs take no lock, so processes rotating at once may drop a
// generation: their lines are only whole and found once.
TEST_F(LogStress, RecordsStayWholeAcrossBackupsAndRotation)
{
    ASSERT_TRUE(inProcesses([](int n) { return writeAll(n, 64 * 1024, 16 * 1024); }, [] {}));
    Ids texts = textIds(text), entries = xmlIds(xml);
    const Ids textBackup = textIds(backupOf(text)), xmlBackup = xmlIds(backupOf(xml));
    EXPECT_EQ(texts.at(0) + texts.at(1) + textBackup.at(0) + textBackup.at(1), "header1header1");
    EXPECT_EQ(entries.at(0) + entries.at(1) + xmlBackup.at(0) + xmlBackup.at(1), "document1document1");
    texts.insert(texts.end(), textBackup.begin() + 1, textBackup.end());
    entries.insert(entries.end(), xmlBackup.begin() + 1, xmlBackup.end());
    expectWholeAndOnce(texts, 1, 0);
    expectWholeAndOnce(entries, 1, 0);
    expectWholeAndOnce(rotatedIds(), 0, 0);
}

}  // namespace
