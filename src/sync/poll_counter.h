// The wait rule of the library's polled locks (the unnamed mutex with a
// time-out, record locks taken with F_SETLK): after each failed try, give up
// when the counter has reached the time-out, else add 4 and sleep 1 ms. The
// counter starts at 0, so a time-out of 0 means exactly one try. Each retry
// counts as 4 ms while sleeping 1 ms; callers rely on that pace, so it stays.
#pragma once

#include <unistd.h>

#include <cstdint>

namespace zksupt::sync {

class PollCounter {
  public:
    explicit PollCounter(int32_t timeoutMs) noexcept : timeout_(timeoutMs) {}

    // Called after a failed try: true when the wait is over (time-out),
    // false after sleeping before the next try.
    bool expired() noexcept
    {
        if (counter_ >= timeout_)
            return true;
        counter_ += 4;
        ::usleep(1000);
        return false;
    }

  private:
    int64_t timeout_;
    int64_t counter_ = 0;
};

}  // namespace zksupt::sync
