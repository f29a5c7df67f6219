// Many threads at once through the format engine, registry lookups, INI
// reads and writes, both event logs, a critical section and the library
// table. Every result is checked as it comes, and at the end nothing written
// is lost: each thread's INI values, every log record, every critical-section
// increment. Built with ThreadSanitizer this is the race check.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <zksupt/zksupt.h>

#include "log/log_files.h"
#include "log/text_log.h"
#include "support/sandbox.h"

namespace {

using namespace zksupt::test;

constexpr int kThreads = 12;
constexpr int kRounds = 25;
constexpr const char *kPlugin = ZKSUPT_TEST_PLUGIN;
constexpr uint32_t kLargeLog = 4194304;

// What every thread must see the same way: the registry's answers taken
// before any thread starts, and the shared paths.
struct Shared {
    std::string productName;
    std::string iniDirectory;
    std::string sharedIni;
    std::string textLog;
    std::string rotatedLog;
    std::string xmlLog;
    int counter = 0;  // only ever changed inside the critical section
};

std::string iniDirectoryOf(int32_t product)
{
    char path[512] = "";
    uint32_t size = sizeof path;
    return SMGetPathByProductIDandType(product, 64, path, &size) == 0 ? path : "(failed)";
}

std::string productNameOf(int32_t product)
{
    char *name = SMProductIDToSID(product);
    const std::string copy = name != nullptr ? name : "(none)";
    SMFreeMem(name);
    return copy;
}

int32_t increment(void *argument)
{
    int *counter = static_cast<int *>(argument);
    const int seen = *counter;
    std::this_thread::yield();  // a lost update shows if two threads get here together
    *counter = seen + 1;
    return 0;
}

// One round of one thread; a description of the first wrong result, or empty.
std::string round(Shared &shared, int thread, int round, const std::string &ownIni)
{
    const int id = 1000 + thread * kRounds + round;
    const ucs2 wide[] = {'w', 0x00E9, 0};
    char formatted[128], expected[128];
    SMsnprintf(formatted, sizeof formatted, "%s|%d|%-5x|%.3f|%S|%c", "fmt", id, thread, id / 8.0, wide, 'a' + thread);
    std::snprintf(expected, sizeof expected, "%s|%d|%-5x|%.3f|%s|%c", "fmt", id, thread, id / 8.0, "w\xC3\xA9",
                  'a' + thread);
    if (std::string(formatted) != expected)
        return std::string("format gave ") + formatted + ", not " + expected;

    if (productNameOf(35) != shared.productName || iniDirectoryOf(35) != shared.iniDirectory)
        return "a registry lookup changed its answer";

    const std::string key = "thread" + std::to_string(thread);
    const uint32_t value = static_cast<uint32_t>(id);
    if (SMWriteINIPathFileValue("values", key.c_str(), 5, &value, sizeof value, shared.sharedIni.c_str(), 1) != 0 ||
        SMWriteINIPathFileValue("own", "round", 5, &value, sizeof value, ownIni.c_str(), 1) != 0)
        return "an INI write failed";
    uint32_t read = 0, size = sizeof read;
    if (SMReadINIPathFileValue("values", key.c_str(), 5, &read, &size, nullptr, 0, shared.sharedIni.c_str(), 1) != 0 ||
        read != value)
        return "the shared INI file lost " + key;
    size = sizeof read;
    if (SMReadINIPathFileValue("own", "round", 5, &read, &size, nullptr, 0, ownIni.c_str(), 1) != 0 || read != value)
        return "the thread's own INI file lost its value";

    const std::string description = "record " + std::to_string(id);
    if (zksupt::log::writeTextRecord(shared.textLog.c_str(),
                                     {2, 3, id, nullptr, "threads", description.c_str(), nullptr, "data", 4},
                                     kLargeLog) != 0)
        return "a text log append failed";
    if (SMAppendToXMLLog(shared.xmlLog.c_str(), 2, 3, id, nullptr, "threads", description.c_str(), nullptr, "data", 4,
                         kLargeLog) != 0)
        return "an XML log append failed";
    if (SMFileLogMsgToRotatedLog(description.c_str(), shared.rotatedLog.c_str(), kLargeLog, 2,
                                 SM_ROTATED_LOG_NEWLINE) != 0)
        return "a rotated log append failed";

    if (SMCriticalSectionExecute(increment, &shared.counter, -1) != 0)
        return "the critical section refused";

    using Twice = int (*)(int);
    const std::string user = "user" + std::to_string(thread);
    const auto twice = reinterpret_cast<Twice>(SMFLibLinkToExportFN(user.c_str(), kPlugin, "zksupt_plugin_twice"));
    if (twice == nullptr || twice(id) != 2 * id)
        return "the plugin's function was not found or is wrong";
    if (SMFLibUnLoad(user.c_str(), kPlugin) != 0)
        return "the plugin's user could not let go";
    SMLibrary *library = SMLibLoad(kPlugin);
    if (library == nullptr || SMLibLinkToExportFN(library, "zksupt_plugin_answer") == nullptr ||
        SMLibUnLoad(library) != 0)
        return "a direct load of the plugin failed";
    return "";
}

std::multiset<std::string> linesOf(const std::string &text, const std::string &lead, const std::string &end)
{
    std::multiset<std::string> found;
    for (std::size_t at = text.find(lead); at != std::string::npos; at = text.find(lead, at + 1)) {
        const std::size_t start = at + lead.size();
        found.insert(text.substr(start, text.find(end, start) - start));
    }
    return found;
}

TEST(ThreadStress, EverySubsystemAtOnceLosesNothing)
{
    Shared shared{productNameOf(35),
                  iniDirectoryOf(35),
                  sandbox().writeFile("threads/shared.ini", ""),
                  sandbox().path("threads/events.log"),
                  sandbox().path("threads/rotated.log"),
                  sandbox().path("threads/events.xml")};
    ASSERT_NE(shared.productName, "(none)");
    ASSERT_NE(shared.iniDirectory, "(failed)");

    // One user keeps the plugin mapped throughout: the threads' loads and
    // unloads then go through the table's counts and the loader's own, never
    // mapping the file anew. (A real unmapping in one thread while another
    // maps frees memory inside the dynamic loader, under a lock of its own
    // that ThreadSanitizer does not see.)
    ASSERT_NE(SMFLibLinkToExportFN("keeper", kPlugin, nullptr), nullptr);
    std::vector<std::string> failures(kThreads);
    std::atomic<int> ready{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([&, t] {
            const std::string ownIni = sandbox().writeFile("threads/own" + std::to_string(t) + ".ini", "");
            ++ready;
            while (ready.load() < kThreads)
                std::this_thread::yield();
            for (int r = 0; r < kRounds && failures[t].empty(); ++r)
                failures[t] = round(shared, t, r, ownIni);
        });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(SMFLibUnLoad("keeper", kPlugin), 0);
    for (int t = 0; t < kThreads; ++t)
        EXPECT_EQ(failures[t], "") << "thread " << t;

    EXPECT_EQ(shared.counter, kThreads * kRounds);
    std::multiset<std::string> expected;
    for (int id = 1000; id < 1000 + kThreads * kRounds; ++id)
        expected.insert(std::to_string(id));
    for (int t = 0; t < kThreads; ++t) {
        uint32_t last = 0, size = sizeof last;
        const std::string key = "thread" + std::to_string(t);
        EXPECT_EQ(
            SMReadINIPathFileValue("values", key.c_str(), 5, &last, &size, nullptr, 0, shared.sharedIni.c_str(), 1), 0);
        EXPECT_EQ(last, static_cast<uint32_t>(1000 + t * kRounds + kRounds - 1)) << key;
    }
    const std::u16string units = unitsOf(shared.textLog);
    EXPECT_EQ(linesOf(std::string(units.begin(), units.end()), "EventID: ", "\r"), expected);
    EXPECT_EQ(linesOf(readFile(shared.rotatedLog), "record ", "\n"), expected);
    EXPECT_EQ(linesOf(readFile(shared.xmlLog), "<ID>", "<"), expected);
    EXPECT_NE(wellFormed(shared.xmlLog), false);
}

}  // namespace
