#include "os/time.h"

#include <sys/time.h>

namespace zksupt::os {

int64_t refTicks() noexcept
{
    timeval now{};
    if (::gettimeofday(&now, nullptr) != 0)
        return kNoTime;
    const double seconds = static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_usec) * 0.000001;
    return static_cast<int64_t>(seconds * 1000.0);
}

int32_t checkTimer(int64_t start, int64_t now, int64_t timeout, int64_t *difference, uint16_t *passed,
                   uint16_t *expired) noexcept
{
    if (start == kNoTime || now == kNoTime)
        return 0;
    // Wrapping subtraction: ticks far apart must not overflow.
    int64_t elapsed = static_cast<int64_t>(static_cast<uint64_t>(now) - static_cast<uint64_t>(start));
    if (elapsed < 0)
        elapsed = 0;
    const bool isPassed = timeout == kNoTime ? elapsed > 0 : elapsed > timeout;
    const bool isExpired = timeout != kNoTime && elapsed > timeout;
    if (difference != nullptr)
        *difference = elapsed;
    if (passed != nullptr)
        *passed = isPassed ? 1 : 0;
    if (expired != nullptr)
        *expired = isExpired ? 1 : 0;
    return 1;
}

}  // namespace zksupt::os
