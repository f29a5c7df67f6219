// The process-wide library table: users, kept symbols and concurrent use.
#include <gtest/gtest.h>

#include <dlfcn.h>

#include <atomic>
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
using Twice = int (*)(int);

// Whether the loader has the plugin mapped now (asked without loading it).
bool pluginLoaded()
{
    void *handle = dlopen(kPlugin, RTLD_NOW | RTLD_NOLOAD);
    if (handle != nullptr)
        dlclose(handle);
    return handle != nullptr;
}

Twice link(const char *user, const char *symbol = kTwice)
{
    return reinterpret_cast<Twice>(SMFLibLinkToExportFN(user, kPlugin, symbol));
}

// Loaded once, whoever asks first; every let-go counts, listed user or
// not, and the one that brings the count below 1 unloads.
TEST(LibraryTable, UsersShareOneLoadUntilTheLastLetsGo)
{
    const Twice first = link("first");
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(link("second"), first);
    EXPECT_NE(link("second", "zksupt_plugin_answer"), nullptr);  // a user is listed and counted once
    // A null symbol gives the one record, which works as any library record.
    void *record = SMFLibLinkToExportFN("first", kPlugin, nullptr);
    EXPECT_EQ(SMFLibLinkToExportFN("second", kPlugin, nullptr), record);
    EXPECT_EQ(SMLibLinkToExportFN(static_cast<SMLibrary *>(record), kTwice), reinterpret_cast<void *>(first));
    const struct {
        const char *user;
        bool loadedAfter;
    } letGoes[] = {{"second", true}, {"second", false}, {"first", false}};
    for (const auto &letGo : letGoes) {
        EXPECT_EQ(SMFLibUnLoad(letGo.user, kPlugin), SM_STATUS_SUCCESS);
        EXPECT_EQ(pluginLoaded(), letGo.loadedAfter) << letGo.user;
    }
}

// Counts the loader lookups the table makes for symbols it has not kept.
std::atomic<int> lookups{0};
void *countedLookup(SMLibrary *library, const char *symbol) noexcept
{
    ++lookups;
    return zksupt::os::linkToExport(library, symbol);
}

TEST(LibraryTable, EachSymbolIsLookedUpOncePerLoad)
{
    const zksupt::os::SymbolLookup loaderLookup = zksupt::os::replaceSymbolLookup(&countedLookup);
    const struct {
        const char *user, *symbol;
        int lookups;
    } links[] = {
        {"a", kTwice, 1},
        {"a", kTwice, 1},
        {"b", kTwice, 1},
        {"b", "zksupt_plugin_answer", 2},
        {"b", "zksupt_plugin_missing", 3},
        {"b", "zksupt_plugin_missing", 4},  // what is not found is not kept
    };
    for (const auto &l : links) {
        EXPECT_EQ(link(l.user, l.symbol) != nullptr, l.lookups < 3) << l.user << " " << l.symbol;
        EXPECT_EQ(lookups, l.lookups) << l.user << " " << l.symbol;
    }
    EXPECT_EQ(SMFLibUnLoad("a", kPlugin), SM_STATUS_SUCCESS);
    EXPECT_EQ(SMFLibUnLoad("b", kPlugin), SM_STATUS_SUCCESS);
    ASSERT_NE(link("a"), nullptr);  // a fresh load starts with no kept symbols
    EXPECT_EQ(lookups, 5);
    EXPECT_EQ(SMFLibUnLoad("a", kPlugin), SM_STATUS_SUCCESS);
    EXPECT_FALSE(pluginLoaded());
    zksupt::os::replaceSymbolLookup(loaderLookup);
}

TEST(LibraryTable, ThreadsLinkAndLetGoTogether)
{
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([t, &wrong] {
            const std::string user = "user-" + std::to_string(t);
            for (int round = 0; round < 100; ++round) {
                const Twice twice = link(user.c_str());
                wrong += twice == nullptr || twice(round) != 2 * round;
                wrong += round % 3 == 0 && link(user.c_str(), nullptr) == nullptr;
                wrong += SMFLibUnLoad(user.c_str(), kPlugin) != SM_STATUS_SUCCESS;
            }
        });
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(wrong.load(), 0);
    EXPECT_FALSE(pluginLoaded());
}

}  // namespace
