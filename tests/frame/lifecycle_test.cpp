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
std::vector<int> events;
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

constexpr std::array<Module, 9> kRecording{{
    {"one", recordStart<1>, recordStop<1>},
    {"two", recordStart<2>, recordStop<2>},
    {"three", recordStart<3>, recordStop<3>},
    {"four", recordStart<4>, recordStop<4>},
    {"five", recordStart<5>, recordStop<5>},
    {"six", recordStart<6>, recordStop<6>},
    {"seven", recordStart<7>, recordStop<7>},
    {"eight", recordStart<8>, recordStop<8>},
    {"nine", recordStart<9>, recordStop<9>},
}};

class LifecycleTest : public ::testing::Test {
  protected:
    void SetUp() override
    {
        events.clear();
        failingSlot = 0;
    }
    using Events = std::vector<int>;
};

TEST_F(LifecycleTest, OnlyFirstAttachStartsAndLastDetachStopsInReverse)
{
    Lifecycle lifecycle{kRecording};
    EXPECT_EQ(lifecycle.attach(), 1);
    EXPECT_EQ(events, (Events{1, 2, 3, 4, 5, 6, 7, 8, 9}));
    EXPECT_EQ(lifecycle.unloading(), 0);

    events.clear();
    EXPECT_EQ(lifecycle.attach(), 1);
    EXPECT_EQ(lifecycle.attachCount(), 2);
    EXPECT_EQ(lifecycle.detach(), 1);
    EXPECT_TRUE(events.empty()) << "one detach of two attaches must leave every module running";
    EXPECT_EQ(lifecycle.unloading(), 0);

    EXPECT_EQ(lifecycle.detach(), 1);
    EXPECT_EQ(events, (Events{-9, -8, -7, -6, -5, -4, -3, -2, -1}));
    EXPECT_EQ(lifecycle.unloading(), 1);
    EXPECT_EQ(lifecycle.attachCount(), 0);
    EXPECT_EQ(lifecycle.moduleStartCount(), 0);

    // A fresh attach after the last detach starts everything again and clears the flag.
    events.clear();
    EXPECT_EQ(lifecycle.attach(), 1);
    EXPECT_EQ(events.size(), 9u);
    EXPECT_EQ(lifecycle.unloading(), 0);
}

TEST_F(LifecycleTest, DetachWithoutAttachDoesNothing)
{
    Lifecycle lifecycle{kRecording};
    EXPECT_EQ(lifecycle.detach(), 0);
    EXPECT_TRUE(events.empty());
    EXPECT_EQ(lifecycle.attachCount(), 0);
    EXPECT_EQ(lifecycle.moduleStartCount(), 0);
    EXPECT_EQ(lifecycle.unloading(), 0);
}

TEST_F(LifecycleTest, FailingModuleRollsBackTheEarlierOnesAndLaterAttachesStartNothing)
{
    failingSlot = 5;
    Lifecycle lifecycle{kRecording};
    EXPECT_EQ(lifecycle.attach(), 0);
    EXPECT_EQ(events, (Events{1, 2, 3, 4, 5, -4, -3, -2, -1}));
    EXPECT_EQ(lifecycle.attachCount(), 0);
    EXPECT_EQ(lifecycle.moduleStartCount(), 1);

    // The start count kept its increment: the next attach succeeds at once
    // and the library runs without its modules.
    events.clear();
    EXPECT_EQ(lifecycle.attach(), 1);
    EXPECT_TRUE(events.empty());
    EXPECT_EQ(lifecycle.attachCount(), 1);
    EXPECT_EQ(lifecycle.moduleStartCount(), 2);

    // Its detach stops nothing either: the start count only falls back to 1.
    EXPECT_EQ(lifecycle.detach(), 1);
    EXPECT_TRUE(events.empty());
    EXPECT_EQ(lifecycle.moduleStartCount(), 1);
    EXPECT_EQ(lifecycle.unloading(), 1);
}

TEST_F(LifecycleTest, FailureOfTheFirstOrLastModule)
{
    failingSlot = 1;
    Lifecycle first{kRecording};
    EXPECT_EQ(first.attach(), 0);
    EXPECT_EQ(events, (Events{1})) << "nothing is stopped when module 1 fails";

    events.clear();
    failingSlot = 9;
    Lifecycle last{kRecording};
    EXPECT_EQ(last.attach(), 0);
    EXPECT_EQ(events, (Events{1, 2, 3, 4, 5, 6, 7, 8, 9, -8, -7, -6, -5, -4, -3, -2, -1}));
}

TEST_F(LifecycleTest, SlotsWithoutFunctionsAreSkipped)
{
    constexpr std::array<Module, 3> table{{
        {"one", recordStart<1>, recordStop<1>},
        notBuiltYet("not built"),
        {"three", recordStart<3>, recordStop<3>},
    }};
    failingSlot = 3;
    Lifecycle lifecycle{table};
    EXPECT_EQ(lifecycle.attach(), 0);
    EXPECT_EQ(events, (Events{1, 3, -1}));
}

// The test program's main attached the library in the sandbox.
TEST(LibraryLifecycle, AttachedInTheSandbox)
{
    EXPECT_EQ(library().attachCount(), 1);
    EXPECT_EQ(unloading(), 0);
    ASSERT_NE(config::registryFilePath(), nullptr);
    EXPECT_EQ(std::string(config::registryFilePath()), test::sandbox().registryFile());

    // Another load and unload of the library leave it running.
    EXPECT_EQ(library().attach(), 1);
    EXPECT_EQ(library().detach(), 1);
    EXPECT_EQ(library().attachCount(), 1);
    EXPECT_EQ(unloading(), 0);
    EXPECT_NE(config::registryFilePath(), nullptr);
}

// Without a registry file the attach fails; the asymmetric start count then
// lets a second attach succeed without modules. Run in a child, since it
// detaches the library of this process.
TEST(LibraryLifecycle, AttachFailsWithoutRegistryFileAndSecondAttachSucceeds)
{
    const int result = test::runInChild([] {
        Lifecycle &lib = library();
        if (lib.detach() != 1 || lib.attachCount() != 0 || unloading() != 1)
            return 10;
        const std::string missing = test::sandbox().path("no-such-registry.cfg");
        setenv("ZKSUPT_REGISTRY", missing.c_str(), 1);
        if (lib.attach() != 0)
            return 11;
        if (lib.attachCount() != 0 || lib.moduleStartCount() != 1)
            return 12;
        if (config::registryFilePath() != nullptr)
            return 13;
        if (lib.attach() != 1 || lib.attachCount() != 1)
            return 14;
        if (config::registryFilePath() != nullptr)
            return 15;  // the second attach must not have run module 1
        return 0;
    });
    EXPECT_EQ(result, 0);
}

}  // namespace
}  // namespace zksupt::frame
