#include "ipc/shared_memory.h"

#include <sys/shm.h>

#include <cerrno>

#include "ipc/registry.h"
#include "ipc/semaphore_set.h"
#include "lock/permission.h"

namespace zksupt::ipc {
namespace {

// What a create or open has set up so far, undone when it fails: the
// segment (removed, also one that was only opened, so that a segment this
// process cannot attach does not stay), the attachment and a guard set made
// by this call.
class Setup {
  public:
    Setup() = default;
    Setup(const Setup &) = delete;
    Setup &operator=(const Setup &) = delete;
    ~Setup()
    {
        if (kept_)
            return;
        if (address_ != nullptr)
            ::shmdt(address_);
        if (segmentId_ >= 0)
            ::shmctl(segmentId_, IPC_RMID, nullptr);
        removeSet(newGuardId_);
    }

    void segment(int id) noexcept { segmentId_ = id; }
    void attached(void *address) noexcept { address_ = address; }
    void newGuard(int32_t id) noexcept { newGuardId_ = id; }
    void keep() noexcept { kept_ = true; }

  private:
    int segmentId_ = -1;
    void *address_ = nullptr;
    int32_t newGuardId_ = 0;
    bool kept_ = false;
};

// True when the guard can be taken at once, that is no live creator holds
// it; it is given back straight away.
bool guardIsFree(int32_t guardId) noexcept
{
    if (waitSet(guardId, 0, false) != SM_STATUS_SUCCESS)
        return false;
    postSet(guardId, 1);
    return true;
}

// Attaches the segment anywhere; null when it cannot be.
void *attach(int segmentId) noexcept
{
    void *address = ::shmat(segmentId, nullptr, 0);
    return address != reinterpret_cast<void *>(-1) ? address : nullptr;
}

}  // namespace

void *createSharedMemory(const char *name, uint32_t size, int32_t permission) noexcept
{
    auto record = lock::buildNamedRecord<SharedMemoryRecord>(name, lock::kSharedMemoryKind);
    if (!record)
        return nullptr;
    // Without a key the segment and its guard are private to this record
    // (the guard set is then listed as this process's).
    const uint32_t key = keyOf(record->header.name);
    record->guardId = key != 0 ? openSet(key) : 0;
    if (record->guardId != 0 && !guardIsFree(record->guardId))
        return nullptr;  // its creator is alive

    Setup setup;
    const int mode = static_cast<int>(lock::modeOfPermission(permission));
    record->segmentId = ::shmget(static_cast<key_t>(key), size, mode | IPC_CREAT | IPC_EXCL);
    if (record->segmentId >= 0) {
        record->creator = 1;
    } else {
        // A segment whose creator has ended is adopted as it is.
        if (errno != EEXIST || record->guardId == 0)
            return nullptr;
        record->segmentId = ::shmget(static_cast<key_t>(key), 0, 0600);
        if (record->segmentId < 0)
            return nullptr;
    }
    setup.segment(record->segmentId);
    record->address = attach(record->segmentId);
    if (record->address == nullptr)
        return nullptr;
    setup.attached(record->address);
    if (record->guardId == 0) {
        record->guardId = createSet(key, 1, 1, 0);
        if (record->guardId == 0)
            return nullptr;
        setup.newGuard(record->guardId);
    }
    // Held until the record is freed or this process ends.
    if (waitSet(record->guardId, -1, true) != SM_STATUS_SUCCESS)
        return nullptr;
    setup.keep();
    return record.release();
}

void *openSharedMemory(const char *name) noexcept
{
    auto record = lock::buildNamedRecord<SharedMemoryRecord>(name, lock::kSharedMemoryKind);
    if (!record)
        return nullptr;
    const uint32_t key = keyOf(record->header.name);
    if (key == 0)
        return nullptr;  // a private segment cannot be found by name
    record->guardId = openSet(key);
    if (record->guardId != 0 && guardIsFree(record->guardId))
        return nullptr;  // no live creator holds the segment
    record->segmentId = ::shmget(static_cast<key_t>(key), 0, 0600);
    if (record->segmentId < 0)
        return nullptr;
    Setup setup;
    setup.segment(record->segmentId);
    record->address = attach(record->segmentId);
    if (record->address == nullptr)
        return nullptr;
    setup.keep();
    return record.release();
}

void *sharedMemoryAddress(void *sharedMemory) noexcept
{
    int32_t status = SM_STATUS_SUCCESS;
    SharedMemoryRecord *record = lock::recordOf<SharedMemoryRecord>(sharedMemory, lock::kSharedMemoryKind, status);
    return record != nullptr ? record->address : nullptr;
}

void freeSharedMemory(void *sharedMemory) noexcept
{
    int32_t status = SM_STATUS_SUCCESS;
    lock::OwnedRecord<SharedMemoryRecord> record(
        lock::recordOf<SharedMemoryRecord>(sharedMemory, lock::kSharedMemoryKind, status));
    if (!record)
        return;
    ::shmdt(record->address);
    if (record->creator != 1)
        return;
    ::shmctl(record->segmentId, IPC_RMID, nullptr);
    record->segmentId = -1;
    postSet(record->guardId, 1);
    removeSet(record->guardId);
}

}  // namespace zksupt::ipc
