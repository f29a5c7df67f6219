#include "ipc/semaphore.h"

namespace zksupt::ipc {

void *createSemaphore(const char *name, int32_t initial, int32_t permission) noexcept
{
    if (initial < 0 || initial >= kSemaphoreLimit)
        return nullptr;
    auto record = lock::buildRecord<SemaphoreRecord>(name, lock::kSemaphoreKind);
    if (!record)
        return nullptr;
    if (!record->state.create(record->header.name, 1, initial, permission))
        return nullptr;
    record->owner = 1;
    return record.release();
}

void *openSemaphore(const char *name) noexcept
{
    auto record = lock::buildNamedRecord<SemaphoreRecord>(name, lock::kSemaphoreKind);
    if (!record)
        return nullptr;
    return record->state.open(record->header.name) ? record.release() : nullptr;
}

int32_t acquireSemaphore(void *semaphore, int32_t timeoutMs) noexcept
{
    int32_t status = SM_STATUS_SUCCESS;
    SemaphoreRecord *record = lock::recordOf<SemaphoreRecord>(semaphore, lock::kSemaphoreKind, status);
    if (record == nullptr)
        return status;
    return record->state.wait(timeoutMs);
}

int32_t releaseSemaphore(void *semaphore, int32_t count, int32_t *previous) noexcept
{
    if (semaphore == nullptr || count < 1 || count >= kSemaphoreLimit)
        return SM_STATUS_INVALID_PARAMETER;
    int32_t status = SM_STATUS_SUCCESS;
    SemaphoreRecord *record = lock::recordOf<SemaphoreRecord>(semaphore, lock::kSemaphoreKind, status);
    if (record == nullptr)
        return status;
    if (previous != nullptr)
        *previous = record->state.value();
    return record->state.post(static_cast<uint32_t>(count));
}

void destroySemaphore(void *semaphore) noexcept
{
    int32_t status = SM_STATUS_SUCCESS;
    lock::OwnedRecord<SemaphoreRecord> record(lock::recordOf<SemaphoreRecord>(semaphore, lock::kSemaphoreKind, status));
    if (!record || record->owner != 1)
        return;
    record->state.remove();
}

}  // namespace zksupt::ipc
