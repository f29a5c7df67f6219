// Attach/detach counting and the start/stop order of modules, over a table of
// recording modules; and the library's own lifecycle in the sandbox.
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <string>
#include <vector>

#include "config/registry_file.h"
#include "frame/lifecycle.h"
#include "support/child.h"
#include "support/sandbox.h"

namespace zksupt::frame {
namespace {

// What the recording modules did, as signed slot numbers: +k started, -k stopped.
using Events = std::vector<int>;
Events events;
int failingSlot = 0;

template <int Slot> bool recordStart()
{
    events.push_back(Slot);
    return Slot != failingSlot;
}

template <int Slot> void recordStop()
{
    events.push_back(-Slot);
}

template <int... Slots> constexpr std::array<Module, sizeof...(Slots)> recording()
{
    return {{Module{"recording", recordStart<Slots>, recordStop<Slots>}...}};
}
constexpr auto kNine = recording<1, 2, 3, 4, 5, 6, 7, 8, 9>();

// Events of a first attach when module `failing` fails (0: none fails).
Events firstAttach(std::span<const Module> modules, int failing, int expectedResult)
{
    events.clear();
    failingSlot = failing;
    Lifecycle lifecycle{modules};
    EXPECT_EQ(lifecycle.attach(), expectedResult);
    return events;
}

TEST(Lifecycle, OnlyFirstAttachStartsAndLastDetachStopsInReverse)
{
    events.clear();
    failingSlot = 0;
    Lifecycle lifecycle{kNine};
    EXPECT_EQ(lifecycle.detach(), 0) << "detach without attach";
    EXPECT_EQ(lifecycle.attach(), 1);
    EXPECT_EQ(lifecycle.attach(), 1);
    EXPECT_EQ(lifecycle.detach(), 1);
    EXPECT_EQ(events, (Events{1, 2, 3, 4, 5, 6, 7, 8, 9})) << "one detach of two attaches stops nothing";
    EXPECT_EQ(lifecycle.unloading(), 0);
    EXPECT_EQ(lifecycle.detach(), 1);
    EXPECT_EQ(Events(events.begin() + 9, events.end()), (Events{-9, -8, -7, -6, -5, -4, -3, -2, -1}));
    EXPECT_EQ(lifecycle.unloading(), 1);
    EXPECT_EQ(lifecycle.detach(), 0);
    EXPECT_EQ(lifecycle.attach(), 1) << "a fresh attach after the last detach starts everything again";
    EXPECT_EQ(events.size(), 27u);
    EXPECT_EQ(lifecycle.unloading(), 0);
}

// A failing module rolls back the ones before it; later attaches run without modules.
TEST(Lifecycle, FailingModuleRollsBackTheOnesBeforeIt)
{
    EXPECT_EQ(firstAttach(kNine, 1, 0), (Events{1})) << "nothing is stopped when module 1 fails";
    EXPECT_EQ(firstAttach(kNine, 9, 0), (Events{1, 2, 3, 4, 5, 6, 7, 8, 9, -8, -7, -6, -5, -4, -3, -2, -1}));
    constexpr std::array<Module, 3> gap{{kNine[0], notBuiltYet("not built"), kNine[2]}};
    EXPECT_EQ(firstAttach(gap, 3, 0), (Events{1, 3, -1})) << "slots not built are skipped";
    events.clear();
    failingSlot = 5;
    Lifecycle lifecycle{kNine};
    EXPECT_EQ(lifecycle.attach(), 0);
    EXPECT_EQ(events, (Events{1, 2, 3, 4, 5, -4, -3, -2, -1}));
    EXPECT_EQ(lifecycle.attachCount(), 0);
    events.clear();
    EXPECT_EQ(lifecycle.attach(), 1);
    EXPECT_EQ(lifecycle.attachCount(), 1);
    EXPECT_EQ(lifecycle.detach(), 1);
    EXPECT_TRUE(events.empty()) << "neither the attach nor its detach may touch a module";
    EXPECT_EQ(lifecycle.moduleStartCount(), 1);
    EXPECT_EQ(lifecycle.unloading(), 1);
}

// Module 1 chooses the registry file: the override alone when it is set. A
// missing one fails the choice and the attach, and a second attach succeeds
// without running module 1. In a child: it detaches this process's library.
TEST(LibraryLifecycle, AttachFailsWithoutRegistryFileAndSecondAttachSucceeds)
{
    const int result = test::runInChild([] {
        Lifecycle &lib = library();
        if (lib.detach() != 1 || unloading() != 1)
            return 10;
        const std::string missing = test::sandbox().path("no-such-registry.cfg");
        setenv("ZKSUPT_REGISTRY", missing.c_str(), 1);
        if (lib.attach() != 0 || lib.attachCount() != 0 || config::registryFilePath() != nullptr)
            return 11;
        setenv("ZKSUPT_REGISTRY", test::sandbox().registryFile().c_str(), 1);
        if (lib.attach() != 1 || config::registryFilePath() != nullptr)
            return 12;
        const std::string other = test::sandbox().writeFile("elsewhere/qvreg.cfg", "tarn.installpath=/\n");
        setenv("ZKSUPT_REGISTRY", other.c_str(), 1);
        if (!config::chooseRegistryFile() || config::registryFilePath() != other)
            return 13;
        setenv("ZKSUPT_REGISTRY", "", 1);
        return config::chooseRegistryFile() || config::registryFilePath() != nullptr ? 14 : 0;
    });
    EXPECT_EQ(result, 0);
}

TEST(RegistryChoice, FirstExistingCandidateWins)
{
    const std::string present = test::sandbox().registryFile(), other = test::sandbox().writeFile("other.cfg", "");
    const std::string missing = test::sandbox().path("missing.cfg"), dir = test::sandbox().root();
    const std::array<const char *, 3> missingFirst{missing.c_str(), present.c_str(), other.c_str()};
    EXPECT_EQ(config::firstExisting(missingFirst), present);
    const std::array<const char *, 2> otherFirst{other.c_str(), present.c_str()}, none{missing.c_str(), nullptr};
    EXPECT_EQ(config::firstExisting(otherFirst), other);
    EXPECT_EQ(config::firstExisting(none), nullptr);
    const std::array<const char *, 1> directory{dir.c_str()};
    EXPECT_EQ(config::firstExisting(directory), dir) << "existence is all that is tested";
}

}  // namespace
}  // namespace zksupt::frame
