// Reference ticks, the timer check, the system type and the console key test.
#include <gtest/gtest.h>

#include <sys/utsname.h>
#include <time.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <limits>

#include <zksupt/os.h>

#include "os/system_info.h"

namespace {

int64_t realtimeMilliseconds()
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return static_cast<int64_t>(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

TEST(RefTicks, CountMillisecondsOfTheRealTimeClock)
{
    const int64_t before = realtimeMilliseconds();
    const int64_t ticks = SMRefTicksGet();
    EXPECT_GE(ticks, before - 1);  // through a double, which may land one below
    EXPECT_LE(ticks, realtimeMilliseconds());
}

TEST(RefTicks, TimerCheckBoundaries)
{
    constexpr int64_t kMax = std::numeric_limits<int64_t>::max(), kUntouched = 0x5555;
    const struct {
        int64_t start, now, timeout;
        int32_t result;
        int64_t difference, passed, expired;
    } cases[] = {
        {1000, 1500, 500, 1, 500, 0, 0},                 // exactly the time-out: not expired
        {1000, 1501, 500, 1, 501, 1, 1},                 // one tick more: expired
        {1000, 1000, -1, 1, 0, 0, 0},                    // no time-out, no time gone by
        {1000, 1000 + kMax / 2, -1, 1, kMax / 2, 1, 0},  // no time-out: passed, never expired
        {1000, 900, 50, 1, 0, 0, 0},                     // the clock went back
        {-2, 5, 6, 1, 7, 1, 1},                          // only -1 means no time
        {-kMax - 1, kMax, -1, 1, 0, 0, 0},               // wraps to a negative difference
        {-1, 1000, 5, 0, kUntouched, kUntouched, kUntouched},
        {1000, -1, 5, 0, kUntouched, kUntouched, kUntouched},
    };
    for (const auto &c : cases) {
        int64_t difference = kUntouched;
        uint16_t passed = kUntouched, expired = kUntouched;
        EXPECT_EQ(SMRefTicksDiffCheckTimer(c.start, c.now, c.timeout, &difference, &passed, &expired), c.result);
        EXPECT_EQ((std::array<int64_t, 3>{difference, passed, expired}),
                  (std::array<int64_t, 3>{c.difference, c.passed, c.expired}))
            << c.start << " -> " << c.now << " time-out " << c.timeout;
    }
    EXPECT_EQ(SMRefTicksDiffCheckTimer(1, 2, 3, nullptr, nullptr, nullptr), 1);
}

TEST(SystemInfo, VmkernelInAnyCaseIsEsxEverythingElseLinux)
{
    for (const char *kernel : {"VMkernel", "vmkernel", "VMKERNEL"})
        EXPECT_EQ(zksupt::os::osTypeOf(kernel), 4) << kernel;
    for (const char *kernel : {"Linux", "VMkernel2", ""})
        EXPECT_EQ(zksupt::os::osTypeOf(kernel), 3) << kernel;
    utsname system{};
    ASSERT_EQ(uname(&system), 0);
    EXPECT_EQ(SMOSTypeGet(), zksupt::os::osTypeOf(system.sysname));
}

TEST(SystemInfo, KeyWaitingOnlyWhenStandardInputCanBeRead)
{
    const int saved = dup(0);
    int keys[2];
    ASSERT_EQ(pipe(keys), 0);
    ASSERT_EQ(dup2(keys[0], 0), 0);
    const int empty = SMkbhit();
    const bool written = write(keys[1], "k", 1) == 1;
    const int waiting = SMkbhit(), stillWaiting = SMkbhit();  // nothing was read
    close(0);
    const int closed = SMkbhit();  // select fails on a closed descriptor
    dup2(saved, 0);
    for (int fd : {saved, keys[0], keys[1]})
        close(fd);
    ASSERT_TRUE(written);
    EXPECT_EQ((std::array<int, 4>{empty, waiting, stillWaiting, closed}), (std::array<int, 4>{0, 1, 1, 0}));
}

}  // namespace
