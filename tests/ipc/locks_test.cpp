// Mutexes, semaphores and reader-writer locks, a killed holder of a lock,
// and what every named-object family does with bad handles.
#include <gtest/gtest.h>

#include <unistd.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include <zksupt/ipc.h>
#include <zksupt/status.h>

#include "ipc/critical_section.h"
#include "ipc/mutex.h"
#include "ipc/registry.h"
#include "ipc/rw_lock.h"
#include "ipc/semaphore_set.h"
#include "lock/file_lock.h"
#include "processes.h"
#include "support/sandbox.h"

namespace zksupt::ipc {
namespace {

using namespace test;

class Mutexes : public test::NoLeftovers {};

// Record locks belong to the process: a named mutex keeps the process's own
// threads apart with its thread mutex, as an unnamed one does.
TEST_F(Mutexes, ThreadsTakeAMutexInTurn)
{
    for (const char *name : {static_cast<const char *>(nullptr), "threads in turn"}) {
        SCOPED_TRACE(name != nullptr ? "named" : "unnamed");
        void *mutex = SMMutexCreate(name);
        ASSERT_NE(mutex, nullptr);
        ASSERT_EQ(SMMutexLock(mutex, -1), SM_STATUS_SUCCESS);
        test::inThreads(1, [mutex](int) { EXPECT_EQ(SMMutexLock(mutex, 20), SM_STATUS_TIMEOUT); });
        EXPECT_EQ(SMMutexUnLock(mutex), SM_STATUS_SUCCESS);
        int counter = 0;  // guarded by the mutex alone
        test::inThreads(4, [&](int) {
            for (int i = 0; i < 200; ++i) {
                ASSERT_EQ(SMMutexLock(mutex, -1), SM_STATUS_SUCCESS);
                ++counter;
                SMMutexUnLock(mutex);
            }
        });
        EXPECT_EQ(counter, 800);
        SMMutexDestroy(mutex);
    }
}

// A holder in another process keeps this one out (time-out 0 tries once);
// killed, it frees what it held at once: the kernel drops its record locks
// and gives back the semaphore units it took with undo.
TEST_F(Mutexes, AKilledHolderReleasesAtOnce)
{
    const char *name = "held across processes";
    void *mutex = SMMutexCreate(name);
    lock::FileLock *file = lock::getFileLock(test::sandbox().path("var/data/held.ini").c_str());
    const int32_t set = createSet(keyOf("zksupsmpHeld"), 1, 1, 0);
    ASSERT_TRUE(mutex != nullptr && file != nullptr && set != 0);
    const auto lockOnce = [mutex](int32_t timeout) {
        const int32_t status = SMMutexLock(mutex, timeout);
        if (status == SM_STATUS_SUCCESS)
            SMMutexUnLock(mutex);
        return status;
    };
    const auto fileOnce = [file](uint32_t mode) {
        const int32_t status = lock::acquireFileLock(file, mode, 0);
        if (status == SM_STATUS_SUCCESS)
            lock::releaseFileLock(file);
        return status;
    };
    const auto takeMutex = [name] { return SMMutexLock(SMMutexOpen(name), -1) == SM_STATUS_SUCCESS; };
    const auto takeFile = [file](uint32_t mode) { return lock::acquireFileLock(file, mode, 1) == SM_STATUS_SUCCESS; };
    const struct {
        const char *what;
        std::function<bool()> take;        // in the holder
        std::function<int32_t()> tryOnce;  // here
        int32_t whileHeld;
    } cases[] = {
        {"named mutex", takeMutex, [&] { return lockOnce(0); }, SM_STATUS_TIMEOUT},
        {"named mutex, timed", takeMutex, [&] { return lockOnce(30); }, SM_STATUS_TIMEOUT},
        {"exclusive file lock", [&] { return takeFile(lock::kExclusive); }, [&] { return fileOnce(lock::kShared); },
         SM_STATUS_TIMEOUT},
        {"shared file lock", [&] { return takeFile(lock::kShared); }, [&] { return fileOnce(lock::kExclusive); },
         SM_STATUS_TIMEOUT},
        {"shared file lock, shared", [&] { return takeFile(lock::kShared); }, [&] { return fileOnce(lock::kShared); },
         SM_STATUS_SUCCESS},
        {"semaphore unit taken with undo", [set] { return waitSet(set, 0, true) == SM_STATUS_SUCCESS; },
         [set] { return setValue(set) == 1 ? SM_STATUS_SUCCESS : SM_STATUS_TIMEOUT; }, SM_STATUS_TIMEOUT},
    };
    for (const auto &c : cases) {
        auto holder = test::holding(c.take);
        ASSERT_NE(holder, nullptr) << c.what;
        EXPECT_EQ(c.tryOnce(), c.whileHeld) << c.what;
        holder->kill();
        EXPECT_EQ(c.tryOnce(), SM_STATUS_SUCCESS) << c.what << ", its holder killed";
    }
    removeSet(set);
    SMMutexDestroy(mutex);
}

class Semaphores : public test::NoLeftovers {};

TEST_F(Semaphores, AcquireReleaseAndTheirLimits)
{
    for (const char *name : {static_cast<const char *>(nullptr), "counted"}) {
        SCOPED_TRACE(name != nullptr ? "named" : "unnamed");
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
        for (const int32_t count : {0, -1, 32768})
            EXPECT_EQ(SMSemaphoreRelease(semaphore, count, &previous), SM_STATUS_INVALID_PARAMETER) << count;
        SMSemaphoreDestroy(semaphore);
        void *largest = SMSemaphoreCreate(name, 32767);
        ASSERT_NE(largest, nullptr);
        // A System V semaphore holds at most 32767.
        EXPECT_EQ(SMSemaphoreRelease(largest, 1, &previous), name != nullptr ? SM_STATUS_FAILURE : SM_STATUS_SUCCESS);
        EXPECT_EQ(previous, 32767);
        SMSemaphoreDestroy(largest);
    }
}

TEST_F(Semaphores, ANamedSemaphoreIsSharedAndOnlyItsCreatorRemovesIt)
{
    const char *name = "shared semaphore";
    void *created = SMSemaphoreCreate_s(name, 0, 0);
    void *again = SMSemaphoreCreate(name, 9);  // the same set, its value left as it is
    ASSERT_NE(again, nullptr);
    int32_t previous = -1;
    EXPECT_EQ(SMSemaphoreRelease(again, 1, &previous), SM_STATUS_SUCCESS);
    EXPECT_EQ(previous, 0);
    void *opened = SMSemaphoreOpen(name);
    ASSERT_NE(opened, nullptr);
    EXPECT_EQ(SMSemaphoreAcquireWait(opened, 0), SM_STATUS_SUCCESS);
    SMSemaphoreDestroy(opened);
    ASSERT_NE(opened = SMSemaphoreOpen(name), nullptr) << "an opener's destroy leaves the set";
    SMSemaphoreDestroy(opened);

    test::Child waiter([name](test::Child &self) {
        void *mine = SMSemaphoreOpen(name);
        self.tell();
        return mine != nullptr && SMSemaphoreAcquireWait(mine, -1) == SM_STATUS_SUCCESS ? 0 : 1;
    });
    ASSERT_EQ(waiter.heard(), '!');
    EXPECT_EQ(SMSemaphoreRelease(created, 1, nullptr), SM_STATUS_SUCCESS);
    EXPECT_EQ(waiter.wait(), 0);

    SMSemaphoreDestroy(created);
    EXPECT_EQ(SMSemaphoreOpen(name), nullptr);
    SMSemaphoreDestroy(again);  // its set is gone already
}

using Statuses = std::vector<int32_t>;

// Every family refuses a null handle and a handle of each other kind; the
// refused destroys leave the objects working.
TEST_F(Semaphores, NullAndForeignHandlesAreRefused)
{
    void *mutex = SMMutexCreate(nullptr);
    void *semaphore = SMSemaphoreCreate(nullptr, 0);
    void *rwLock = SMRWLCreate(nullptr);
    void *event = SMEventCreate(nullptr, 0, 0);
    test::ForeignHandles foreign;
    const int32_t bad = SM_STATUS_INVALID_PARAMETER;
    const struct {
        uint32_t kind;
        void *others[2];
        std::function<Statuses(void *)> use;  // every entry's status, then the destroy
        Statuses forNull;
    } families[] = {
        {1,
         {semaphore, rwLock},
         [](void *h) {
             const Statuses statuses{SMMutexLock(h, 0), SMMutexUnLock(h)};
             SMMutexDestroy(h);
             return statuses;
         },
         {bad, bad}},
        {2,
         {mutex, rwLock},
         [](void *h) {
             const Statuses statuses{SMSemaphoreAcquireWait(h, 0), SMSemaphoreRelease(h, 1, nullptr)};
             SMSemaphoreDestroy(h);
             return statuses;
         },
         {bad, bad}},
        {5,
         {mutex, semaphore},
         [](void *h) {
             const Statuses statuses{SMRWLReadLockGet(h, 0), SMRWLWriteLockGet(h, 0), SMRWLReadLockRelease(h),
                                     SMRWLWriteLockRelease(h)};
             SMRWLDestroy(h);
             return statuses;
         },
         {bad, bad, SM_STATUS_SUCCESS, SM_STATUS_SUCCESS}},
        {4,
         {semaphore, mutex},
         [](void *h) {
             const Statuses statuses{SMEventSet(h), SMEventReset(h), SMEventPulse(h), SMEventWait(h, 0)};
             SMEventDestroy(h);
             return statuses;
         },
         {bad, bad, bad, bad}},
        {3,
         {event, mutex},
         [](void *h) {
             const Statuses statuses{SMSharedMemGetAddressPtr(h) == nullptr ? bad : SM_STATUS_SUCCESS};
             SMSharedMemFree(h);
             return statuses;
         },
         {bad}},
    };
    for (const auto &family : families) {
        EXPECT_EQ(family.use(nullptr), family.forNull) << "kind " << family.kind;
        const Statuses refused(family.forNull.size(), family.kind == 3 ? bad : SM_STATUS_BAD_OBJECT);
        for (void *handle : foreign.except(family.kind, {family.others[0], family.others[1]}))
            EXPECT_EQ(family.use(handle), refused)
                << "kind " << family.kind << " given kind " << *static_cast<uint32_t *>(handle);
    }
    EXPECT_EQ(SMMutexLock(mutex, 0), SM_STATUS_SUCCESS);
    EXPECT_EQ(SMMutexUnLock(mutex), SM_STATUS_SUCCESS);
    EXPECT_EQ(SMSemaphoreRelease(semaphore, 1, nullptr), SM_STATUS_SUCCESS);
    EXPECT_EQ(SMRWLWriteLockGet(rwLock, 0), SM_STATUS_SUCCESS);
    EXPECT_EQ(SMRWLWriteLockRelease(rwLock), SM_STATUS_SUCCESS);
    EXPECT_EQ(SMEventSet(event), SM_STATUS_SUCCESS);
    SMMutexDestroy(mutex);
    SMSemaphoreDestroy(semaphore);
    SMRWLDestroy(rwLock);
    SMEventDestroy(event);
}

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

// Two readers hold the lock and a writer waits; a reader that comes after
// the writer waits until the writer has had its turn, though the first
// readers' release may wake it too.
TEST_P(RwLocks, ReadersShareAndAWaitingWriterGoesFirst)
{
    void *lock = SMRWLCreate(GetParam());
    ASSERT_NE(lock, nullptr);
    std::atomic<int> turns{0};
    int writerTurn = -1, lateReaderTurn = -1;
    const auto inTurn = [&](int &turn, int32_t (*get)(void *, int32_t), int32_t (*release)(void *)) {
        return std::thread([&turn, &turns, lock, get, release] {
            ASSERT_EQ(get(lock, 5), SM_STATUS_SUCCESS);
            turn = turns++;
            EXPECT_EQ(release(lock), SM_STATUS_SUCCESS);
        });
    };
    test::runBounded([&] {
        ASSERT_EQ(SMRWLReadLockGet(lock, 5), SM_STATUS_SUCCESS);
        ASSERT_EQ(SMRWLReadLockGet(lock, 5), SM_STATUS_SUCCESS);
        std::thread writer = inTurn(writerTurn, SMRWLWriteLockGet, SMRWLWriteLockRelease);
        waitUntil([&] { return countersOf(lock).waitingWriters == 1; });
        std::thread lateReader = inTurn(lateReaderTurn, SMRWLReadLockGet, SMRWLReadLockRelease);
        waitUntil([&] { return countersOf(lock).waitingReaders == 1; });
        EXPECT_EQ(SMRWLReadLockRelease(lock), SM_STATUS_SUCCESS);
        EXPECT_EQ(countersOf(lock), (Counters{1, 1, 1, 0})) << "one reader still holds it";
        EXPECT_EQ(SMRWLReadLockRelease(lock), SM_STATUS_SUCCESS);
        writer.join();
        lateReader.join();
    });
    EXPECT_EQ(writerTurn, 0);
    EXPECT_EQ(lateReaderTurn, 1);
    EXPECT_EQ(countersOf(lock), (Counters{0, 0, 0, 0}));
    SMRWLDestroy(lock);
}

INSTANTIATE_TEST_SUITE_P(NamedAndUnnamed, RwLocks, ::testing::Values(nullptr, "shared rw lock"),
                         [](const auto &param) { return param.param != nullptr ? "named" : "unnamed"; });

// Threads running one function through a critical section run it one at a
// time; anything but a time-out of -1, or a stopped module, runs nothing.
TEST(CriticalSections, OneThreadAtATimeAndRefusals)
{
    static std::atomic<int> inside{0};
    static int count = 0;  // plain: only safe one thread at a time
    const auto alone = [](void *) -> int32_t {
        if (inside.fetch_add(1) != 0)
            ADD_FAILURE() << "two threads inside at once";
        ++count;
        inside.fetch_sub(1);
        return 7;
    };
    const auto neverCalled = [](void *) -> int32_t {
        ADD_FAILURE() << "a refused critical section ran its function";
        return 0;
    };
    test::inThreads(4, [&](int) {
        for (int i = 0; i < 250; ++i)
            EXPECT_EQ(SMCriticalSectionExecute(alone, nullptr, -1), SM_STATUS_SUCCESS);
    });
    EXPECT_EQ(count, 1000);
    EXPECT_EQ(SMCriticalSectionExecute(nullptr, nullptr, -1), SM_STATUS_INVALID_PARAMETER);
    for (const int32_t timeout : {0, 1000, -2})
        EXPECT_EQ(SMCriticalSectionExecute(neverCalled, nullptr, timeout), SM_STATUS_INVALID_PARAMETER);
    stopCriticalSections();
    EXPECT_EQ(SMCriticalSectionExecute(neverCalled, nullptr, -1), SM_STATUS_INVALID_PARAMETER);
    ASSERT_TRUE(startCriticalSections());
}

}  // namespace
}  // namespace zksupt::ipc
