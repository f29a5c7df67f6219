// Counting semaphores: a named one is a System V set of one semaphore whose
// key comes from the name registry; an unnamed one is a process-private
// POSIX semaphore.
#pragma once

#include <cstdint>

#include "lock/object_record.h"
#include "ipc/counted_state.h"

namespace zksupt::ipc {

// Values and counts stay below this.
inline constexpr int32_t kSemaphoreLimit = 32768;

struct SemaphoreRecord {
    lock::ObjectHeader header;  // kind 2; the key name, or null
    CountedState state;         // the set, or the unnamed semaphore
    uint32_t owner;             // 1 from create (destroy removes the set), 0 from open
};

// SMSemaphoreCreate_s: initial 0 to 32767. A named semaphore whose set
// exists already is that set, value unchanged.
void *createSemaphore(const char *name, int32_t initial, int32_t permission) noexcept;
// SMSemaphoreOpen: the set of a name, which must exist.
void *openSemaphore(const char *name) noexcept;
// SMSemaphoreAcquireWait: SUCCESS, TIMEOUT or FAILURE.
int32_t acquireSemaphore(void *semaphore, int32_t timeoutMs) noexcept;
// SMSemaphoreRelease: count 1 to 32767; previous (may be null) receives the
// value before the release.
int32_t releaseSemaphore(void *semaphore, int32_t count, int32_t *previous) noexcept;
// SMSemaphoreDestroy: only the creator's record removes the semaphore.
void destroySemaphore(void *semaphore) noexcept;

}  // namespace zksupt::ipc
