// Events, signalled or not, with manual or automatic reset. A named event
// is a System V set whose semaphore 0 holds the state (0 not signalled,
// above 0 signalled) and whose size holds the mode: 2 semaphores for manual
// reset, 1 for automatic, so an opener learns the mode from the set itself.
// An unnamed event is a process-private POSIX semaphore.
#pragma once

#include <cstdint>

#include "lock/object_record.h"
#include "ipc/counted_state.h"

namespace zksupt::ipc {

struct EventRecord {
    lock::ObjectHeader header;  // kind 4; the key name, or null
    CountedState state;         // the set, or the unnamed semaphore
    uint16_t owner;             // 1 from create (destroy removes the event), 0 from open
    uint16_t manualReset;       // 1 manual reset, any other value automatic
};

// SMEventCreate_s: manualReset 1 makes a manual-reset event, signalled 1 an
// initially signalled one. A named event whose set exists already is that
// set, state unchanged. Null when a name gets no key or on any failure.
void *createEvent(const char *name, int32_t manualReset, int32_t signalled, int32_t permission) noexcept;
// SMEventOpen: the existing event of a name, its mode read from its set.
void *openEvent(const char *name) noexcept;
// SMEventSet: one more unit; setting twice leaves the value at 2.
int32_t setEvent(void *event) noexcept;
// SMEventReset: the value back to 0.
int32_t resetEvent(void *event) noexcept;
// SMEventWait: takes a unit within the time-out, then sets a manual-reset
// event again and resets an automatic one, so one wait consumes the whole
// signal. SUCCESS, TIMEOUT or FAILURE.
int32_t waitEvent(void *event, int32_t timeoutMs) noexcept;
// SMEventPulse: lets waiters already blocked through, then leaves the
// event not signalled.
int32_t pulseEvent(void *event) noexcept;
// SMEventDestroy: only the creator's record removes the event. Null and
// other kinds are ignored.
void destroyEvent(void *event) noexcept;

}  // namespace zksupt::ipc
