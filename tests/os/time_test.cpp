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
        const int64_t after = realtimeMilliseconds();
        // The ticks go through a double; it may land one below the exact count.
        EXPECT_GE(ticks, before - 1);
        EXPECT_LE(ticks, after);
    }
}

struct TimerCase {
    int64_t start, now, timeout;
    int32_t result;
    int64_t difference;
    uint16_t passed, expired;
};

TEST(RefTicks, TimerCheckBoundaries)
{
    constexpr int64_t kMin = std::numeric_limits<int64_t>::min();
    constexpr int64_t kMax = std::numeric_limits<int64_t>::max();
    constexpr int64_t kUntouched = 0x5555;
    constexpr uint16_t kFlagUntouched = 0x55;
    const TimerCase cases[] = {
        {1000, 1500, 500, 1, 500, 0, 0},                 // exactly the time-out: not expired
        {1000, 1501, 500, 1, 501, 1, 1},                 // one tick more: expired
        {1000, 1000, 0, 1, 0, 0, 0},                     // a zero time-out is not run out at once
        {1000, 1001, 0, 1, 1, 1, 1},                     //
        {1000, 1000, -1, 1, 0, 0, 0},                    // no time-out, no time gone by
        {1000, 1001, -1, 1, 1, 1, 0},                    // no time-out: passed, never expired
        {1000, 1000 + kMax / 2, -1, 1, kMax / 2, 1, 0},  //
        {1000, 900, 50, 1, 0, 0, 0},                     // the clock went back
        {1000, 900, -1, 1, 0, 0, 0},                     //
        {-2, 5, 6, 1, 7, 1, 1},                          // only -1 means no time
        {kMin, kMax, -1, 1, 0, 0, 0},                    // wraps to a negative difference
        {-1, 1000, 5, 0, kUntouched, kFlagUntouched, kFlagUntouched},
        {1000, -1, 5, 0, kUntouched, kFlagUntouched, kFlagUntouched},
    };
    for (const TimerCase &c : cases) {
        int64_t difference = kUntouched;
        uint16_t passed = kFlagUntouched;
        uint16_t expired = kFlagUntouched;
        SCOPED_TRACE(testing::Message() << c.start << " -> " << c.now << " time-out " << c.timeout);
        EXPECT_EQ(SMRefTicksDiffCheckTimer(c.start, c.now, c.timeout, &difference, &passed, &expired), c.result);
        EXPECT_EQ(difference, c.difference);
        EXPECT_EQ(passed, c.passed);
        EXPECT_EQ(expired, c.expired);
    }
    EXPECT_EQ(SMRefTicksDiffCheckTimer(1, 2, 3, nullptr, nullptr, nullptr), 1);
}

TEST(SystemInfo, VmkernelInAnyCaseIsEsxEverythingElseLinux)
{
    const struct {
        const char *kernel;
        int32_t type;
    } cases[] = {{"Linux", 3}, {"VMkernel", 4}, {"vmkernel", 4}, {"VMKERNEL", 4}, {"VMkernel2", 3}, {"", 3}};
    for (const auto &c : cases)
        EXPECT_EQ(zksupt::os::osTypeOf(c.kernel), c.type) << c.kernel;

    utsname system{};
    ASSERT_EQ(uname(&system), 0);
    EXPECT_EQ(SMOSTypeGet(), zksupt::os::osTypeOf(system.sysname));
    EXPECT_EQ(SMLongFileNamesEnable(), 0);
    EXPECT_EQ(SMLongFileNamesDisable(), 0);
}

// Puts a pipe in place of standard input for the test and restores it.
class StandardInput : public testing::Test {
  protected:
    void SetUp() override
    {
        saved_ = dup(0);
        ASSERT_GE(saved_, 0);
        ASSERT_EQ(pipe(pipe_), 0);
        ASSERT_EQ(dup2(pipe_[0], 0), 0);
    }
    void TearDown() override
    {
        dup2(saved_, 0);
        close(saved_);
        close(pipe_[0]);
        if (pipe_[1] >= 0)
            close(pipe_[1]);
    }
    int saved_ = -1;
    int pipe_[2] = {-1, -1};
};

TEST_F(StandardInput, KeyWaitingOnlyWhenInputCanBeRead)
{
    EXPECT_EQ(SMkbhit(), 0);
    ASSERT_EQ(write(pipe_[1], "k", 1), 1);
    EXPECT_EQ(SMkbhit(), 1);
    EXPECT_EQ(SMkbhit(), 1);  // nothing was read
    char key = 0;
    ASSERT_EQ(read(0, &key, 1), 1);
    EXPECT_EQ(key, 'k');
    EXPECT_EQ(SMkbhit(), 0);
    close(0);
    EXPECT_EQ(SMkbhit(), 0);  // select fails on a closed descriptor
}

}  // namespace
