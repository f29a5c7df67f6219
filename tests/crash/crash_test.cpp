// A writer process killed with SIGKILL at a random moment of its work, over
// and over, for every kind of file the suite shares between processes; after
// each kill the file must be in a state the next process can live with.
//
// ZKSUPT_CRASH_SECONDS gives the whole run a time budget, spread over the
// kinds, and each kind must then survive kMinimumIterations kills; without
// it each kind runs a few kills only. ZKSUPT_CRASH_SEED repeats a run.
#include <gtest/gtest.h>

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <random>
#include <set>
#include <string>

#include <zksupt/zksupt.h>

#include "crash/log_records.h"
#include "ipc/key_file.h"
#include "ipc/registry.h"
#include "lock/file_lock.h"
#include "log/log_files.h"
#include "support/sandbox.h"

namespace {

using namespace zksupt::test;
using Clock = std::chrono::steady_clock;

// The budget's shares: one for each kind, and another for each event log,
// whose checks read more.
constexpr int kShares = 9;
constexpr int kQuickIterations = 12;
constexpr int kMinimumIterations = 100;
constexpr int kLongestDelayUs = 4000;

struct Plan {
    bool timed = false;
    std::chrono::milliseconds perShare{0};
    uint64_t seed = 0;
};

const Plan &plan()
{
    static const Plan thePlan = [] {
        Plan made;
        if (const char *seconds = std::getenv("ZKSUPT_CRASH_SECONDS"); seconds != nullptr && std::atoi(seconds) > 0) {
            made.timed = true;
            made.perShare = std::chrono::milliseconds(std::atoi(seconds) * 1000 / kShares);
        }
        const char *seed = std::getenv("ZKSUPT_CRASH_SEED");
        made.seed = seed != nullptr ? std::strtoull(seed, nullptr, 10) : std::random_device{}();
        std::printf("crash: seed %llu (ZKSUPT_CRASH_SEED repeats it)\n", static_cast<unsigned long long>(made.seed));
        return made;
    }();
    return thePlan;
}

// One kind of file: what a writer child does until it is killed (the status
// of a call that failed, when one does), and what must hold after the kill of
// iteration n.
struct Kind {
    std::string name;
    std::function<int32_t(int n)> write;
    std::function<testing::AssertionResult(int n)> check;
    int shares = 1;
};

// Kills a writer at random moments until the plan says stop; the number of
// kills that every check survived.
int survivedKills(const Kind &kind)
{
    std::mt19937_64 random(plan().seed ^ std::hash<std::string>{}(kind.name));
    std::uniform_int_distribution<int> delay(0, kLongestDelayUs);
    const auto stopAt = Clock::now() + plan().perShare * kind.shares;
    int done = 0;
    for (;; ++done) {
        if (plan().timed ? Clock::now() >= stopAt : done == kQuickIterations)
            break;
        const pid_t pid = fork();
        if (pid == 0) {
            std::fprintf(stderr, "%s writer: a call failed with 0x%X\n", kind.name.c_str(), kind.write(done));
            _exit(3);
        }
        if (pid < 0) {
            ADD_FAILURE() << "fork failed";
            break;
        }
        usleep(static_cast<useconds_t>(delay(random)));
        kill(pid, SIGKILL);
        int status = 0;
        waitpid(pid, &status, 0);
        if (!WIFSIGNALED(status)) {
            ADD_FAILURE() << kind.name << ": the writer stopped on its own at iteration " << done;
            break;
        }
        if (const testing::AssertionResult held = kind.check(done); !held) {
            ADD_FAILURE() << kind.name << " at iteration " << done << ": " << held.message();
            break;
        }
    }
    std::printf("crash: %s survived %d kills\n", kind.name.c_str(), done);
    if (plan().timed) {
        EXPECT_GE(done, kMinimumIterations) << kind.name;
    }
    return done;
}

// "v" and six digits: every value a writer writes has the same length, so a
// file holding any of them is the first file with that value put in.
std::string valueText(int n, int i)
{
    const std::string digits = std::to_string(1000000 + (n * 1000 + i) % 1000000);
    return "v" + digits.substr(1);
}

bool isValueText(const std::string &text)
{
    return text.size() == 7 && text[0] == 'v' && text.find_first_not_of("0123456789", 1) == std::string::npos;
}

// The file's bytes, which must be the template with `value` in place of the
// first value.
testing::AssertionResult isTemplateWith(const std::string &path, const std::string &pattern, const std::string &value)
{
    std::string expected = pattern;
    expected.replace(expected.find("v000000"), 7, value);
    const std::string actual = readFile(path);
    if (actual != expected)
        return testing::AssertionFailure() << path << " holds neither the old nor a new whole file:\n" << actual;
    return testing::AssertionSuccess();
}

TEST(KilledWriter, IniFileIsTheOldOrTheNewWhole)
{
    const std::string path = sandbox().path("crash/values.ini");
    sandbox().writeFile("crash/values.ini", "");
    for (int i = 0; i < 120; ++i) {
        const std::string key = "pad" + std::to_string(i), value = std::string(40, static_cast<char>('a' + i % 26));
        ASSERT_EQ(SMWriteINIPathFileValue("padding", key.c_str(), 1, value.c_str(), value.size() + 1, path.c_str(), 1),
                  0);
    }
    ASSERT_EQ(SMWriteINIPathFileValue("crash", "value", 1, "v000000", 8, path.c_str(), 1), 0);
    ASSERT_EQ(SMWriteINIPathFileValue("tail", "after", 1, "kept", 5, path.c_str(), 1), 0);
    const std::string pattern = readFile(path);

    survivedKills({"INI file",
                   [&](int n) {
                       for (int i = 0;; ++i) {
                           const std::string value = valueText(n, i);
                           if (const int32_t status =
                                   SMWriteINIPathFileValue("crash", "value", 1, value.c_str(), 8, path.c_str(), 1);
                               status != 0)
                               return status;
                       }
                   },
                   [&](int) {
                       char value[64] = "";
                       uint32_t size = sizeof value;
                       const int32_t status =
                           SMReadINIPathFileValue("crash", "value", 1, value, &size, nullptr, 0, path.c_str(), 1);
                       if (status != 0 || !isValueText(value))
                           return testing::AssertionFailure() << "read status " << status << ", value " << value;
                       return isTemplateWith(path, pattern, value);
                   }});
}

TEST(KilledWriter, PropertyFileIsTheOldOrTheNewWhole)
{
    std::string contents = "# properties the crash driver rewrites\n";
    for (int i = 0; i < 120; ++i)
        contents += "pad.key" + std::to_string(i) + "=" + std::string(40, static_cast<char>('a' + i % 26)) + "\n";
    contents += "crash.value=v000000\nafter.value=kept\n";
    const std::string path = sandbox().writeFile("crash/values.properties", contents);

    survivedKills({"property file",
                   [&](int n) {
                       for (int i = 0;; ++i) {
                           const std::string value = valueText(n, i);
                           if (const int32_t status =
                                   SMPropertyFileWriteValue("crash.value", 13, value.c_str(), 8, path.c_str(), 1);
                               status != 0)
                               return status;
                       }
                   },
                   [&](int) {
                       char value[64] = "";
                       uint32_t size = sizeof value;
                       const int32_t status =
                           SMPropertyFileReadValue("crash.value", 13, value, &size, nullptr, 0, path.c_str(), 1);
                       if (status != 0 || !isValueText(value))
                           return testing::AssertionFailure() << "read status " << status << ", value " << value;
                       return isTemplateWith(path, contents, value);
                   }});
}

// The keys the key file records for names, read from its lines; every name
// must have its own key.
testing::AssertionResult keysAreDistinct(std::map<uint32_t, std::string> &owners)
{
    // A list through the library first, so that a backup left by a kill is
    // moved back before the file is read here.
    static_cast<void>(zksupt::ipc::readSectionNames(zksupt::ipc::kNameKeySection, 4096));
    const std::string file = readFile(zksupt::ipc::keyFilePath());
    const std::string header = std::string("[") + zksupt::ipc::kNameKeySection + "]";
    bool inNames = false;
    owners.clear();
    for (std::size_t at = 0, end; at < file.size(); at = end + 1) {
        end = file.find('\n', at);
        if (end == std::string::npos)
            end = file.size();
        const std::string line = file.substr(at, end - at);
        if (line.starts_with("[")) {
            inNames = line == header;
            continue;
        }
        const std::size_t equals = line.find('=');
        if (!inNames || equals == std::string::npos)
            continue;
        const auto key = static_cast<uint32_t>(std::strtoul(line.c_str() + equals + 1, nullptr, 10));
        const std::string name = line.substr(0, equals);
        if (const auto [where, added] = owners.emplace(key, name); !added)
            return testing::AssertionFailure()
                   << "key " << key << " was handed to " << where->second << " and " << name;
    }
    return testing::AssertionSuccess();
}

TEST(KilledWriter, KeyFileNeverHandsOneKeyToTwoNames)
{
    ASSERT_NE(zksupt::ipc::keyFilePath(), nullptr);
    survivedKills({"key file",
                   [](int n) {
                       for (int i = 0;; ++i) {
                           const std::string name = "crash-" + std::to_string(n) + "-" + std::to_string(i);
                           if (zksupt::ipc::keyOf(name.c_str()) == 0)
                               return -1;
                       }
                   },
                   [](int n) {
                       std::map<uint32_t, std::string> owners;
                       if (testing::AssertionResult before = keysAreDistinct(owners); !before)
                           return before;
                       // The next allocation after the kill gets a key of its own too.
                       const std::string name = "survivor-" + std::to_string(n);
                       const uint32_t key = zksupt::ipc::keyOf(name.c_str());
                       if (key < zksupt::ipc::kFirstKey)
                           return testing::AssertionFailure() << "no key for " << name;
                       if (zksupt::ipc::keyOf(name.c_str()) != key)
                           return testing::AssertionFailure() << name << " did not keep its key";
                       return keysAreDistinct(owners);
                   }});
}

// Writers append records whose IDs count from n * 100000 + 100; after the
// kill the log holds whole records but perhaps the last, and the survivor's
// record lands whole at the end. The logs start afresh every few kills, so
// that a check reads a short log (a full one moves to its backup, and the
// first record of the new one says so). xmllint's verdict, which takes
// long, is asked once for each log, before it goes.
constexpr int kKillsPerLog = 4;

void killLogWriters(
    const char *kindName, uint32_t target,
    const std::function<testing::AssertionResult(const std::string &, bool, bool, std::size_t &)> &wholeRecords)
{
    const std::string path = logPathOf(target);
    std::size_t knownBroken = 0;
    removeLogs();
    survivedKills(
        {kindName,
         [&](int n) {
             for (int i = 0;; ++i) {
                 const int id = n * 100000 + 100 + i;
                 const std::string description = "record " + std::to_string(id);
                 if (const int32_t status = SMAppendToLog(target, 2, 3, id, "crash", description.c_str(), "data", 4);
                     status != 0)
                     return status;
             }
         },
         [&](int n) {
             if (testing::AssertionResult before = wholeRecords(path, false, false, knownBroken); !before)
                 return before;
             const int id = n * 100000 + 99;
             const std::string description = "record " + std::to_string(id);
             if (const int32_t status = SMAppendToLog(target, 2, 3, id, "crash", description.c_str(), "data", 4);
                 status != 0)
                 return testing::AssertionFailure()
                        << "the append after the kill gave " << status << "; the log held:\n"
                        << readFile(path);
             testing::AssertionResult after = wholeRecords(path, true, (n + 1) % kKillsPerLog == 0, knownBroken);
             if ((n + 1) % kKillsPerLog == 0) {
                 removeLogs();
                 knownBroken = 0;
             }
             return after;
         },
         2});
    removeLogs();
}

TEST(KilledWriter, TextLogKeepsWholeRecords)
{
    killLogWriters("text log", SM_LOG_TARGET_TEXT, textLogIsWhole);
}

TEST(KilledWriter, XmlLogKeepsWholeEntries)
{
    killLogWriters("XML log", SM_LOG_TARGET_XML, xmlLogIsWhole);
}

TEST(KilledHolder, NamedMutexIsFreeAtOnce)
{
    void *mutex = SMMutexCreate("crash mutex");
    ASSERT_NE(mutex, nullptr);
    survivedKills({"named mutex",
                   [](int) {
                       void *held = SMMutexOpen("crash mutex");
                       while (held != nullptr && SMMutexLock(held, -1) == 0)
                           SMMutexUnLock(held);
                       return -1;
                   },
                   [&](int) {
                       if (const int32_t status = SMMutexLock(mutex, 2000); status != 0)
                           return testing::AssertionFailure() << "the lock gave " << status;
                       SMMutexUnLock(mutex);
                       return testing::AssertionSuccess();
                   }});
    SMMutexDestroy(mutex);
}

TEST(KilledHolder, FileLockIsFreeAtOnce)
{
    const std::string path = sandbox().writeFile("crash/locked.ini", "[s]\n");
    zksupt::lock::FileLock *lock = zksupt::lock::getFileLock(path.c_str());
    ASSERT_NE(lock, nullptr);
    survivedKills({"file lock",
                   [&](int) {
                       int32_t status = 0;
                       while ((status = zksupt::lock::acquireFileLock(lock, zksupt::lock::kExclusive, 1)) == 0)
                           zksupt::lock::releaseFileLock(lock);
                       return status;
                   },
                   [&](int) {
                       // One try, no waiting: the dead holder's lock went with it.
                       if (const int32_t status = zksupt::lock::acquireFileLock(lock, zksupt::lock::kExclusive, 0);
                           status != 0)
                           return testing::AssertionFailure() << "the try gave " << status;
                       zksupt::lock::releaseFileLock(lock);
                       return testing::AssertionSuccess();
                   }});
}

}  // namespace
