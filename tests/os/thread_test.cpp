// Caller threads: start and join, detached threads, names, the thread kill
// that ends the process, and refused arguments.
#include <gtest/gtest.h>

#include <pthread.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <string>
#include <thread>

#include <zksupt/os.h>
#include <zksupt/status.h>

#include "support/child.h"

namespace {

constexpr auto kBound = std::chrono::seconds(60);

// What a test thread saw of itself; it then waits until the test lets it go.
struct Worker {
    const char *name = nullptr;
    std::mutex mutex;
    std::condition_variable changed;
    bool started = false, released = false;
    pid_t tid = 0;
    std::size_t stackSize = 0;
    int detachState = -1;

    bool waitStarted()
    {
        std::unique_lock<std::mutex> lock(mutex);
        return changed.wait_for(lock, kBound, [this] { return started; });
    }
    void release()
    {
        const std::lock_guard<std::mutex> lock(mutex);
        released = true;
        changed.notify_all();
    }
};

void work(void *argument)
{
    auto *worker = static_cast<Worker *>(argument);
    if (worker->name != nullptr && SMThreadSetName(worker->name) != SM_STATUS_SUCCESS)
        return;
    pthread_attr_t attributes;
    std::unique_lock<std::mutex> lock(worker->mutex);
    if (pthread_getattr_np(SMThreadGetID(), &attributes) == 0) {
        pthread_attr_getstacksize(&attributes, &worker->stackSize);
        pthread_attr_getdetachstate(&attributes, &worker->detachState);
        pthread_attr_destroy(&attributes);
    }
    worker->tid = static_cast<pid_t>(syscall(SYS_gettid));
    worker->started = true;
    worker->changed.notify_all();
    worker->changed.wait_for(lock, kBound, [worker] { return worker->released; });
}

std::string taskDirectory(pid_t tid)
{
    return "/proc/self/task/" + std::to_string(tid);
}

TEST(Threads, StartedThreadIsNamedJoinableWithTheLibraryStackAndStopJoinsIt)
{
    Worker worker;
    worker.name = "zksupt-worker-with-a-long-name";
    SMThread *thread = SMThreadStart(work, &worker);
    ASSERT_NE(thread, nullptr);
    ASSERT_TRUE(worker.waitStarted());
#if defined(__SANITIZE_THREAD__)
    EXPECT_GE(worker.stackSize, 0x20000u);  // the thread sanitizer enlarges every stack
#else
    EXPECT_EQ(worker.stackSize, 0x20000u);
#endif
    EXPECT_EQ(worker.detachState, PTHREAD_CREATE_JOINABLE);
    int named = 0;  // the kernel keeps 15 bytes of the name
    for (const auto &task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::string comm;
        std::getline(std::ifstream(task.path() / "comm"), comm);
        named += comm == "zksupt-worker-w" ? 1 : 0;
    }
    EXPECT_EQ(named, 1);
    worker.release();
    EXPECT_EQ(SMThreadStop(thread), SM_STATUS_SUCCESS);
    EXPECT_FALSE(std::filesystem::exists(taskDirectory(worker.tid)));
}

TEST(Threads, ReleasedThreadIsDetachedAndEndsOnItsOwn)
{
    // Nothing tells when a detached thread is done with its worker, so the
    // worker outlives the test rather than sit on a stack used again later.
    static Worker worker;
    ASSERT_EQ(SMThreadStartAndRelease(work, &worker), SM_STATUS_SUCCESS);
    ASSERT_TRUE(worker.waitStarted());
    EXPECT_EQ(worker.detachState, PTHREAD_CREATE_DETACHED);
    worker.release();
    // It frees its own record on the way (the leak checkers watch that).
    const auto deadline = std::chrono::steady_clock::now() + kBound;
    while (std::filesystem::exists(taskDirectory(worker.tid)) && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    EXPECT_FALSE(std::filesystem::exists(taskDirectory(worker.tid)));
}

TEST(Threads, RefusedArguments)
{
    EXPECT_EQ(SMThreadStart(nullptr, nullptr), nullptr);
    EXPECT_EQ(SMThreadStartAndRelease(nullptr, nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMThreadStop(nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMThreadKill(nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMThreadSetName(nullptr), SM_STATUS_INVALID_PARAMETER);
}

void sleepForever(void *)
{
    for (;;)
        pause();
}

TEST(Threads, KillingAThreadEndsTheWholeProcess)
{
    const zksupt::test::ChildEnd end = zksupt::test::runInChildBounded(
        [] {
            SMThread *thread = SMThreadStart(sleepForever, nullptr);
            if (thread == nullptr)
                return 2;
            SMThreadKill(thread);
            sleep(60);
            return 3;  // still alive: the kill did not end the process
        },
        kBound * 2);
    ASSERT_TRUE(end.finished);
    ASSERT_TRUE(WIFSIGNALED(end.status)) << "exit code " << WEXITSTATUS(end.status);
    EXPECT_EQ(WTERMSIG(end.status), SIGKILL);
}

}  // namespace
