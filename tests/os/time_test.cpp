// The timer check at and around its boundaries.
#include <gtest/gtest.h>

#include <array>
#include <limits>

#include <zksupt/os.h>

namespace {

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

}  // namespace
