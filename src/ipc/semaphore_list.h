// "Semaphore List": the private System V semaphore sets (key 0) with the
// process that made each, so that sets left by ended processes are removed.
#pragma once

#include <cstdint>

namespace zksupt::ipc {

// Records a private set as owned by the calling process.
void recordPrivateSet(int32_t id) noexcept;
// Deletes a set's entry.
void forgetSet(int32_t id) noexcept;
// Removes each listed set whose owner has no process directory any more,
// and its entry. Entries of running owners, and of sets that cannot be
// removed, stay.
void removeStaleSets() noexcept;

}  // namespace zksupt::ipc
