// The millisecond reference clock and the time-out check over it.
#pragma once

#include <cstdint>

namespace zksupt::os {

// Reference ticks that mean "no time".
inline constexpr int64_t kNoTime = -1;

// Milliseconds since 1970-01-01 00:00 UTC from gettimeofday, computed in
// double precision and truncated toward zero, as the suite has always
// counted them; kNoTime when the clock cannot be read.
int64_t refTicks() noexcept;

// The time from start to now (0 when the clock went back) against a time-out
// in ticks (-1 = none): with none, passed is 1 once any time has gone by and
// expired stays 0; with one, both are 1 once the difference is above it.
// Stores through the pointers that are not null and returns 1; returns 0
// and stores nothing when start or now is kNoTime.
int32_t checkTimer(int64_t start, int64_t now, int64_t timeout, int64_t *difference, uint16_t *passed,
                   uint16_t *expired) noexcept;

}  // namespace zksupt::os
