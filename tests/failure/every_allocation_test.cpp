// Each family's representative work with its allocations failing one at a
// time: the first, then the second, ... until a run meets no failure. After
// every failure the call must have answered with its failure (no memory,
// null, -1) or succeeded, files must hold their old or new content whole,
// no descriptor or System V object may stay behind, and the same work must
// succeed at once with memory available. The sanitizer build's leak check
// covers what was allocated.
#include <gtest/gtest.h>

#include <dirent.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include <zksupt/config.h>
#include <zksupt/file.h>
#include <zksupt/format.h>
#include <zksupt/ipc.h>
#include <zksupt/log.h>
#include <zksupt/net.h>
#include <zksupt/os.h>
#include <zksupt/sdo.h>
#include <zksupt/status.h>
#include <zksupt/text.h>
#include <zksupt/xml.h>

#include "config/path_table.h"
#include "failure/failing_allocator.h"
#include "support/sandbox.h"
#include "support/status_names.h"

namespace {

using zksupt::test::readFile;
using zksupt::test::sandbox;
using zksupt::test::statusName;
using zksupt::test::underFailure;

constexpr uint64_t kMostAllocations = 20000;  // a scenario needing more is a runaway

// One family's work. reset puts its files back before each run; run does the
// work and says whether all of it succeeded; check looks, with memory
// available, at what a run left behind.
struct Scenario {
    const char *family;
    std::function<void()> reset;
    std::function<bool()> run;
    std::function<void()> check;
};

// Whether status is success; a failure outside the clean ones is reported.
bool succeeded(int32_t status, std::initializer_list<int32_t> clean, const char *what)
{
    if (status == SM_STATUS_SUCCESS)
        return true;
    for (const int32_t allowed : clean)
        if (status == allowed)
            return false;
    ADD_FAILURE() << what << " answered " << statusName(status);
    return false;
}

// Entries of a /proc directory or lines of a /proc file, to see that nothing
// stays behind.
std::size_t countEntries(const char *directory)
{
    std::size_t count = 0;
    if (DIR *dir = opendir(directory)) {
        while (readdir(dir) != nullptr)
            ++count;
        closedir(dir);
    }
    return count;
}

std::size_t countLines(const char *path)
{
    std::ifstream in(path);
    std::size_t count = 0;
    for (std::string line; std::getline(in, line);)
        ++count;
    return count;
}

struct Leftovers {
    std::size_t descriptors = countEntries("/proc/self/fd");
    std::size_t semaphoreSets = countLines("/proc/sysvipc/sem");
    std::size_t sharedSegments = countLines("/proc/sysvipc/shm");
    bool operator==(const Leftovers &) const = default;
};

// Runs the scenario with allocation 1, 2, ... failing; returns the failure
// points exercised.
uint64_t failEveryAllocation(const Scenario &scenario)
{
    const Leftovers before;
    for (uint64_t n = 1; n <= kMostAllocations; ++n) {
        scenario.reset();
        zksupt::test::planAllocationFailure(n);
        const bool completed = scenario.run();
        const bool injected = zksupt::test::endAllocationPlan();
        scenario.check();
        EXPECT_TRUE(Leftovers() == before) << scenario.family << ": something stays open after failure " << n;
        if (!injected) {
            EXPECT_TRUE(completed) << scenario.family << " failed with no allocation failing";
            return n - 1;
        }
        scenario.reset();
        EXPECT_TRUE(scenario.run()) << scenario.family << " failed with memory available after failure " << n;
        scenario.check();
        if (::testing::Test::HasFailure())
            return n;
    }
    ADD_FAILURE() << scenario.family << " never ran to its end";
    return kMostAllocations;
}

void report(const Scenario &scenario)
{
    const uint64_t points = failEveryAllocation(scenario);
    std::printf("%-22s %llu allocation failure points\n", scenario.family, static_cast<unsigned long long>(points));
    EXPECT_GT(points, 0u) << scenario.family << " allocated nothing the wrapper saw";
}

void nothing() {}

// --- SDO: build, serialise, parse, update in place, clone, compare.

struct SdoFree {
    void operator()(SDOConfig *config) const { SMSDOConfigFree(config); }
};
using Sdo = std::unique_ptr<SDOConfig, SdoFree>;

bool sdoWork()
{
    Sdo config(underFailure([] { return SMSDOConfigAlloc(); }));
    if (!config)
        return false;
    const uint32_t number = 0x01020304;
    const std::string bytes(300, 'b');
    for (uint16_t id = 1; id <= 12; ++id) {
        const int32_t status =
            id % 2 == 0
                ? underFailure([&] { return SMSDOConfigAddData(config.get(), id, 14, bytes.data(), id * 20, 0); })
                : underFailure([&] { return SMSDOConfigAddData(config.get(), id, 7, &number, 4, 0); });
        if (!succeeded(status, {SM_STATUS_NO_MEMORY}, "SMSDOConfigAddData"))
            return false;
    }
    uint32_t size = underFailure([&] { return SMSDOConfigGetBinarySize(config.get()); });
    std::vector<uint8_t> binary(size);
    if (!succeeded(underFailure([&] { return SMSDOConfigToBinary(config.get(), binary.data(), &size); }),
                   {SM_STATUS_NO_MEMORY}, "SMSDOConfigToBinary"))
        return false;
    Sdo parsed(underFailure([&] { return SMSDOBinaryToConfig(binary.data()); }));
    Sdo clone(underFailure([&] { return SMSDOConfigClone(config.get()); }));
    if (!parsed || !clone)
        return false;
    const uint32_t other = 9;
    if (!succeeded(underFailure([&] { return SMSDOBinarySetData(binary.data(), &size, 3, 7, &other, 4); }),
                   {SM_STATUS_NO_MEMORY}, "SMSDOBinarySetData"))
        return false;
    // Both copies are whole: the comparison, with memory, finds them equal.
    const int32_t compared = underFailure([&] { return SMSDOConfigCompareByValue(parsed.get(), clone.get()); });
    const int32_t same = SMSDOConfigCompareByValue(parsed.get(), clone.get());
    EXPECT_EQ(same, 1) << "the parsed object and the clone differ";
    return compared == 1 && same == 1;
}

// --- Sized strings and text helpers.

bool textWork()
{
    SMSizedString narrow{};
    SMSizedString wide{};
    const ucs2 unicode[] = {'w', 0xE9, 0x263A, 'z', 0};
    bool done = underFailure([&] { return SMSSUTF8StrAlloc(&narrow, 4); }) != nullptr;
    for (int i = 0; done && i < 6; ++i) {
        const std::string before(static_cast<const char *>(narrow.buf));
        done = underFailure([&] { return SMSSUTF8StrCatUTF8Str(&narrow, "a longer piece "); }) != nullptr;
        done = done && underFailure([&] { return SMSSUTF8StrCatUCS2Str(&narrow, unicode); }) != nullptr;
        if (!done) {
            EXPECT_EQ(std::string(static_cast<const char *>(narrow.buf)).substr(0, before.size()), before)
                << "a failed append spoilt the text";
        }
    }
    done = done && underFailure([&] { return SMSSUCS2StrAlloc(&wide, 2); }) != nullptr;
    done = done && underFailure([&] { return SMSSUCS2StrCatUTF8Str(&wide, "h\xC3\xA9llo w\xC3\xB6rld"); }) != nullptr;
    done = done && underFailure([&] { return SMSSUCS2StrCatUCS2Str(&wide, unicode); }) != nullptr;
    SMSSUTF8StrFree(&narrow);
    SMSSUCS2StrFree(&wide);
    char *copy = underFailure([] { return SMUTF8Strdup("copy me"); });
    done = done && copy != nullptr;
    EXPECT_TRUE(copy == nullptr || std::strcmp(copy, "copy me") == 0);
    std::free(copy);
    uint32_t listSize = 0;
    char *list = underFailure([&] { return SMUTF8ConvertXSVToYSV("a,b,c", &listSize, ',', ';'); });
    done = done && list != nullptr;
    std::free(list);
    char converted[32];
    uint32_t size = sizeof converted;
    return done && succeeded(underFailure([&] { return SMUCS2StrToUTF8Str(converted, &size, unicode); }),
                             {SM_STATUS_NO_MEMORY}, "SMUCS2StrToUTF8Str");
}

// --- Format with S.

bool formatWork()
{
    const ucs2 unicode[] = {'a', 0xE9, 0x263A, 0};
    std::vector<ucs2> longText(600, 'x');
    longText.push_back(0);
    char out[2048];
    const int32_t written =
        underFailure([&] { return SMsnprintf(out, sizeof out, "[%S|%d|%S]", unicode, 5, longText.data()); });
    // A failed S conversion ends the text there: what came before stays.
    const std::string expected = "[a\xC3\xA9\xE2\x98\xBA|5|" + std::string(600, 'x') + "]";
    EXPECT_EQ(written, static_cast<int32_t>(std::strlen(out)));
    EXPECT_EQ(expected.substr(0, std::strlen(out)), out);
    return std::string(out) == expected;
}

// --- INI files: write, read back, list names, delete.

constexpr const char *kIniBefore = "[first]\nkeep=1\nvalue=old\n\n[second]\nother=2\n";

std::string iniPath()
{
    return sandbox().path("alloc/config.ini");
}

bool iniWork()
{
    const std::string path = iniPath();
    const std::string value = "new value";
    if (!succeeded(underFailure([&] {
                       return SMWriteINIPathFileValue("first", "value", 1, value.c_str(), value.size() + 1,
                                                      path.c_str(), 1);
                   }),
                   {SM_STATUS_NO_MEMORY}, "SMWriteINIPathFileValue"))
        return false;
    char buffer[256];
    uint32_t size = sizeof buffer;
    if (!succeeded(underFailure([&] {
                       return SMReadINIPathFileValue("first", "value", 1, buffer, &size, nullptr, 0, path.c_str(), 1);
                   }),
                   {SM_STATUS_NO_MEMORY}, "SMReadINIPathFileValue"))
        return false;
    EXPECT_EQ(std::string(buffer), value);
    size = sizeof buffer;
    if (!succeeded(underFailure([&] {
                       return SMReadINIPathFileValue(nullptr, nullptr, 1, buffer, &size, nullptr, 0, path.c_str(), 1);
                   }),
                   {SM_STATUS_NO_MEMORY}, "SMReadINIPathFileValue of the section names"))
        return false;
    char *keep =
        underFailure([&] { return SMReadINISectionKeyUTF8Value("first", "keep", nullptr, nullptr, path.c_str(), 1); });
    if (keep == nullptr)
        return false;
    EXPECT_STREQ(keep, "1");
    std::free(keep);
    return succeeded(
        underFailure([&] { return SMWriteINIPathFileValue("second", "other", 1, nullptr, 0, path.c_str(), 1); }),
        {SM_STATUS_NO_MEMORY}, "SMWriteINIPathFileValue deleting");
}

// The file is whole: its old text, or a text holding the untouched values.
void iniCheck()
{
    const std::string text = readFile(iniPath());
    if (text == kIniBefore)
        return;
    EXPECT_NE(text.find("keep=1"), std::string::npos) << text;
    EXPECT_NE(text.find("[second]"), std::string::npos) << text;
    EXPECT_TRUE(text.find("value=new value\n") != std::string::npos || text.find("value=old\n") != std::string::npos)
        << text;
}

// --- The registry: the path table loaded again, then asked.

bool registryWork()
{
    zksupt::config::stopPathTable();
    if (!underFailure([] { return zksupt::config::startPathTable(); }))
        return false;
    char path[512];
    uint32_t size = sizeof path;
    if (!succeeded(underFailure([&] { return SMGetInstallPath(path, &size); }), {SM_STATUS_NO_MEMORY},
                   "SMGetInstallPath"))
        return false;
    EXPECT_EQ(std::string(path), sandbox().installDir());
    size = sizeof path;
    if (!succeeded(underFailure([&] { return SMExpandQvInstallPathString("@qvinstallpath@/bin", path, &size); }),
                   {SM_STATUS_NO_MEMORY}, "SMExpandQvInstallPathString"))
        return false;
    char *sid = underFailure([] { return SMProductIDToSID(35); });
    std::free(sid);
    return sid != nullptr;
}

void registryCheck()
{
    // Whatever the last load did, a fresh one serves again.
    zksupt::config::stopPathTable();
    EXPECT_TRUE(zksupt::config::startPathTable());
}

// --- Property files.

constexpr uint32_t kPropertyText = 13;
constexpr const char *kPropertiesBefore = "# settings\nname=old\nport=80\n";

std::string propertyPath()
{
    return sandbox().path("alloc/settings.properties");
}

bool propertyWork()
{
    const std::string path = propertyPath();
    const std::string value = "fresh value";
    if (!succeeded(underFailure([&] {
                       return SMPropertyFileWriteValue("name", kPropertyText, value.c_str(), value.size() + 1,
                                                       path.c_str(), 1);
                   }),
                   {SM_STATUS_NO_MEMORY}, "SMPropertyFileWriteValue"))
        return false;
    char buffer[128];
    uint32_t size = sizeof buffer;
    if (!succeeded(underFailure([&] {
                       return SMPropertyFileReadValue("port", kPropertyText, buffer, &size, nullptr, 0, path.c_str(),
                                                      1);
                   }),
                   {SM_STATUS_NO_MEMORY}, "SMPropertyFileReadValue"))
        return false;
    EXPECT_STREQ(buffer, "80");
    size = sizeof buffer;
    return succeeded(underFailure([&] {
                         return SMPropertyFileReadValue(nullptr, kPropertyText, buffer, &size, nullptr, 0, path.c_str(),
                                                        1);
                     }),
                     {SM_STATUS_NO_MEMORY}, "SMPropertyFileReadValue listing the keys");
}

void propertyCheck()
{
    const std::string text = readFile(propertyPath());
    EXPECT_TRUE(text == kPropertiesBefore || text == "# settings\nname=fresh value\nport=80\n") << text;
}

// --- String tables.

std::string stringTablePath()
{
    return sandbox().path("alloc/strings.ini");
}

bool stringTableWork()
{
    const std::string path = stringTablePath();
    char buffer[64];
    uint32_t size = sizeof buffer;
    uint32_t language = 1031;
    const uint32_t converted =
        underFailure([&] { return SMGetUTF8StrFromIDPathFile(500, &language, path.c_str(), buffer, &size); });
    // Without memory for its work buffers the lookup answers with this text.
    if (converted == 0 || std::strcmp(buffer, "Failed to allocate memory") == 0)
        return false;
    EXPECT_STREQ(buffer, "Hallo");
    return std::strcmp(buffer, "Hallo") == 0;
}

// --- The XML writer.

struct XmlFree {
    void operator()(SMXGBuf *buffer) const { SMXGBufFree(buffer); }
};
using Xml = std::unique_ptr<SMXGBuf, XmlFree>;

bool xmlWork()
{
    Xml document(underFailure([] { return SMXGBufAlloc(0, 1); }));
    Xml attributes(underFailure([] { return SMXGBufAlloc(0, 0); }));
    if (!document || !attributes)
        return false;
    const uint32_t id = 42;
    const std::string hostile = "<a & \"b\"> " + std::string(200, 'v');
    const std::initializer_list<std::function<int32_t()>> steps = {
        [&] { return SMXGBufCatAttribute(attributes.get(), "id", &id, 4, 7, nullptr); },
        [&] { return SMXGBufCatAttribute(attributes.get(), "name", hostile.c_str(), 0, 13, nullptr); },
        [&] { return SMXGBufCatBeginNode(document.get(), "root", attributes.get()); },
        [&] { return SMXGBufCatNode(document.get(), "item", nullptr, hostile.c_str(), 0, 13, nullptr); },
        [&] { return SMXGBufCatEmptyNode(document.get(), "empty", attributes.get()); },
        [&] { return SMXGBufCatEndNode(document.get(), "root"); },
    };
    for (const auto &step : steps)
        if (!succeeded(underFailure(step), {SM_STATUS_NO_MEMORY}, "an XML writer call"))
            return false;
    uint32_t size = 0;
    char *escaped = underFailure([&] { return SMXGEscapeXMLUTF8Str(hostile.c_str(), &size, 2); });
    if (escaped == nullptr)
        return false;
    SMXGBufFreeContent(escaped);
    char *content = underFailure([&] { return SMXGBufFreeGetContent(document.release()); });
    if (content == nullptr)
        return false;
    const bool whole = std::string(content).find("</root>") != std::string::npos;
    SMXGBufFreeContent(content);
    EXPECT_TRUE(whole);
    return whole;
}

// --- Event logs: the XML log, the rotated text log, the suite's logs.

std::string xmlLogPath()
{
    return sandbox().path("alloc/events.xml");
}

std::string rotatedLogPath()
{
    return sandbox().path("alloc/rotated.log");
}

std::string xmlLogBefore;
std::string rotatedLogBefore;

void logReset()
{
    std::remove(xmlLogPath().c_str());
    std::remove(rotatedLogPath().c_str());
    EXPECT_EQ(SMAppendToXMLLog(xmlLogPath().c_str(), 4, 2, 1, "user", "source", "first", nullptr, nullptr, 0, 1 << 20),
              SM_STATUS_SUCCESS);
    EXPECT_EQ(SMFileLogMsgToRotatedLog("first", rotatedLogPath().c_str(), 1 << 20, 2, 0), SM_STATUS_SUCCESS);
    xmlLogBefore = readFile(xmlLogPath());
    rotatedLogBefore = readFile(rotatedLogPath());
}

bool logWork()
{
    const char data[] = {1, 2, 3};
    const std::string xmlLog = xmlLogPath(), rotatedLog = rotatedLogPath();
    if (!succeeded(underFailure([&] {
                       return SMAppendToXMLLog(xmlLog.c_str(), 1, 3, 7, "user", "source", "second <&>", "link", data, 3,
                                               1 << 20);
                   }),
                   {SM_STATUS_NO_MEMORY, SM_STATUS_FAILURE}, "SMAppendToXMLLog"))
        return false;
    if (!succeeded(underFailure([&] { return SMFileLogMsgToRotatedLog("second", rotatedLog.c_str(), 1 << 20, 2, 0); }),
                   {SM_STATUS_NO_MEMORY, SM_STATUS_FAILURE}, "SMFileLogMsgToRotatedLog"))
        return false;
    if (!succeeded(underFailure([&] { return SMSetLogMaxSize(rotatedLog.c_str(), 1 << 21, 1); }),
                   {SM_STATUS_NO_MEMORY, SM_STATUS_FAILURE}, "SMSetLogMaxSize"))
        return false;
    return succeeded(underFailure([&] {
                         return SMAppendToLog(SM_LOG_TARGET_TEXT | SM_LOG_TARGET_XML, 4, 2, 9, "source", "described",
                                              nullptr, 0);
                     }),
                     {SM_STATUS_NO_MEMORY, SM_STATUS_FAILURE}, "SMAppendToLog");
}

// A log holds what it held, then possibly the new record whole.
void logCheck()
{
    const std::string xml = readFile(xmlLogPath());
    const std::string closing = "</EventLog>";
    const std::string kept = xmlLogBefore.substr(0, xmlLogBefore.size() - closing.size());
    EXPECT_EQ(xml.substr(0, kept.size()), kept);
    EXPECT_EQ(xml.substr(xml.size() - std::min(xml.size(), closing.size())), closing);
    EXPECT_TRUE(xml == xmlLogBefore || xml.find("<Description>second <&></Description>") != std::string::npos) << xml;
    const std::string text = readFile(rotatedLogPath());
    EXPECT_TRUE(text == rotatedLogBefore || text == rotatedLogBefore + "second") << text;
}

// --- Named objects.

bool namedWork()
{
    void *mutex = underFailure([] { return SMMutexCreate("alloc-mutex"); });
    if (mutex == nullptr)
        return false;
    void *opened = underFailure([] { return SMMutexOpen("alloc-mutex"); });
    if (opened != nullptr)
        SMMutexDestroy(opened);
    const bool locked = opened != nullptr && underFailure([&] { return SMMutexLock(mutex, 0); }) == SM_STATUS_SUCCESS;
    if (locked)
        SMMutexUnLock(mutex);
    SMMutexDestroy(mutex);
    void *semaphore = underFailure([] { return SMSemaphoreCreate("alloc-semaphore", 1); });
    if (semaphore == nullptr)
        return false;
    SMSemaphoreDestroy(semaphore);
    void *event = underFailure([] { return SMEventCreate("alloc-event", 1, 0); });
    if (event == nullptr)
        return false;
    SMEventDestroy(event);
    void *rwLock = underFailure([] { return SMRWLCreate("alloc-rwlock"); });
    if (rwLock == nullptr)
        return false;
    SMRWLDestroy(rwLock);
    void *shared = underFailure([] { return SMSharedMemCreate("alloc-shared", 4096); });
    if (shared == nullptr)
        return false;
    SMSharedMemFree(shared);
    return locked;
}

// --- The library table.

using Twice = int (*)(int);

bool libraryWork()
{
    void *found = underFailure([] { return SMFLibLinkToExportFN("alloc", ZKSUPT_TEST_PLUGIN, "zksupt_plugin_twice"); });
    if (found == nullptr)
        return false;
    EXPECT_EQ(reinterpret_cast<Twice>(found)(21), 42);
    if (!succeeded(underFailure([] { return SMFLibUnLoad("alloc", ZKSUPT_TEST_PLUGIN); }), {SM_STATUS_NO_MEMORY},
                   "SMFLibUnLoad"))
        return false;
    SMLibrary *library = underFailure([] { return SMLibLoad(ZKSUPT_TEST_PLUGIN); });
    if (library == nullptr)
        return false;
    void *symbol = underFailure([&] { return SMLibLinkToExportFN(library, "zksupt_plugin_twice"); });
    EXPECT_EQ(SMLibUnLoad(library), SM_STATUS_SUCCESS);
    return symbol != nullptr;
}

// --- Address lists.

bool addressWork()
{
    SMInetAddrEntry entries[64];
    uint32_t count = 64;
    if (!succeeded(underFailure([&] { return SMGetInetAddrStrList(0, &count, entries); }),
                   {SM_STATUS_NO_MEMORY, SM_STATUS_FAILURE}, "SMGetInetAddrStrList"))
        return false;
    count = 64;
    return succeeded(underFailure([&] { return SMGetIPAddrStrList(entries, &count, 0); }),
                     {SM_STATUS_NO_MEMORY, SM_STATUS_FAILURE}, "SMGetIPAddrStrList");
}

// One scenario a family; each runs as its own test, named after the family.
const Scenario kScenarios[] = {
    {"SDO", nothing, sdoWork, nothing},
    {"sized strings, text", nothing, textWork, nothing},
    {"format %S", nothing, formatWork, nothing},
    {"INI files", [] { sandbox().writeFile("alloc/config.ini", kIniBefore); }, iniWork, iniCheck},
    {"registry", nothing, registryWork, registryCheck},
    {"property files", [] { sandbox().writeFile("alloc/settings.properties", kPropertiesBefore); }, propertyWork,
     propertyCheck},
    {"string tables",
     [] {
         sandbox().writeFile("alloc/strings.ini", "[ASCII EN_US DEFAULT STRING ID SECTION]\n0:1F4=Hello\n\n"
                                                  "[MISCELLANEOUS STRING ID SECTION]\n407:1F4=Hallo\n");
     },
     stringTableWork, nothing},
    {"XML writer", nothing, xmlWork, nothing},
    {"event logs", logReset, logWork, logCheck},
    {"named objects", nothing, namedWork, nothing},
    {"library table", nothing, libraryWork, nothing},
    {"address lists", nothing, addressWork, nothing},
};

class EveryAllocation : public testing::TestWithParam<Scenario> {};

TEST_P(EveryAllocation, FailsCleanlyAndWorksAgain)
{
    report(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Family, EveryAllocation, testing::ValuesIn(kScenarios),
                         [](const testing::TestParamInfo<Scenario> &param) {
                             std::string name;
                             for (const char *c = param.param.family; *c != '\0'; ++c)
                                 if (std::isalnum(static_cast<unsigned char>(*c)) != 0)
                                     name += *c;
                             return name;
                         });

}  // namespace
