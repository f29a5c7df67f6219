#include "ipc/mutex.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>

#include "lock/permission.h"
#include "lock/record_lock.h"

namespace zksupt::ipc {
namespace {

using OwnedMutex = lock::OwnedRecord<MutexRecord>;

// Opens the lock file for writing if allowed, else for reading, which then
// takes shared record locks: a file another user made read-only for us
// still works, shared among such processes.
bool openLockFile(MutexRecord &record, bool create, mode_t mode) noexcept
{
    const char *path = record.header.name;
    const int extra = create ? O_CREAT : 0;
    const bool existed = !create || ::access(path, F_OK) == 0;
    record.fd = ::open(path, O_WRONLY | O_CLOEXEC | extra, mode);
    record.lockType = 1;
    if (record.fd >= 0) {
        if (!existed)
            ::fchmod(record.fd, mode);  // the mode as given, whatever the umask
        return true;
    }
    record.fd = ::open(path, O_RDONLY | O_CLOEXEC | extra, mode);
    record.lockType = 0;
    return record.fd >= 0;
}

void *makeMutex(const char *name, bool create, int32_t permission) noexcept
{
    OwnedMutex record = lock::buildRecord<MutexRecord>(name, lock::kMutexKind);
    if (!record)
        return nullptr;
    record->fd = -1;
    std::unique_ptr<sync::Mutex> mutex(new (std::nothrow) sync::Mutex);
    if (!mutex)
        return nullptr;
    if (name != nullptr && !openLockFile(*record, create, lock::modeOfPermission(permission)))
        return nullptr;
    record->threadMutex = mutex.release();
    return record.release();
}

// The record lock, reopening a lock file whose descriptor was closed.
int32_t lockRecord(MutexRecord &record, int32_t timeoutMs) noexcept
{
    const short type = record.lockType == 1 ? F_WRLCK : F_RDLCK;
    for (;;) {
        const lock::RecordLockResult result = lock::lockWholeFile(record.fd, type, timeoutMs);
        if (!result.badDescriptor)
            return result.status;
        record.fd = ::open(record.header.name, (record.lockType == 1 ? O_WRONLY : O_RDONLY) | O_CLOEXEC);
        if (record.fd < 0)
            return SM_STATUS_FAILURE;
    }
}

}  // namespace

void *createMutex(const char *name, int32_t permission) noexcept
{
    return makeMutex(name, true, permission);
}

void *openMutex(const char *name) noexcept
{
    return name != nullptr ? makeMutex(name, false, 0) : nullptr;
}

int32_t lockMutex(void *mutex, int32_t timeoutMs) noexcept
{
    int32_t status = SM_STATUS_SUCCESS;
    MutexRecord *record = lock::recordOf<MutexRecord>(mutex, lock::kMutexKind, status);
    if (record == nullptr)
        return status;
    status = record->threadMutex->lock(timeoutMs);
    if (status != SM_STATUS_SUCCESS || record->header.name == nullptr)
        return status;
    status = lockRecord(*record, timeoutMs);
    if (status != SM_STATUS_SUCCESS)
        record->threadMutex->unlock();
    return status;
}

int32_t unlockMutex(void *mutex) noexcept
{
    int32_t status = SM_STATUS_SUCCESS;
    MutexRecord *record = lock::recordOf<MutexRecord>(mutex, lock::kMutexKind, status);
    if (record == nullptr)
        return status;
    if (record->header.name != nullptr)
        lock::unlockWholeFile(record->fd);
    record->threadMutex->unlock();
    return SM_STATUS_SUCCESS;
}

void destroyMutex(void *mutex) noexcept
{
    int32_t status = SM_STATUS_SUCCESS;
    OwnedMutex record(lock::recordOf<MutexRecord>(mutex, lock::kMutexKind, status));
    if (!record)
        return;
    if (record->fd >= 0)
        ::close(record->fd);
    delete record->threadMutex;
}

}  // namespace zksupt::ipc
