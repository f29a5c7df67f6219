#include "os/threads.h"

#include <sched.h>
#include <signal.h>
#include <sys/prctl.h>

#include <memory>

#include <zksupt/status.h>

#include "frame/owned.h"

namespace zksupt::os {
namespace {

struct RecordDeleter {
    void operator()(SMThread *record) const noexcept
    {
        std::free(record->status);
        std::free(record);
    }
};
using Record = std::unique_ptr<SMThread, RecordDeleter>;

// A record and its status word, both from the C allocator; null when either
// allocation fails.
Record newRecord(SMThreadRoutine routine, void *argument) noexcept
{
    frame::Owned<SMThread> record = frame::allocateOwned<SMThread>(sizeof(SMThread));
    frame::Owned<int32_t> status = frame::allocateOwned<int32_t>(sizeof(int32_t));
    if (!record || !status)
        return nullptr;
    *status = 0;
    *record = SMThread{routine, argument, pthread_t{}, status.release()};
    return Record(record.release());
}

// The attributes every caller thread is made with: the library's stack size
// and, when asked, detached. When the attributes cannot be made the thread
// gets the defaults.
class ThreadAttributes {
  public:
    explicit ThreadAttributes(bool detached) noexcept : made_(::pthread_attr_init(&attributes_) == 0)
    {
        if (!made_)
            return;
        ::pthread_attr_setstacksize(&attributes_, kThreadStackSize);
        detached_ = detached && ::pthread_attr_setdetachstate(&attributes_, PTHREAD_CREATE_DETACHED) == 0;
    }
    ~ThreadAttributes()
    {
        if (made_)
            ::pthread_attr_destroy(&attributes_);
    }
    ThreadAttributes(const ThreadAttributes &) = delete;
    ThreadAttributes &operator=(const ThreadAttributes &) = delete;

    const pthread_attr_t *get() const noexcept { return made_ ? &attributes_ : nullptr; }
    bool detached() const noexcept { return detached_; }

  private:
    pthread_attr_t attributes_{};
    bool made_;
    bool detached_ = false;
};

// Runs a joinable thread's routine; its result is always 0 (null), whatever
// the routine did.
void *runJoinable(void *argument)
{
    const SMThread *record = static_cast<const SMThread *>(argument);
    record->routine(record->argument);
    return nullptr;
}

// Runs a detached thread's routine after freeing the record nobody else holds.
void *runReleased(void *argument)
{
    Record record(static_cast<SMThread *>(argument));
    const SMThreadRoutine routine = record->routine;
    void *const routineArgument = record->argument;
    record.reset();
    routine(routineArgument);
    return nullptr;
}

}  // namespace

SMThread *startThread(SMThreadRoutine routine, void *argument) noexcept
{
    if (routine == nullptr)
        return nullptr;
    Record record = newRecord(routine, argument);
    if (!record)
        return nullptr;
    const ThreadAttributes attributes(false);
    if (::pthread_create(&record->thread, attributes.get(), runJoinable, record.get()) != 0)
        return nullptr;
    return record.release();
}

int32_t startReleasedThread(SMThreadRoutine routine, void *argument) noexcept
{
    if (routine == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    Record record = newRecord(routine, argument);
    if (!record)
        return SM_STATUS_FAILURE;
    const ThreadAttributes attributes(true);
    // The thread may free the record at once, so its ID goes to a local.
    pthread_t thread{};
    if (::pthread_create(&thread, attributes.get(), runReleased, record.get()) != 0)
        return SM_STATUS_FAILURE;
    record.release();
    if (!attributes.detached())
        ::pthread_detach(thread);
    return SM_STATUS_SUCCESS;
}

int32_t stopThread(SMThread *thread) noexcept
{
    if (thread == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    const Record record(thread);
    return ::pthread_join(record->thread, nullptr) == 0 ? SM_STATUS_SUCCESS : SM_STATUS_FAILURE;
}

int32_t killThread(SMThread *thread) noexcept
{
    if (thread == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    const Record record(thread);
    return ::pthread_kill(record->thread, SIGKILL) == 0 ? SM_STATUS_SUCCESS : SM_STATUS_FAILURE;
}

int32_t yieldThread() noexcept
{
    return ::sched_yield();
}

pthread_t currentThreadId() noexcept
{
    return ::pthread_self();
}

int32_t nameCurrentThread(const char *name) noexcept
{
    if (name == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    return ::prctl(PR_SET_NAME, name, 0, 0, 0) == 0 ? SM_STATUS_SUCCESS : SM_STATUS_FAILURE;
}

}  // namespace zksupt::os
