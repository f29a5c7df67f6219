// The counting state behind semaphores and events: a System V set named by
// the object's key name, shared by every process that names it, or a
// process-private POSIX semaphore when the object has no name.
#pragma once

#include <cstdint>

#include "sync/semaphore.h"

namespace zksupt::ipc {

struct CountedState {
    int32_t setId = 0;                   // named: the System V set
    sync::Semaphore *unnamed = nullptr;  // unnamed: the POSIX semaphore

    // Makes the state: for a key name a set of setSize semaphores (an
    // existing set of that key is taken as it is), else a POSIX semaphore.
    // False when nothing could be made, also when the key name gets no key.
    bool create(const char *keyName, int32_t setSize, int32_t initial, int32_t permission) noexcept;
    // The existing set of the key name; false when there is none.
    bool open(const char *keyName) noexcept;
    // Removes the set (and its "Semaphore List" entry) or frees the POSIX
    // semaphore.
    void remove() noexcept;

    // Semaphore 0 of the set, or the POSIX semaphore: a wait takes one unit
    // (SUCCESS, TIMEOUT or FAILURE), post adds count units, reset drains to 0.
    int32_t wait(int32_t timeoutMs) noexcept;
    int32_t post(uint32_t count) noexcept;
    int32_t reset() noexcept;
    int32_t value() noexcept;
};

}  // namespace zksupt::ipc
