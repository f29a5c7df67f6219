#include "sync/semaphore.h"

#include <sys/time.h>

#include <cerrno>
#include <new>

#include <zksupt/status.h>

namespace zksupt::sync {
namespace {

// Now plus timeoutMs on the clock sem_timedwait reads.
timespec deadlineAfter(int32_t timeoutMs) noexcept
{
    timeval now{};
    ::gettimeofday(&now, nullptr);
    int64_t nanoseconds = static_cast<int64_t>(now.tv_usec) * 1000 + static_cast<int64_t>(timeoutMs % 1000) * 1000000;
    timespec deadline{};
    deadline.tv_sec = now.tv_sec + timeoutMs / 1000 + nanoseconds / 1000000000;
    deadline.tv_nsec = static_cast<long>(nanoseconds % 1000000000);
    return deadline;
}

}  // namespace

Semaphore *Semaphore::create(uint32_t initial) noexcept
{
    auto *semaphore = new (std::nothrow) Semaphore;
    if (semaphore == nullptr)
        return nullptr;
    if (::sem_init(&semaphore->sem_, 0, initial) != 0) {
        delete semaphore;
        return nullptr;
    }
    return semaphore;
}

void Semaphore::destroy(Semaphore *semaphore) noexcept
{
    if (semaphore == nullptr)
        return;
    ::sem_destroy(&semaphore->sem_);
    delete semaphore;
}

int32_t Semaphore::wait(int32_t timeoutMs) noexcept
{
    if (timeoutMs == -1) {
        while (::sem_wait(&sem_) != 0) {
            if (errno != EINTR)
                return SM_STATUS_FAILURE;
        }
        return SM_STATUS_SUCCESS;
    }
    const timespec deadline = deadlineAfter(timeoutMs < 0 ? 0 : timeoutMs);
    while (::sem_timedwait(&sem_, &deadline) != 0) {
        if (errno == ETIMEDOUT)
            return SM_STATUS_TIMEOUT;
        if (errno != EINTR)
            return SM_STATUS_FAILURE;
    }
    return SM_STATUS_SUCCESS;
}

int32_t Semaphore::post(uint32_t count) noexcept
{
    for (uint32_t i = 0; i < count; ++i) {
        while (::sem_post(&sem_) != 0) {
            if (errno != EINTR)
                return SM_STATUS_FAILURE;
        }
    }
    return SM_STATUS_SUCCESS;
}

void Semaphore::drain() noexcept
{
    int value = 0;
    while (::sem_getvalue(&sem_, &value) == 0 && value > 0)
        ::sem_trywait(&sem_);
}

int32_t Semaphore::value() noexcept
{
    int value = 0;
    ::sem_getvalue(&sem_, &value);
    return value;
}

}  // namespace zksupt::sync
