// System V semaphore sets: the cross-process state of named semaphores,
// events and shared-memory guards. Identifiers are never 0: the library
// reserves 0 to mean no set.
#pragma once

#include <cstdint>

namespace zksupt::ipc {

// A set of count semaphores for key (0 for a private set) with semaphore 0
// at initial, or the existing set of the key, whose value is left as it is.
// A new private set is recorded in "Semaphore List". 0 on failure; running
// out of semaphore memory or sets is written to the system log.
int32_t createSet(uint32_t key, int32_t count, int32_t initial, int32_t permission) noexcept;
// The existing set of key, or 0.
int32_t openSet(uint32_t key) noexcept;
// Removes the set and its "Semaphore List" entry; 0 is ignored.
void removeSet(int32_t id) noexcept;

// Takes one unit of semaphore 0: time-out -1 waits without limit, 0 tries
// once, else waits that many milliseconds. With undo the kernel gives the
// unit back when the process ends. SUCCESS, TIMEOUT or FAILURE.
int32_t waitSet(int32_t id, int32_t timeoutMs, bool undo) noexcept;
// Adds count units to semaphore 0, one at a time. SUCCESS or FAILURE.
int32_t postSet(int32_t id, uint32_t count) noexcept;
// Sets semaphore 0 to 0.
int32_t resetSet(int32_t id) noexcept;
// The value of semaphore 0, -1 on failure.
int32_t setValue(int32_t id) noexcept;
// The number of semaphores in the set, -1 on failure.
int32_t setSize(int32_t id) noexcept;

}  // namespace zksupt::ipc
