#include "ipc/semaphore_set.h"

#include <sys/sem.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>

#include <zksupt/status.h>

#include "frame/system_log.h"
#include "ipc/semaphore_list.h"
#include "lock/permission.h"

namespace zksupt::ipc {
namespace {

// The caller defines semctl's fourth argument.
union SemaphoreArgument {
    int value;
    semid_ds *status;
    unsigned short *values;
};

constexpr const char *kLogIdent = "Node Steward (Shared Library)";
constexpr const char *kNoMemoryMessage =
    "A semaphore set could not be created because the system has not enough memory for the new data structure\n";
constexpr const char *kNoSetsMessage = "A semaphore set has to be created but the system limit for the maximum "
                                       "number of semaphore sets has been exceeded\n";

void logCreationFailure(int error) noexcept
{
    // Informational, from the first source, event 0.
    if (error == ENOMEM)
        frame::appendToSystemLog(4, 1, 0, kLogIdent, kNoMemoryMessage);
    else if (error == ENOSPC)
        frame::appendToSystemLog(4, 1, 0, kLogIdent, kNoSetsMessage);
}

int32_t create(uint32_t key, int32_t count, int32_t initial, mode_t mode, bool mayRetry) noexcept
{
    const int id = ::semget(static_cast<key_t>(key), count, static_cast<int>(mode) | IPC_CREAT | IPC_EXCL);
    if (id < 0) {
        if (errno == EEXIST)
            return openSet(key);
        logCreationFailure(errno);
        return 0;
    }
    if (id == 0) {
        // Identifier 0 means no set: give it back, keep its slot taken by a
        // placeholder while creating again, then drop the placeholder.
        ::semctl(0, 0, IPC_RMID);
        if (!mayRetry)
            return 0;
        const int placeholder = ::semget(IPC_PRIVATE, 1, IPC_CREAT | IPC_EXCL | 0600);
        const int32_t again = create(key, count, initial, mode, false);
        if (placeholder > 0)
            ::semctl(placeholder, 0, IPC_RMID);
        return again;
    }
    SemaphoreArgument argument{};
    argument.value = initial;
    ::semctl(id, 0, SETVAL, argument);
    if (key == 0)
        recordPrivateSet(id);
    return id;
}

int64_t millisecondsSince(const timeval &start) noexcept
{
    timeval now{};
    ::gettimeofday(&now, nullptr);
    return (static_cast<int64_t>(now.tv_sec) - start.tv_sec) * 1000 + (now.tv_usec - start.tv_usec) / 1000;
}

}  // namespace

int32_t createSet(uint32_t key, int32_t count, int32_t initial, int32_t permission) noexcept
{
    return create(key, count, initial, lock::modeOfPermission(permission), true);
}

int32_t openSet(uint32_t key) noexcept
{
    const int id = ::semget(static_cast<key_t>(key), 0, 0600);
    return id > 0 ? id : 0;
}

void removeSet(int32_t id) noexcept
{
    if (id != 0 && ::semctl(id, 0, IPC_RMID) == 0)
        forgetSet(id);
}

int32_t waitSet(int32_t id, int32_t timeoutMs, bool undo) noexcept
{
    if (id == 0)
        return SM_STATUS_FAILURE;
    sembuf operation{0, -1, static_cast<short>(undo ? SEM_UNDO : 0)};
    if (timeoutMs == -1) {
        while (::semop(id, &operation, 1) != 0) {
            if (errno != EINTR)
                return SM_STATUS_FAILURE;
        }
        return SM_STATUS_SUCCESS;
    }
    if (timeoutMs == 0)
        operation.sem_flg |= IPC_NOWAIT;
    timeval start{};
    ::gettimeofday(&start, nullptr);
    int64_t remaining = timeoutMs;
    for (;;) {
        const timespec wait{static_cast<time_t>(remaining / 1000), static_cast<long>(remaining % 1000) * 1000000};
        if (::semtimedop(id, &operation, 1, &wait) == 0)
            return SM_STATUS_SUCCESS;
        if (errno == EAGAIN)
            return SM_STATUS_TIMEOUT;
        if (errno != EINTR)
            return SM_STATUS_FAILURE;
        const int64_t elapsed = millisecondsSince(start);
        if (elapsed >= timeoutMs)
            return SM_STATUS_TIMEOUT;
        remaining = timeoutMs - elapsed;
    }
}

int32_t postSet(int32_t id, uint32_t count) noexcept
{
    if (id == 0)
        return SM_STATUS_FAILURE;
    sembuf operation{0, 1, IPC_NOWAIT};
    for (uint32_t i = 0; i < count; ++i) {
        while (::semop(id, &operation, 1) != 0) {
            if (errno != EINTR)
                return SM_STATUS_FAILURE;
        }
    }
    return SM_STATUS_SUCCESS;
}

int32_t resetSet(int32_t id) noexcept
{
    SemaphoreArgument argument{};
    argument.value = 0;
    return ::semctl(id, 0, SETVAL, argument) == 0 ? SM_STATUS_SUCCESS : SM_STATUS_FAILURE;
}

int32_t setValue(int32_t id) noexcept
{
    return ::semctl(id, 0, GETVAL);
}

int32_t setSize(int32_t id) noexcept
{
    semid_ds status{};
    SemaphoreArgument argument{};
    argument.status = &status;
    if (::semctl(id, 0, IPC_STAT, argument) != 0)
        return -1;
    return static_cast<int32_t>(status.sem_nsems);
}

}  // namespace zksupt::ipc
