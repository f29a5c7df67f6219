// Caller threads: start and join, detached threads, names, the thread kill
// that ends the process, and refused arguments.
#include <gtest/gtest.h>

#include <pthread.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/syscall.h>
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

// What a test thread reports, and a gate it waits at until the test lets it go.
struct Worker {
    std::mutex mutex;
    std::condition_variable changed;
    bool started = false;
    bool released = false;
    pid_t tid = 0;
    pthread_t id{};
    std::size_t stackSize = 0;
    int detachState = -1;
    const char *name = nullptr;
    int32_t nameStatus = -2;

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
    const int32_t nameStatus = worker->name != nullptr ? SMThreadSetName(worker->name) : -2;
    pthread_attr_t attributes;
    std::size_t stackSize = 0;
    int detachState = -1;
    if (pthread_getattr_np(pthread_self(), &attributes) == 0) {
        pthread_attr_getstacksize(&attributes, &stackSize);
        pthread_attr_getdetachstate(&attributes, &detachState);
        pthread_attr_destroy(&attributes);
    }
    std::unique_lock<std::mutex> lock(worker->mutex);
    worker->tid = static_cast<pid_t>(syscall(SYS_gettid));
    worker->id = SMThreadGetID();
    worker->stackSize = stackSize;
    worker->detachState = detachState;
    worker->nameStatus = nameStatus;
    worker->started = true;
    worker->changed.notify_all();
    worker->changed.wait_for(lock, kBound, [worker] { return worker->released; });
}

std::string commOf(const std::filesystem::path &task)
{
    std::ifstream in(task / "comm");
    std::string name;
    std::getline(in, name);
    return name;
}

TEST(Threads, StartedThreadRunsWithTheLibraryStackAndStopJoinsIt)
{
    Worker worker;
    SMThread *thread = SMThreadStart(work, &worker);
    ASSERT_NE(thread, nullptr);
    ASSERT_TRUE(worker.waitStarted());
    EXPECT_EQ(worker.stackSize, 0x20000u);
    EXPECT_EQ(worker.detachState, PTHREAD_CREATE_JOINABLE);
    EXPECT_FALSE(pthread_equal(worker.id, SMThreadGetID()));
    EXPECT_EQ(pthread_kill(worker.id, 0), 0);  // alive until released
    worker.release();
    EXPECT_EQ(SMThreadStop(thread), SM_STATUS_SUCCESS);
    EXPECT_FALSE(std::filesystem::exists("/proc/self/task/" + std::to_string(worker.tid)));
}

TEST(Threads, NamesAreSeenByTheKernelCutAtFifteenBytes)
{
    Worker worker;
    worker.name = "zksupt-worker-with-a-long-name";
    SMThread *thread = SMThreadStart(work, &worker);
    ASSERT_NE(thread, nullptr);
    ASSERT_TRUE(worker.waitStarted());
    EXPECT_EQ(worker.nameStatus, SM_STATUS_SUCCESS);
    int named = 0;
    for (const auto &task : std::filesystem::directory_iterator("/proc/self/task"))
        named += commOf(task.path()) == "zksupt-worker-w" ? 1 : 0;
    EXPECT_EQ(named, 1);
    EXPECT_EQ(commOf("/proc/self/task/" + std::to_string(worker.tid)), "zksupt-worker-w");
    char name[16] = {};
    EXPECT_EQ(pthread_getname_np(worker.id, name, sizeof name), 0);
    EXPECT_STREQ(name, "zksupt-worker-w");
    worker.release();
    EXPECT_EQ(SMThreadStop(thread), SM_STATUS_SUCCESS);
}

TEST(Threads, ReleasedThreadRunsAndEndsWithoutAJoin)
{
    Worker worker;
    ASSERT_EQ(SMThreadStartAndRelease(work, &worker), SM_STATUS_SUCCESS);
    ASSERT_TRUE(worker.waitStarted());
    const std::string task = "/proc/self/task/" + std::to_string(worker.tid);
    EXPECT_TRUE(std::filesystem::exists(task));
    EXPECT_EQ(worker.detachState, PTHREAD_CREATE_DETACHED);
    worker.release();
    // The thread ends on its own (and frees its record: the leak checkers see to that).
    const auto deadline = std::chrono::steady_clock::now() + kBound;
    while (std::filesystem::exists(task) && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    EXPECT_FALSE(std::filesystem::exists(task));
}

TEST(Threads, RefusedArguments)
{
    EXPECT_EQ(SMThreadStart(nullptr, nullptr), nullptr);
    EXPECT_EQ(SMThreadStartAndRelease(nullptr, nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMThreadStop(nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMThreadKill(nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMThreadSetName(nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMThreadYield(), 0);
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
