// Reference ticks, the timer check, the system type and the console key test.
#include <gtest/gtest.h>

#include <sys/utsname.h>
#include <time.h>
#include <unistd.h>

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
    for (int round = 0; round < 100; ++round) {
        const int64_t before = realtimeMilliseconds();
        const int64_t ticks = SMRefTicksGet();
        // The ticks go through a double, which may land one below the exact count.
        EXPECT_GE(ticks, before - 1);
        EXPECT_LE(ticks, realtimeMilliseconds());
    }
}

TEST(RefTicks, TimerCheckBoundaries)
{
    constexpr int64_t kMin = std::numeric_limits<int64_t>::min();
    constexpr int64_t kMax = std::numeric_limits<int64_t>::max();
    constexpr int64_t kUntouched = 0x5555;
    const struct {
        int64_t start, now, timeout;
        int32_t result;
        int64_t difference, passed, expired;
    } cases[] = {
        {1000, 1500, 500, 1, 500, 0, 0},                 // exactly the time-out: not expired
        {1000, 1501, 500, 1, 501, 1, 1},                 // one tick more: expired
        {1000, 1000, 0, 1, 0, 0, 0},                     //
        {1000, 1001, 0, 1, 1, 1, 1},                     //
        {1000, 1000, -1, 1, 0, 0, 0},                    // no time-out, no time gone by
        {1000, 1000 + kMax / 2, -1, 1, kMax / 2, 1, 0},  // no time-out: passed, never expired
        {1000, 900, 50, 1, 0, 0, 0},                     // the clock went back
        {-2, 5, 6, 1, 7, 1, 1},                          // only -1 means no time
        {kMin, kMax, -1, 1, 0, 0, 0},                    // wraps to a negative difference
        {-1, 1000, 5, 0, kUntouched, kUntouched, kUntouched},
        {1000, -1, 5, 0, kUntouched, kUntouched, kUntouched},
    };
    for (const auto &c : cases) {
        int64_t difference = kUntouched;
        uint16_t passed = kUntouched, expired = kUntouched;
        EXPECT_EQ(SMRefTicksDiffCheckTimer(c.start, c.now, c.timeout, &difference, &passed, &expired), c.result);
        EXPECT_EQ(difference, c.difference) << c.start << " -> " << c.now << " time-out " << c.timeout;
        EXPECT_EQ(passed, c.passed) << c.start << " -> " << c.now << " time-out " << c.timeout;
        EXPECT_EQ(expired, c.expired) << c.start << " -> " << c.now << " time-out " << c.timeout;
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
    EXPECT_EQ(SMLongFileNamesEnable(), 0);
    EXPECT_EQ(SMLongFileNamesDisable(), 0);
}

TEST(SystemInfo, KeyWaitingOnlyWhenStandardInputCanBeRead)
{
    const int saved = dup(0);
    int keys[2];
    ASSERT_EQ(pipe(keys), 0);
    ASSERT_EQ(dup2(keys[0], 0), 0);
    const int empty = SMkbhit();
    const bool written = write(keys[1], "k", 1) == 1;
    const int waiting = SMkbhit();
    const int stillWaiting = SMkbhit();  // nothing was read
    close(0);
    const int closed = SMkbhit();  // select fails on a closed descriptor
    dup2(saved, 0);
    for (int fd : {saved, keys[0], keys[1]})
        close(fd);
    ASSERT_TRUE(written);
    EXPECT_EQ(empty, 0);
    EXPECT_EQ(waiting, 1);
    EXPECT_EQ(stillWaiting, 1);
    EXPECT_EQ(closed, 0);
}

}  // namespace
