#include "ipc/event.h"

#include <sched.h>

#include "ipc/semaphore_set.h"

namespace zksupt::ipc {
namespace {

// A manual-reset event's set carries a second, unused semaphore: the size
// of the set is the mode.
constexpr int32_t kManualResetSetSize = 2;

bool isManual(const EventRecord &record) noexcept
{
    return record.manualReset == 1;
}

EventRecord *eventOf(void *event, int32_t &status) noexcept
{
    return lock::recordOf<EventRecord>(event, lock::kEventKind, status);
}

}  // namespace

void *createEvent(const char *name, int32_t manualReset, int32_t signalled, int32_t permission) noexcept
{
    auto record = lock::buildRecord<EventRecord>(name, lock::kEventKind);
    if (!record)
        return nullptr;
    const int32_t initial = signalled == 1 ? 1 : 0;
    if (!record->state.create(record->header.name, manualReset == 1 ? kManualResetSetSize : 1, initial, permission))
        return nullptr;
    record->manualReset = static_cast<uint16_t>(manualReset);
    record->owner = 1;
    return record.release();
}

void *openEvent(const char *name) noexcept
{
    auto record = lock::buildNamedRecord<EventRecord>(name, lock::kEventKind);
    if (!record)
        return nullptr;
    if (!record->state.open(record->header.name))
        return nullptr;
    record->manualReset = setSize(record->state.setId) == kManualResetSetSize ? 1 : 0;
    return record.release();
}

int32_t setEvent(void *event) noexcept
{
    int32_t status = SM_STATUS_SUCCESS;
    EventRecord *record = eventOf(event, status);
    return record != nullptr ? record->state.post(1) : status;
}

int32_t resetEvent(void *event) noexcept
{
    int32_t status = SM_STATUS_SUCCESS;
    EventRecord *record = eventOf(event, status);
    return record != nullptr ? record->state.reset() : status;
}

int32_t waitEvent(void *event, int32_t timeoutMs) noexcept
{
    int32_t status = SM_STATUS_SUCCESS;
    EventRecord *record = eventOf(event, status);
    if (record == nullptr)
        return status;
    status = record->state.wait(timeoutMs);
    if (status != SM_STATUS_SUCCESS)
        return status;
    // A manual-reset event stays signalled for the other waiters; an
    // automatic one is consumed whole, whatever its value was.
    if (isManual(*record))
        record->state.post(1);
    else
        record->state.reset();
    return SM_STATUS_SUCCESS;
}

int32_t pulseEvent(void *event) noexcept
{
    int32_t status = SM_STATUS_SUCCESS;
    EventRecord *record = eventOf(event, status);
    if (record == nullptr)
        return status;
    if (record->state.value() == 0) {
        // Blocked waiters of a manual-reset event each take a unit and put
        // it back, so set until a unit stays; an automatic event lets one
        // waiter through.
        do {
            status = record->state.post(1);
            if (status != SM_STATUS_SUCCESS)
                return status;
            ::sched_yield();
        } while (isManual(*record) && record->state.value() <= 0);
    }
    record->state.reset();
    return SM_STATUS_SUCCESS;
}

void destroyEvent(void *event) noexcept
{
    int32_t status = SM_STATUS_SUCCESS;
    lock::OwnedRecord<EventRecord> record(eventOf(event, status));
    if (!record || record->owner != 1)
        return;
    record->state.remove();
}

}  // namespace zksupt::ipc
