// Reader-writer locks: many readers or one writer, writers first.
#include <gtest/gtest.h>

#include <unistd.h>

#include <atomic>
#include <climits>
#include <functional>
#include <thread>
#include <vector>

#include <zksupt/ipc.h>
#include <zksupt/status.h>

#include "frame/lifecycle.h"
#include "ipc/mutex.h"
#include "ipc/rw_lock.h"
#include "processes.h"

namespace zksupt::ipc {
namespace {

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

// Under load a writer is always alone and readers never meet a writer.
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
                    const bool write = (i + t) % 3 == 0;
                    ASSERT_EQ(write ? SMRWLWriteLockGet(lock, 2) : SMRWLReadLockGet(lock, 2), SM_STATUS_SUCCESS);
                    (write ? writers : readers).fetch_add(1);
                    EXPECT_TRUE(write ? writers == 1 && readers == 0 : writers == 0);
                    if (write)
                        ++written;
                    (write ? writers : readers).fetch_sub(1);
                    write ? SMRWLWriteLockRelease(lock) : SMRWLReadLockRelease(lock);
                }
            });
        for (std::thread &thread : threads)
            thread.join();
    });
    EXPECT_EQ(written, 4 * 34 - 2);  // i + t divisible by 3 for i < 100
    SMRWLDestroy(lock);
}

INSTANTIATE_TEST_SUITE_P(NamedAndUnnamed, RwLocks, ::testing::Values(nullptr, "shared rw lock"),
                         [](const auto &param) { return param.param != nullptr ? "named" : "unnamed"; });

// A full waiting count is refused; a wait ends with FAILURE once the library
// is being unloaded (in a child: the detach stops its modules).
TEST(RwLockLimits, AFullWaitingCountAndUnloadingEndWaits)
{
    void *lock = SMRWLCreate(nullptr);
    auto *record = static_cast<RwLockRecord *>(lock);
    record->waitingReaders = record->waitingWriters = INT32_MAX;
    EXPECT_EQ(SMRWLReadLockGet(lock, 0), SM_STATUS_LIMIT_REACHED);
    EXPECT_EQ(SMRWLWriteLockGet(lock, 0), SM_STATUS_LIMIT_REACHED);
    record->waitingReaders = record->waitingWriters = 0;
    test::Child child([lock](test::Child &) {
        if (SMRWLWriteLockGet(lock, -1) != SM_STATUS_SUCCESS)
            return 1;
        std::atomic<int32_t> result{0};
        std::thread reader([&] { result = SMRWLReadLockGet(lock, 5); });
        while (countersOf(lock).waitingReaders == 0)
            usleep(1000);
        frame::library().detach();
        reader.join();
        return result == SM_STATUS_FAILURE ? 0 : 2;
    });
    EXPECT_EQ(child.wait(), 0);
    SMRWLDestroy(lock);
}

}  // namespace
}  // namespace zksupt::ipc
