// The library's unnamed semaphore: a process-private POSIX semaphore, the
// state of unnamed semaphores and unnamed events.
#pragma once

#include <semaphore.h>

#include <cstdint>

namespace zksupt::sync {

class Semaphore {
  public:
    // A new semaphore on the heap with the initial value; null when it
    // cannot be made. Freed with destroy.
    static Semaphore *create(uint32_t initial) noexcept;
    static void destroy(Semaphore *semaphore) noexcept;

    // Takes one unit: -1 waits without limit; otherwise waits until now plus
    // the time-out (0 tries once). SUCCESS, TIMEOUT, or FAILURE.
    int32_t wait(int32_t timeoutMs) noexcept;
    // Adds count units, one post each. SUCCESS or FAILURE.
    int32_t post(uint32_t count) noexcept;
    // Takes units until the value is 0.
    void drain() noexcept;
    int32_t value() noexcept;

  private:
    Semaphore() = default;
    sem_t sem_{};
};

}  // namespace zksupt::sync
