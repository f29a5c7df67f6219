// Every family that opens files, with the process allowed no more
// descriptors, then one, two, three more than it holds: each call fails with
// its status or succeeds, keeps no descriptor, leaves its file old or new,
// and works again once descriptors are available.
#include <gtest/gtest.h>

#include <sys/resource.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include <zksupt/config.h>
#include <zksupt/file.h>
#include <zksupt/ipc.h>
#include <zksupt/log.h>
#include <zksupt/os.h>
#include <zksupt/status.h>

#include "config/path_table.h"
#include "support/sandbox.h"
#include "support/status_names.h"

namespace {

using zksupt::test::readFile;
using zksupt::test::sandbox;
using zksupt::test::statusName;

constexpr int kMostExtra = 4;  // descriptors beyond those held, at most
constexpr uint32_t kPropertyText = 13;

// How reads and writes of INI and property files fail: the file does not
// open (0x104; 7 for the new copy), the lock file does not (-1), or the lock
// object cannot be made (0x110).
const std::set<int32_t> kReadFailures = {SM_STATUS_FILE_OPEN_FAILED, SM_STATUS_FAILURE, SM_STATUS_NO_MEMORY};
const std::set<int32_t> kWriteFailures = {SM_STATUS_FILE_OPEN_FAILED, SM_STATUS_FILE_NOT_FOUND, SM_STATUS_FAILURE,
                                          SM_STATUS_NO_MEMORY};

// The lowest free descriptor: every one below it is in use.
int lowestFree()
{
    const int probe = dup(0);
    if (probe >= 0)
        close(probe);
    return probe;
}

// Lowers the descriptor limit for its lifetime.
class DescriptorLimit {
  public:
    explicit DescriptorLimit(rlim_t allowed)
    {
        getrlimit(RLIMIT_NOFILE, &saved_);
        rlimit lowered = saved_;
        lowered.rlim_cur = allowed;
        setrlimit(RLIMIT_NOFILE, &lowered);
    }
    ~DescriptorLimit() { setrlimit(RLIMIT_NOFILE, &saved_); }

    // Whether the kernel holds the process to the limit (an emulator such
    // as valgrind may keep it to itself).
    static bool enforced()
    {
        const int held = lowestFree();
        int probe = -1;
        {
            DescriptorLimit limit(static_cast<rlim_t>(held));
            probe = dup(0);
        }
        if (probe >= 0)
            close(probe);
        return probe < 0;
    }
    DescriptorLimit(const DescriptorLimit &) = delete;
    DescriptorLimit &operator=(const DescriptorLimit &) = delete;

  private:
    rlimit saved_{};
};

// One family's call. prepare (descriptors available) puts its files in
// place and returns what a file must hold after the call: its old or its
// new content. call returns the status; pointer results give 0 or -1.
struct Family {
    const char *name;
    std::function<void()> prepare;
    std::function<int32_t()> call;
    std::set<int32_t> failures;  // the statuses the call fails with
    std::string file;            // a file that must stay whole, or ""
    std::string oldContent, newContent;
    std::function<void()> undo;  // releases what a successful call made
};

int32_t pointerStatus(const void *result)
{
    return result != nullptr ? SM_STATUS_SUCCESS : SM_STATUS_FAILURE;
}

void exercise(const Family &family)
{
    int lastFailure = -1;
    for (int extra = 0; extra <= kMostExtra; ++extra) {
        family.prepare();
        const int held = lowestFree();
        ASSERT_GT(held, 0);
        int32_t status;
        {
            DescriptorLimit limit(static_cast<rlim_t>(held + extra));
            status = family.call();
        }
        if (status == SM_STATUS_SUCCESS) {
            family.undo();  // a handle holds its descriptor until then
        } else {
            lastFailure = extra;
            EXPECT_TRUE(family.failures.count(status))
                << family.name << " answered " << statusName(status) << " with " << extra << " descriptors to spare";
        }
        EXPECT_EQ(lowestFree(), held) << family.name << " kept a descriptor with " << extra << " to spare";
        if (!family.file.empty()) {
            const std::string now = readFile(family.file);
            EXPECT_TRUE(now == family.oldContent || now == family.newContent)
                << family.name << " left " << family.file << " as:\n"
                << now;
        }
    }
    EXPECT_EQ(lastFailure >= 0, true) << family.name << " never needed a descriptor";
    std::printf("%-16s fails up to %d spare descriptors\n", family.name, lastFailure);
    family.prepare();
    EXPECT_EQ(family.call(), SM_STATUS_SUCCESS) << family.name << " with descriptors available again";
    family.undo();
}

void nothing() {}

TEST(DescriptorLimit, EveryFileFamilyFailsCleanly)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "the sanitizers' own checks open descriptors; the other builds run this test";
#endif
    if (!DescriptorLimit::enforced())
        GTEST_SKIP() << "the descriptor limit is not enforced on this process (valgrind keeps it to itself)";
    const std::string ini = sandbox().path("limits/config.ini");
    const std::string iniBefore = "[s]\nkey=old\n";
    const std::string properties = sandbox().path("limits/settings.properties");
    const std::string propertiesBefore = "key=old\n";
    const std::string table = sandbox().path("limits/strings.ini");
    const std::string textLog = sandbox().path("limits/text.log");
    const std::string xmlLog = sandbox().path("limits/events.xml");
    const std::string source = sandbox().path("limits/source");
    const std::string copy = sandbox().path("limits/copy");
    sandbox().writeFile("limits/strings.ini", "[ASCII EN_US DEFAULT STRING ID SECTION]\n0:1F4=Hello\n");
    sandbox().writeFile("limits/source", "source bytes");
    char buffer[256];
    uint32_t size = 0;
    void *made = nullptr;
    SMLibrary *library = nullptr;
    const std::vector<Family> families = {
        {"INI read", [&] { sandbox().writeFile("limits/config.ini", iniBefore); },
         [&] {
             size = sizeof buffer;
             return SMReadINIPathFileValue("s", "key", 1, buffer, &size, nullptr, 0, ini.c_str(), 1);
         },
         kReadFailures, ini, iniBefore, iniBefore, nothing},
        {"INI write", [&] { sandbox().writeFile("limits/config.ini", iniBefore); },
         [&] { return SMWriteINIPathFileValue("s", "key", 1, "new", 4, ini.c_str(), 1); }, kWriteFailures, ini,
         iniBefore, "[s]\nkey=new\n", nothing},
        {"property read", [&] { sandbox().writeFile("limits/settings.properties", propertiesBefore); },
         [&] {
             size = sizeof buffer;
             return SMPropertyFileReadValue("key", kPropertyText, buffer, &size, nullptr, 0, properties.c_str(), 1);
         },
         kReadFailures, properties, propertiesBefore, propertiesBefore, nothing},
        {"property write", [&] { sandbox().writeFile("limits/settings.properties", propertiesBefore); },
         [&] { return SMPropertyFileWriteValue("key", kPropertyText, "new", 4, properties.c_str(), 1); },
         kWriteFailures, properties, propertiesBefore, "key=new\n", nothing},
        {"string table",
         nothing,
         [&] {
             size = sizeof buffer;
             return SMGetUTF8StrFromIDPathFile(500, nullptr, table.c_str(), buffer, &size) == 6 ? SM_STATUS_SUCCESS
                                                                                                : SM_STATUS_FAILURE;
         },
         {SM_STATUS_FAILURE},
         "",
         "",
         "",
         nothing},
        {"text log",
         [&] { sandbox().writeFile("limits/text.log", "first"); },
         [&] { return SMFileLogMsgToRotatedLog("second", textLog.c_str(), 1 << 20, 2, 0); },
         {SM_STATUS_FAILURE},
         textLog,
         "first",
         "firstsecond",
         nothing},
        {"XML log",
         [&] { std::remove(xmlLog.c_str()); },
         [&] { return SMAppendToXMLLog(xmlLog.c_str(), 4, 2, 1, "user", "source", "text", nullptr, nullptr, 0, 0); },
         {SM_STATUS_FAILURE},
         "",
         "",
         "",
         nothing},
        {"file copy",
         [&] { sandbox().writeFile("limits/copy", "old copy"); },
         // A copy that fails after opening its destination keeps what it
         // wrote, so the destination is not held to old or new.
         [&] { return SMFileCopy(source.c_str(), copy.c_str(), 1); },
         {SM_STATUS_FILE_NOT_FOUND, SM_STATUS_FAILURE},
         "",
         "",
         "",
         nothing},
        {"file size",
         nothing,
         [&] { return SMGetSizeOfFile(source.c_str(), &size); },
         {SM_STATUS_FAILURE},
         "",
         "",
         "",
         nothing},
        {"registry",
         nothing,
         [&] {
             // A registry file that does not open loads as one without paths.
             zksupt::config::stopPathTable();
             if (!zksupt::config::startPathTable())
                 return SM_STATUS_FAILURE;
             size = sizeof buffer;
             return SMGetInstallPath(buffer, &size);
         },
         {SM_STATUS_NOT_FOUND},
         "",
         "",
         "",
         [] {}},
        {"named mutex",
         nothing,
         [&] { return pointerStatus(made = SMMutexCreate("limits-mutex")); },
         {SM_STATUS_FAILURE},
         "",
         "",
         "",
         [&] { SMMutexDestroy(made); }},
        {"library table",
         nothing,
         [&] { return pointerStatus(library = SMLibLoad(ZKSUPT_TEST_PLUGIN)); },
         {SM_STATUS_FAILURE},
         "",
         "",
         "",
         [&] { SMLibUnLoad(library); }},
    };
    for (const Family &family : families)
        exercise(family);
    // The path table serves again after the loads that failed.
    zksupt::config::stopPathTable();
    EXPECT_TRUE(zksupt::config::startPathTable());
}

}  // namespace
