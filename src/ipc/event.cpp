#include "ipc/event.h"

#include <sched.h>

#include "ipc/registry.h"
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

bool isNamed(const EventRecord &record) noexcept
{
    return record.header.name != nullptr;
}

int32_t post(EventRecord &record) noexcept
{
    return isNamed(record) ? postSet(record.setId, 1) : record.unnamed->post(1);
}

int32_t reset(EventRecord &record) noexcept
{
    if (isNamed(record))
        return resetSet(record.setId);
    record.unnamed->drain();
    return SM_STATUS_SUCCESS;
}

int32_t value(EventRecord &record) noexcept
{
    return isNamed(record) ? setValue(record.setId) : record.unnamed->value();
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
    if (name != nullptr) {
        const uint32_t key = keyOf(record->header.name);
        if (key == 0)
            return nullptr;
        record->setId = createSet(key, manualReset == 1 ? kManualResetSetSize : 1, initial, permission);
        if (record->setId == 0)
            return nullptr;
    } else {
        record->unnamed = sync::Semaphore::create(static_cast<uint32_t>(initial));
        if (record->unnamed == nullptr)
            return nullptr;
    }
    record->manualReset = static_cast<uint16_t>(manualReset);
    record->owner = 1;
    return record.release();
}

void *openEvent(const char *name) noexcept
{
    if (name == nullptr)
        return nullptr;
    auto record = lock::buildRecord<EventRecord>(name, lock::kEventKind);
    if (!record)
        return nullptr;
    const uint32_t key = keyOf(record->header.name);
    record->setId = key != 0 ? openSet(key) : 0;
    if (record->setId == 0)
        return nullptr;
    record->manualReset = setSize(record->setId) == kManualResetSetSize ? 1 : 0;
    return record.release();
}

int32_t setEvent(void *event) noexcept
{
    int32_t status = SM_STATUS_SUCCESS;
    EventRecord *record = eventOf(event, status);
    return record != nullptr ? post(*record) : status;
}

int32_t resetEvent(void *event) noexcept
{
    int32_t status = SM_STATUS_SUCCESS;
    EventRecord *record = eventOf(event, status);
    return record != nullptr ? reset(*record) : status;
}

int32_t waitEvent(void *event, int32_t timeoutMs) noexcept
{
    int32_t status = SM_STATUS_SUCCESS;
    EventRecord *record = eventOf(event, status);
    if (record == nullptr)
        return status;
    status = isNamed(*record) ? waitSet(record->setId, timeoutMs, false) : record->unnamed->wait(timeoutMs);
    if (status != SM_STATUS_SUCCESS)
        return status;
    // A manual-reset event stays signalled for the other waiters; an
    // automatic one is consumed whole, whatever its value was.
    if (isManual(*record))
        post(*record);
    else
        reset(*record);
    return SM_STATUS_SUCCESS;
}

int32_t pulseEvent(void *event) noexcept
{
    int32_t status = SM_STATUS_SUCCESS;
    EventRecord *record = eventOf(event, status);
    if (record == nullptr)
        return status;
    if (value(*record) == 0) {
        // Blocked waiters of a manual-reset event each take a unit and put
        // it back, so set until a unit stays; an automatic event lets one
        // waiter through.
        do {
            status = post(*record);
            if (status != SM_STATUS_SUCCESS)
                return status;
            ::sched_yield();
        } while (isManual(*record) && value(*record) <= 0);
    }
    reset(*record);
    return SM_STATUS_SUCCESS;
}

void destroyEvent(void *event) noexcept
{
    int32_t status = SM_STATUS_SUCCESS;
    lock::OwnedRecord<EventRecord> record(eventOf(event, status));
    if (!record || record->owner != 1)
        return;
    if (isNamed(*record))
        removeSet(record->setId);
    else
        sync::Semaphore::destroy(record->unnamed);
}

}  // namespace zksupt::ipc
