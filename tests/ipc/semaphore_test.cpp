// Semaphores, named and unnamed, the critical sections, and what every
// named-object entry does with bad input.
#include <gtest/gtest.h>

#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <zksupt/ipc.h>
#include <zksupt/status.h>

#include "ipc/critical_section.h"
#include "lock/object_name.h"
#include "processes.h"
#include "support/sandbox.h"
#include "sync/semaphore.h"

namespace zksupt::ipc {
namespace {

using test::Child;
using test::sandbox;

TEST(UnnamedSemaphoreBelow, WaitsTimeOutAndPostsCount)
{
    sync::Semaphore *semaphore = sync::Semaphore::create(1);
    ASSERT_NE(semaphore, nullptr);
    EXPECT_EQ(semaphore->wait(0), SM_STATUS_SUCCESS);
    EXPECT_EQ(semaphore->wait(0), SM_STATUS_TIMEOUT);
    EXPECT_EQ(semaphore->wait(15), SM_STATUS_TIMEOUT);
    EXPECT_EQ(semaphore->post(3), SM_STATUS_SUCCESS);
    EXPECT_EQ(semaphore->value(), 3);
    EXPECT_EQ(semaphore->wait(-1), SM_STATUS_SUCCESS);
    semaphore->drain();
    EXPECT_EQ(semaphore->value(), 0);
    EXPECT_EQ(semaphore->wait(0), SM_STATUS_TIMEOUT);
    sync::Semaphore::destroy(semaphore);
}

class Semaphores : public test::NoLeftovers {};

// The same rules for both forms.
TEST_F(Semaphores, AcquireReleaseAndTheirLimits)
{
    for (const char *name : {static_cast<const char *>(nullptr), "counted"}) {
        SCOPED_TRACE(name != nullptr ? name : "unnamed");
        EXPECT_EQ(SMSemaphoreCreate(name, 32768), nullptr);
        EXPECT_EQ(SMSemaphoreCreate(name, -1), nullptr);
        void *semaphore = SMSemaphoreCreate(name, 2);
        ASSERT_NE(semaphore, nullptr);
        EXPECT_EQ(SMSemaphoreAcquireWait(semaphore, 0), SM_STATUS_SUCCESS);
        EXPECT_EQ(SMSemaphoreAcquireWait(semaphore, -1), SM_STATUS_SUCCESS);
        EXPECT_EQ(SMSemaphoreAcquireWait(semaphore, 0), SM_STATUS_TIMEOUT);
        EXPECT_EQ(SMSemaphoreAcquireWait(semaphore, 25), SM_STATUS_TIMEOUT);
        int32_t previous = -5;
        EXPECT_EQ(SMSemaphoreRelease(semaphore, 3, &previous), SM_STATUS_SUCCESS);
        EXPECT_EQ(previous, 0);
        EXPECT_EQ(SMSemaphoreRelease(semaphore, 1, &previous), SM_STATUS_SUCCESS);
        EXPECT_EQ(previous, 3);
        EXPECT_EQ(SMSemaphoreRelease(semaphore, 1, nullptr), SM_STATUS_SUCCESS);
        for (const int32_t count : {0, -1, 32768}) {
            EXPECT_EQ(SMSemaphoreRelease(semaphore, count, &previous), SM_STATUS_INVALID_PARAMETER) << count;
        }
        SMSemaphoreDestroy(semaphore);
        void *largest = SMSemaphoreCreate(name, 32767);
        ASSERT_NE(largest, nullptr);
        EXPECT_EQ(SMSemaphoreRelease(largest, 1, &previous), name != nullptr ? SM_STATUS_FAILURE : SM_STATUS_SUCCESS)
            << "a System V semaphore holds at most 32767";
        EXPECT_EQ(previous, 32767);
        SMSemaphoreDestroy(largest);
        void *empty = SMSemaphoreCreate(name, 0);
        EXPECT_EQ(SMSemaphoreRelease(empty, 32767, &previous), SM_STATUS_SUCCESS);
        EXPECT_EQ(previous, 0);
        SMSemaphoreDestroy(empty);
    }
}

TEST_F(Semaphores, ANamedSemaphoreIsSharedAndOnlyItsCreatorRemovesIt)
{
    const char *name = "shared semaphore";
    EXPECT_EQ(SMSemaphoreOpen("never created"), nullptr);
    EXPECT_EQ(SMSemaphoreOpen(nullptr), nullptr);
    void *created = SMSemaphoreCreate_s(name, 1, 0);
    ASSERT_NE(created, nullptr);
    // Creating it again gives the same set, its value left as it is.
    void *again = SMSemaphoreCreate(name, 9);
    ASSERT_NE(again, nullptr);
    int32_t previous = 0;
    EXPECT_EQ(SMSemaphoreRelease(again, 1, &previous), SM_STATUS_SUCCESS);
    EXPECT_EQ(previous, 1);

    void *opened = SMSemaphoreOpen(name);
    ASSERT_NE(opened, nullptr);
    EXPECT_EQ(SMSemaphoreAcquireWait(opened, 0), SM_STATUS_SUCCESS);
    SMSemaphoreDestroy(opened);
    opened = SMSemaphoreOpen(name);
    ASSERT_NE(opened, nullptr) << "an opener's destroy leaves the set";
    EXPECT_EQ(SMSemaphoreAcquireWait(opened, 0), SM_STATUS_SUCCESS);
    SMSemaphoreDestroy(opened);

    Child waiter([name](Child &self) {
        void *mine = SMSemaphoreOpen(name);
        self.tell();
        const int result = mine != nullptr && SMSemaphoreAcquireWait(mine, -1) == SM_STATUS_SUCCESS ? 0 : 1;
        SMSemaphoreDestroy(mine);
        return result;
    });
    ASSERT_EQ(waiter.heard(), '!');
    EXPECT_EQ(SMSemaphoreRelease(created, 1, nullptr), SM_STATUS_SUCCESS);
    EXPECT_EQ(waiter.wait(), 0);

    SMSemaphoreDestroy(created);
    EXPECT_EQ(SMSemaphoreOpen(name), nullptr);
    SMSemaphoreDestroy(again);  // its set is gone already
}

TEST_F(Semaphores, NullAndForeignHandlesAreRefused)
{
    void *mutex = SMMutexCreate(nullptr);
    void *semaphore = SMSemaphoreCreate(nullptr, 0);
    test::ForeignHandles foreign;

    EXPECT_EQ(SMMutexLock(nullptr, 0), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMMutexUnLock(nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMSemaphoreAcquireWait(nullptr, 0), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMSemaphoreRelease(nullptr, 1, nullptr), SM_STATUS_INVALID_PARAMETER);
    SMMutexDestroy(nullptr);
    SMSemaphoreDestroy(nullptr);

    for (void *handle : foreign.except(1, {semaphore})) {
        EXPECT_EQ(SMMutexLock(handle, 0), SM_STATUS_BAD_OBJECT);
        EXPECT_EQ(SMMutexUnLock(handle), SM_STATUS_BAD_OBJECT);
        SMMutexDestroy(handle);
    }
    for (void *handle : foreign.except(2, {mutex})) {
        EXPECT_EQ(SMSemaphoreAcquireWait(handle, 0), SM_STATUS_BAD_OBJECT);
        EXPECT_EQ(SMSemaphoreRelease(handle, 1, nullptr), SM_STATUS_BAD_OBJECT);
        SMSemaphoreDestroy(handle);
    }
    // The wrong-kind destroys left both objects working.
    EXPECT_EQ(SMMutexLock(mutex, 0), SM_STATUS_SUCCESS);
    EXPECT_EQ(SMMutexUnLock(mutex), SM_STATUS_SUCCESS);
    EXPECT_EQ(SMSemaphoreRelease(semaphore, 1, nullptr), SM_STATUS_SUCCESS);
    SMMutexDestroy(mutex);
    SMSemaphoreDestroy(semaphore);
}

TEST_F(Semaphores, NamesWithoutAFormMakeNoObject)
{
    for (const char *empty : {""}) {
        EXPECT_EQ(SMMutexCreate(empty), nullptr);
        EXPECT_EQ(SMMutexOpen(empty), nullptr);
        EXPECT_EQ(SMSemaphoreCreate(empty, 0), nullptr);
        EXPECT_EQ(SMSemaphoreOpen(empty), nullptr);
    }
    // A lock file's path that would pass 256 bytes.
    const std::string saved = lock::ipcDirectory();
    ASSERT_TRUE(lock::setIpcDirectory(saved + std::string(214 - saved.size(), '/')));
    EXPECT_EQ(SMMutexCreate("x"), nullptr);
    ASSERT_TRUE(lock::setIpcDirectory(saved));
}

// Without its ".ipc" directory no named object can be made, and nothing
// breaks; the unnamed ones do not need it.
TEST_F(Semaphores, AMissingIpcDirectoryRefusesNamedObjects)
{
    const std::string ipc = sandbox().ipcDir();
    const std::string away = ipc + ".away";
    std::filesystem::rename(ipc, away);
    EXPECT_EQ(SMMutexCreate("no directory"), nullptr);
    EXPECT_EQ(SMSemaphoreCreate("no directory", 0), nullptr);
    EXPECT_EQ(SMSemaphoreOpen("no directory"), nullptr);
    void *unnamed = SMMutexCreate(nullptr);
    EXPECT_NE(unnamed, nullptr);
    SMMutexDestroy(unnamed);
    std::filesystem::rename(away, ipc);
}

int32_t countAlone(void *argument)
{
    auto *state = static_cast<std::pair<std::atomic<int>, int> *>(argument);
    if (state->first.fetch_add(1) != 0)
        ADD_FAILURE() << "two threads inside at once";
    ++state->second;  // a plain count: only safe one thread at a time
    state->first.fetch_sub(1);
    return 7;
}

int32_t neverCalled(void *)
{
    ADD_FAILURE() << "a refused critical section ran its function";
    return 0;
}

TEST(CriticalSections, ThreadsRunTheSameFunctionOneAtATime)
{
    std::pair<std::atomic<int>, int> state{0, 0};
    test::runBounded([&state] {
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t)
            threads.emplace_back([&state] {
                for (int i = 0; i < 250; ++i)
                    EXPECT_EQ(SMCriticalSectionExecute(countAlone, &state, -1), SM_STATUS_SUCCESS);
            });
        for (std::thread &thread : threads)
            thread.join();
    });
    EXPECT_EQ(state.second, 1000);
}

TEST(CriticalSections, OnlyTheUnboundedWaitIsServed)
{
    EXPECT_EQ(SMCriticalSectionExecute(nullptr, nullptr, -1), SM_STATUS_INVALID_PARAMETER);
    for (const int32_t timeout : {0, 1, 1000, -2})
        EXPECT_EQ(SMCriticalSectionExecute(neverCalled, nullptr, timeout), SM_STATUS_INVALID_PARAMETER);
    stopCriticalSections();
    EXPECT_EQ(SMCriticalSectionExecute(neverCalled, nullptr, -1), SM_STATUS_INVALID_PARAMETER);
    ASSERT_TRUE(startCriticalSections());
}

}  // namespace
}  // namespace zksupt::ipc
