// Reader-writer locks: many readers or one writer, writers first.
#include <gtest/gtest.h>

#include <unistd.h>

#include <atomic>
#include <climits>
#include <filesystem>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include <zksupt/ipc.h>
#include <zksupt/status.h>

#include "frame/lifecycle.h"
#include "ipc/rw_lock.h"
#include "processes.h"
#include "support/sandbox.h"

namespace zksupt::ipc {
namespace {

using test::Child;

struct Counters {
    int32_t activeReaders, waitingReaders, waitingWriters;
    uint16_t writerActive;
    bool operator==(const Counters &) const = default;
};

Counters countersOf(void *handle)
{
    auto *lock = static_cast<RwLockRecord *>(handle);
    lockMutex(lock->guard, -1);
    const Counters counters{lock->activeReaders, lock->waitingReaders, lock->waitingWriters, lock->writerActive};
    unlockMutex(lock->guard);
    return counters;
}

void waitUntil(const std::function<bool()> &condition)
{
    for (int waited = 0; !condition(); ++waited) {
        ASSERT_LT(waited, test::kBoundSeconds * 1000) << "the lock never reached the awaited state";
        usleep(1000);
    }
}

class RwLocks : public test::NoLeftovers, public ::testing::WithParamInterface<const char *> {};

// Two readers hold the lock; a writer waits; a reader that comes after the
// writer waits until the writer has had its turn, even though the first
// readers' release woke it too early.
TEST_P(RwLocks, ReadersShareAndAWaitingWriterGoesFirst)
{
    void *lock = SMRWLCreate(GetParam());
    ASSERT_NE(lock, nullptr);
    std::mutex orderMutex;
    std::vector<std::string> order;
    const auto note = [&](const char *who) {
        const std::lock_guard<std::mutex> guard(orderMutex);
        order.push_back(who);
    };
    test::runBounded([&] {
        ASSERT_EQ(SMRWLReadLockGet(lock, 5), SM_STATUS_SUCCESS);
        ASSERT_EQ(SMRWLReadLockGet(lock, 5), SM_STATUS_SUCCESS);
        EXPECT_EQ(countersOf(lock), (Counters{2, 0, 0, 0}));
        std::thread writer([&] {
            ASSERT_EQ(SMRWLWriteLockGet(lock, 5), SM_STATUS_SUCCESS);
            note("writer");
            EXPECT_EQ(countersOf(lock).activeReaders, 0);
            EXPECT_EQ(SMRWLWriteLockRelease(lock), SM_STATUS_SUCCESS);
        });
        waitUntil([&] { return countersOf(lock).waitingWriters == 1; });
        std::thread lateReader([&] {
            ASSERT_EQ(SMRWLReadLockGet(lock, 5), SM_STATUS_SUCCESS);
            note("late reader");
            EXPECT_EQ(SMRWLReadLockRelease(lock), SM_STATUS_SUCCESS);
        });
        waitUntil([&] { return countersOf(lock).waitingReaders == 1; });
        EXPECT_EQ(SMRWLReadLockRelease(lock), SM_STATUS_SUCCESS);
        EXPECT_EQ(countersOf(lock), (Counters{1, 1, 1, 0})) << "one reader still holds it";
        EXPECT_EQ(SMRWLReadLockRelease(lock), SM_STATUS_SUCCESS);
        writer.join();
        lateReader.join();
    });
    EXPECT_EQ(order, (std::vector<std::string>{"writer", "late reader"}));
    EXPECT_EQ(countersOf(lock), (Counters{0, 0, 0, 0}));
    SMRWLDestroy(lock);
}

// Under load, a writer is always alone and readers never meet a writer.
TEST_P(RwLocks, AWriterIsAlwaysAlone)
{
    void *lock = SMRWLCreate(GetParam());
    ASSERT_NE(lock, nullptr);
    std::atomic<int> readers{0}, writers{0};
    int written = 0;  // guarded by the write lock alone
    test::runBounded([&] {
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t)
            threads.emplace_back([&, t] {
                for (int i = 0; i < 100; ++i) {
                    if ((i + t) % 3 == 0) {
                        ASSERT_EQ(SMRWLWriteLockGet(lock, 2), SM_STATUS_SUCCESS);
                        EXPECT_EQ(writers.fetch_add(1) + readers.load(), 0);
                        ++written;
                        writers.fetch_sub(1);
                        SMRWLWriteLockRelease(lock);
                    } else {
                        ASSERT_EQ(SMRWLReadLockGet(lock, 2), SM_STATUS_SUCCESS);
                        readers.fetch_add(1);
                        EXPECT_EQ(writers.load(), 0);
                        readers.fetch_sub(1);
                        SMRWLReadLockRelease(lock);
                    }
                }
            });
        for (std::thread &thread : threads)
            thread.join();
    });
    EXPECT_EQ(written, 4 * 34 - 2);  // i + t divisible by 3 for i < 100
    SMRWLDestroy(lock);
}

std::string formOf(const ::testing::TestParamInfo<const char *> &param)
{
    return param.param != nullptr ? "named" : "unnamed";
}

INSTANTIATE_TEST_SUITE_P(NamedAndUnnamed, RwLocks, ::testing::Values(nullptr, "shared rw lock"), formOf);

TEST(RwLockHandles, NullForeignAndNamelessAreRefused)
{
    void *rwLock = SMRWLCreate(nullptr);
    void *mutex = SMMutexCreate(nullptr);
    void *semaphore = SMSemaphoreCreate(nullptr, 0);
    test::ForeignHandles foreign;
    EXPECT_EQ(SMRWLReadLockGet(nullptr, 0), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMRWLWriteLockGet(nullptr, 0), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMRWLReadLockRelease(nullptr), SM_STATUS_SUCCESS);
    EXPECT_EQ(SMRWLWriteLockRelease(nullptr), SM_STATUS_SUCCESS);
    SMRWLDestroy(nullptr);
    for (void *handle : foreign.except(5, {mutex, semaphore})) {
        EXPECT_EQ(SMRWLReadLockGet(handle, 0), SM_STATUS_BAD_OBJECT);
        EXPECT_EQ(SMRWLWriteLockGet(handle, 0), SM_STATUS_BAD_OBJECT);
        EXPECT_EQ(SMRWLReadLockRelease(handle), SM_STATUS_BAD_OBJECT);
        EXPECT_EQ(SMRWLWriteLockRelease(handle), SM_STATUS_BAD_OBJECT);
        SMRWLDestroy(handle);
    }
    EXPECT_EQ(SMMutexLock(rwLock, 0), SM_STATUS_BAD_OBJECT);
    EXPECT_EQ(SMSemaphoreAcquireWait(rwLock, 0), SM_STATUS_BAD_OBJECT);
    EXPECT_EQ(SMRWLWriteLockGet(rwLock, 0), SM_STATUS_SUCCESS);
    EXPECT_EQ(SMRWLWriteLockRelease(rwLock), SM_STATUS_SUCCESS);
    SMRWLDestroy(rwLock);
    SMMutexDestroy(mutex);
    SMSemaphoreDestroy(semaphore);

    EXPECT_EQ(SMRWLCreate(""), nullptr);
    // Its guard mutex needs the IPC directory.
    const std::string ipc = test::sandbox().ipcDir();
    std::filesystem::rename(ipc, ipc + ".away");
    EXPECT_EQ(SMRWLCreate("no directory"), nullptr);
    std::filesystem::rename(ipc + ".away", ipc);
}

TEST(RwLockLimits, AFullWaitingCountIsRefused)
{
    void *lock = SMRWLCreate(nullptr);
    auto *record = static_cast<RwLockRecord *>(lock);
    record->waitingReaders = INT32_MAX;
    record->waitingWriters = INT32_MAX;
    EXPECT_EQ(SMRWLReadLockGet(lock, 0), SM_STATUS_LIMIT_REACHED);
    EXPECT_EQ(SMRWLWriteLockGet(lock, 0), SM_STATUS_LIMIT_REACHED);
    record->waitingReaders = 0;
    record->waitingWriters = 0;
    SMRWLDestroy(lock);
}

// A wait ends with -1 once the library is being unloaded. In a child: the
// detach stops this process's modules.
TEST(RwLockLimits, UnloadingEndsAWait)
{
    Child child([](Child &) {
        void *lock = SMRWLCreate(nullptr);
        if (SMRWLWriteLockGet(lock, -1) != SM_STATUS_SUCCESS)
            return 1;
        std::atomic<int32_t> result{0};
        std::thread reader([&] { result = SMRWLReadLockGet(lock, 5); });
        while (countersOf(lock).waitingReaders == 0)
            usleep(1000);
        frame::library().detach();
        reader.join();
        SMRWLWriteLockRelease(lock);
        SMRWLDestroy(lock);
        return result == SM_STATUS_FAILURE ? 0 : 2;
    });
    EXPECT_EQ(child.wait(), 0);
}

}  // namespace
}  // namespace zksupt::ipc
