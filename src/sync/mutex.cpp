#include "sync/mutex.h"

#include <zksupt/status.h>

#include "sync/poll_counter.h"

namespace zksupt::sync {

int32_t Mutex::lock(int32_t timeoutMs) noexcept
{
    if (timeoutMs == -1)
        return ::pthread_mutex_lock(&mutex_) == 0 ? SM_STATUS_SUCCESS : SM_STATUS_FAILURE;
    PollCounter counter(timeoutMs);
    while (::pthread_mutex_trylock(&mutex_) != 0) {
        if (counter.expired())
            return SM_STATUS_TIMEOUT;
    }
    return SM_STATUS_SUCCESS;
}

}  // namespace zksupt::sync
