#include "lock/record_lock.h"

#include <cerrno>

#include <zksupt/status.h>

#include "sync/poll_counter.h"

namespace zksupt::lock {
namespace {

struct flock wholeFile(short type) noexcept
{
    struct flock lock {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = 0;
    lock.l_len = 0;
    return lock;
}

}  // namespace

RecordLockResult lockWholeFile(int fd, short type, int32_t timeoutMs) noexcept
{
    struct flock lock = wholeFile(type);
    const int command = timeoutMs == -1 ? F_SETLKW : F_SETLK;
    sync::PollCounter counter(timeoutMs);
    while (::fcntl(fd, command, &lock) != 0) {
        switch (errno) {
        case EAGAIN:
        case EACCES:
            if (counter.expired())
                return {SM_STATUS_TIMEOUT, false};
            break;
        case EINTR:
        case EDEADLK:
            break;
        case EBADF:
            return {SM_STATUS_FAILURE, true};
        default:
            return {SM_STATUS_FAILURE, false};
        }
    }
    return {SM_STATUS_SUCCESS, false};
}

void unlockWholeFile(int fd) noexcept
{
    struct flock lock = wholeFile(F_UNLCK);
    while (::fcntl(fd, F_SETLKW, &lock) != 0 && errno == EINTR) {
    }
}

}  // namespace zksupt::lock
