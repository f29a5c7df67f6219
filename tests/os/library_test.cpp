// Shared libraries: the library record, the process-wide table's users and
// kept symbols, concurrent use, the table as a module, and refused input.
#include <gtest/gtest.h>

#include <dlfcn.h>

#include <atomic>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include <zksupt/os.h>
#include <zksupt/status.h>

#include "os/library.h"
#include "os/library_table.h"

namespace {

constexpr const char *kPlugin = ZKSUPT_TEST_PLUGIN;
constexpr const char *kTwice = "zksupt_plugin_twice";
constexpr const char *kAnswer = "zksupt_plugin_answer";
using Twice = int (*)(int);
using Answer = int (*)();

// Whether the loader has the plugin mapped now (asked without loading it).
bool pluginLoaded()
{
    void *handle = dlopen(kPlugin, RTLD_NOW | RTLD_NOLOAD);
    if (handle != nullptr)
        dlclose(handle);
    return handle != nullptr;
}

// Counts the loader lookups the table makes for symbols it has not kept.
std::atomic<int> lookups{0};
void *countedLookup(SMLibrary *library, const char *symbol) noexcept
{
    ++lookups;
    return zksupt::os::linkToExport(library, symbol);
}

TEST(Library, LoadResolveAndUnloadByPath)
{
    ASSERT_FALSE(pluginLoaded());
    SMLibrary *library = SMLibLoad(kPlugin);
    ASSERT_NE(library, nullptr);
    EXPECT_TRUE(pluginLoaded());
    EXPECT_EQ(library->kind, 0u);
    EXPECT_STREQ(library->path, kPlugin);
    EXPECT_EQ(library->path, reinterpret_cast<char *>(library + 1));  // one block, path behind the record

    auto twice = reinterpret_cast<Twice>(SMLibLinkToExportFN(library, kTwice));
    ASSERT_NE(twice, nullptr);
    EXPECT_EQ(twice(21), 42);
    EXPECT_EQ(SMLibLinkToExportFN(library, "zksupt_plugin_missing"), nullptr);
    EXPECT_EQ(SMLibUnLinkFromExportFN(library, reinterpret_cast<void *>(twice)), SM_STATUS_SUCCESS);
    EXPECT_EQ(SMLibUnLoad(library), SM_STATUS_SUCCESS);
    EXPECT_FALSE(pluginLoaded());
}

TEST(Library, RefusedRecordsAndArguments)
{
    // Records with the plugin's real handle, so only the checks keep it loaded.
    void *handle = dlopen(kPlugin, RTLD_NOW);
    ASSERT_NE(handle, nullptr);
    SMLibrary otherKind{1, nullptr, handle};
    SMLibrary noHandle{0, nullptr, nullptr};
    int anything = 0;

    EXPECT_EQ(SMLibLoad(nullptr), nullptr);
    EXPECT_EQ(SMLibLoad("/nonexistent/zksupt/plugin.so"), nullptr);
    EXPECT_EQ(SMLibUnLoad(nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMLibUnLoad(&otherKind), SM_STATUS_BAD_OBJECT);
    EXPECT_EQ(SMLibUnLoad(&noHandle), SM_STATUS_BAD_OBJECT);
    EXPECT_EQ(SMLibLinkToExportFN(nullptr, kTwice), nullptr);
    EXPECT_EQ(SMLibLinkToExportFN(&otherKind, kTwice), nullptr);
    EXPECT_EQ(SMLibLinkToExportFN(&noHandle, kTwice), nullptr);
    EXPECT_EQ(SMLibUnLinkFromExportFN(nullptr, &anything), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMLibUnLinkFromExportFN(&otherKind, nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMLibUnLinkFromExportFN(&otherKind, &anything), SM_STATUS_BAD_OBJECT);
    EXPECT_EQ(SMLibUnLinkFromExportFN(&noHandle, &anything), SM_STATUS_BAD_OBJECT);

    EXPECT_EQ(SMFLibLinkToExportFN(nullptr, kPlugin, kTwice), nullptr);
    EXPECT_EQ(SMFLibLinkToExportFN("user", nullptr, kTwice), nullptr);
    EXPECT_EQ(SMFLibLinkToExportFN("user", "/nonexistent/zksupt/plugin.so", kTwice), nullptr);
    EXPECT_EQ(SMFLibUnLoad(nullptr, kPlugin), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMFLibUnLoad("user", nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMFLibUnLoad("user", "/nonexistent/zksupt/plugin.so"), SM_STATUS_SUCCESS);

    SMLibrary *library = SMLibLoad(kPlugin);
    ASSERT_NE(library, nullptr);
    EXPECT_EQ(SMLibLinkToExportFN(library, nullptr), nullptr);
    EXPECT_EQ(SMLibUnLinkFromExportFN(library, nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMLibUnLoad(library), SM_STATUS_SUCCESS);
    EXPECT_TRUE(pluginLoaded());  // the refused records did not close the handle
    dlclose(handle);
    EXPECT_FALSE(pluginLoaded());
}

TEST(LibraryTable, LoadedOnceAndKeptUntilTheLastUserLetsGo)
{
    const auto first = reinterpret_cast<Twice>(SMFLibLinkToExportFN("first", kPlugin, kTwice));
    ASSERT_NE(first, nullptr);
    const auto second = reinterpret_cast<Twice>(SMFLibLinkToExportFN("second", kPlugin, kTwice));
    EXPECT_EQ(second, first);
    EXPECT_EQ(second(4), 8);

    // A null symbol gives the one record, which works as any library record.
    void *record = SMFLibLinkToExportFN("first", kPlugin, nullptr);
    ASSERT_NE(record, nullptr);
    EXPECT_EQ(SMFLibLinkToExportFN("second", kPlugin, nullptr), record);
    EXPECT_EQ(SMLibLinkToExportFN(static_cast<SMLibrary *>(record), kTwice), reinterpret_cast<void *>(first));

    EXPECT_EQ(SMFLibUnLoad("first", kPlugin), SM_STATUS_SUCCESS);
    EXPECT_TRUE(pluginLoaded());
    EXPECT_EQ(first(5), 10);
    EXPECT_EQ(SMFLibUnLoad("second", kPlugin), SM_STATUS_SUCCESS);
    EXPECT_FALSE(pluginLoaded());
}

TEST(LibraryTable, EveryLetGoCountsListedUserOrNot)
{
    ASSERT_NE(SMFLibLinkToExportFN("repeat", kPlugin, kTwice), nullptr);
    ASSERT_NE(SMFLibLinkToExportFN("repeat", kPlugin, kAnswer), nullptr);  // listed once
    ASSERT_NE(SMFLibLinkToExportFN("other", kPlugin, nullptr), nullptr);
    EXPECT_EQ(SMFLibUnLoad("repeat", kPlugin), SM_STATUS_SUCCESS);
    EXPECT_TRUE(pluginLoaded());
    EXPECT_EQ(SMFLibUnLoad("repeat", kPlugin), SM_STATUS_SUCCESS);  // no longer listed, still counted
    EXPECT_FALSE(pluginLoaded());
    EXPECT_EQ(SMFLibUnLoad("other", kPlugin), SM_STATUS_SUCCESS);  // the file is no longer in the table

    ASSERT_NE(SMFLibLinkToExportFN("stranger-first", kPlugin, nullptr), nullptr);
    EXPECT_EQ(SMFLibUnLoad("never-linked", kPlugin), SM_STATUS_SUCCESS);
    EXPECT_FALSE(pluginLoaded());
}

TEST(LibraryTable, EachSymbolIsLookedUpOncePerLoad)
{
    const zksupt::os::SymbolLookup loaderLookup = zksupt::os::replaceSymbolLookup(&countedLookup);
    void *twice = SMFLibLinkToExportFN("a", kPlugin, kTwice);
    ASSERT_NE(twice, nullptr);
    EXPECT_EQ(SMFLibLinkToExportFN("a", kPlugin, kTwice), twice);
    EXPECT_EQ(SMFLibLinkToExportFN("b", kPlugin, kTwice), twice);
    EXPECT_EQ(lookups, 1);
    const auto answer = reinterpret_cast<Answer>(SMFLibLinkToExportFN("b", kPlugin, kAnswer));
    ASSERT_NE(answer, nullptr);
    EXPECT_EQ(answer(), 42);
    EXPECT_EQ(lookups, 2);
    // A symbol that is not found is not kept: it is asked for again.
    EXPECT_EQ(SMFLibLinkToExportFN("b", kPlugin, "zksupt_plugin_missing"), nullptr);
    EXPECT_EQ(SMFLibLinkToExportFN("b", kPlugin, "zksupt_plugin_missing"), nullptr);
    EXPECT_EQ(lookups, 4);
    EXPECT_EQ(SMFLibUnLoad("a", kPlugin), SM_STATUS_SUCCESS);
    EXPECT_EQ(SMFLibUnLoad("b", kPlugin), SM_STATUS_SUCCESS);

    // A fresh load starts with no kept symbols.
    ASSERT_NE(SMFLibLinkToExportFN("a", kPlugin, kTwice), nullptr);
    EXPECT_EQ(lookups, 5);
    EXPECT_EQ(SMFLibUnLoad("a", kPlugin), SM_STATUS_SUCCESS);
    EXPECT_FALSE(pluginLoaded());
    zksupt::os::replaceSymbolLookup(loaderLookup);
}

TEST(LibraryTable, ThreadsLinkAndLetGoTogether)
{
    constexpr int kThreads = 4;
    constexpr int kRounds = 100;
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([t, &wrong] {
            const std::string user = "user-" + std::to_string(t);
            for (int round = 0; round < kRounds; ++round) {
                const auto twice = reinterpret_cast<Twice>(SMFLibLinkToExportFN(user.c_str(), kPlugin, kTwice));
                if (twice == nullptr || twice(round) != 2 * round)
                    ++wrong;
                if (round % 3 == 0 && SMFLibLinkToExportFN(user.c_str(), kPlugin, nullptr) == nullptr)
                    ++wrong;
                if (SMFLibUnLoad(user.c_str(), kPlugin) != SM_STATUS_SUCCESS)
                    ++wrong;
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(wrong.load(), 0);
    EXPECT_FALSE(pluginLoaded());
}

TEST(LibraryTable, StoppingTheModuleUnloadsEveryLibrary)
{
    ASSERT_NE(SMFLibLinkToExportFN("kept", kPlugin, kTwice), nullptr);
    zksupt::os::stopLibraryTable();
    EXPECT_FALSE(pluginLoaded());
    EXPECT_EQ(SMFLibLinkToExportFN("kept", kPlugin, kTwice), nullptr);  // not started: nothing loads
    EXPECT_EQ(SMFLibUnLoad("kept", kPlugin), SM_STATUS_SUCCESS);
    EXPECT_FALSE(pluginLoaded());
    ASSERT_TRUE(zksupt::os::startLibraryTable());
    ASSERT_NE(SMFLibLinkToExportFN("kept", kPlugin, kTwice), nullptr);
    EXPECT_EQ(SMFLibUnLoad("kept", kPlugin), SM_STATUS_SUCCESS);
    EXPECT_FALSE(pluginLoaded());
}

}  // namespace
