#include "ipc/semaphore.h"

#include "ipc/registry.h"
#include "ipc/semaphore_set.h"

namespace zksupt::ipc {

void *createSemaphore(const char *name, int32_t initial, int32_t permission) noexcept
{
    if (initial < 0 || initial >= kSemaphoreLimit)
        return nullptr;
    auto record = lock::buildRecord<SemaphoreRecord>(name, lock::kSemaphoreKind);
    if (!record)
        return nullptr;
    if (name != nullptr) {
        const uint32_t key = keyOf(record->header.name);
        if (key == 0)
            return nullptr;
        record->setId = createSet(key, 1, initial, permission);
        if (record->setId == 0)
            return nullptr;
    } else {
        record->unnamed = sync::Semaphore::create(static_cast<uint32_t>(initial));
        if (record->unnamed == nullptr)
            return nullptr;
    }
    record->owner = 1;
    return record.release();
}

void *openSemaphore(const char *name) noexcept
{
    if (name == nullptr)
        return nullptr;
    auto record = lock::buildRecord<SemaphoreRecord>(name, lock::kSemaphoreKind);
    if (!record)
        return nullptr;
    const uint32_t key = keyOf(record->header.name);
    record->setId = key != 0 ? openSet(key) : 0;
    return record->setId != 0 ? record.release() : nullptr;
}

int32_t acquireSemaphore(void *semaphore, int32_t timeoutMs) noexcept
{
    int32_t status = SM_STATUS_SUCCESS;
    SemaphoreRecord *record = lock::recordOf<SemaphoreRecord>(semaphore, lock::kSemaphoreKind, status);
    if (record == nullptr)
        return status;
    return record->header.name != nullptr ? waitSet(record->setId, timeoutMs, false) : record->unnamed->wait(timeoutMs);
}

int32_t releaseSemaphore(void *semaphore, int32_t count, int32_t *previous) noexcept
{
    if (semaphore == nullptr || count < 1 || count >= kSemaphoreLimit)
        return SM_STATUS_INVALID_PARAMETER;
    int32_t status = SM_STATUS_SUCCESS;
    SemaphoreRecord *record = lock::recordOf<SemaphoreRecord>(semaphore, lock::kSemaphoreKind, status);
    if (record == nullptr)
        return status;
    const bool named = record->header.name != nullptr;
    if (previous != nullptr)
        *previous = named ? setValue(record->setId) : record->unnamed->value();
    return named ? postSet(record->setId, static_cast<uint32_t>(count))
                 : record->unnamed->post(static_cast<uint32_t>(count));
}

void destroySemaphore(void *semaphore) noexcept
{
    int32_t status = SM_STATUS_SUCCESS;
    lock::OwnedRecord<SemaphoreRecord> record(lock::recordOf<SemaphoreRecord>(semaphore, lock::kSemaphoreKind, status));
    if (!record || record->owner != 1)
        return;
    if (record->header.name != nullptr)
        removeSet(record->setId);
    else
        sync::Semaphore::destroy(record->unnamed);
}

}  // namespace zksupt::ipc
