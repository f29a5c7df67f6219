// Semaphores, named and unnamed, and what every named-object entry does
// with bad input.
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <zksupt/ipc.h>
#include <zksupt/status.h>

#include "lock/object_name.h"
#include "processes.h"
#include "support/sandbox.h"

namespace zksupt::ipc {
namespace {

using test::Child;

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
        EXPECT_EQ(SMSemaphoreRelease(semaphore, 1, nullptr), SM_STATUS_SUCCESS);
        EXPECT_EQ(SMSemaphoreRelease(semaphore, 1, &previous), SM_STATUS_SUCCESS);
        EXPECT_EQ(previous, 4);
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

    Child waiter([name](Child &self) {
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

// Every family refuses a null handle and a handle of each other kind; the
// refused destroys leave the objects working.
TEST_F(Semaphores, NullAndForeignHandlesAreRefused)
{
    void *mutex = SMMutexCreate(nullptr);
    void *semaphore = SMSemaphoreCreate(nullptr, 0);
    void *rwLock = SMRWLCreate(nullptr);
    test::ForeignHandles foreign;
    using Statuses = std::vector<int32_t>;
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
         {SM_STATUS_INVALID_PARAMETER, SM_STATUS_INVALID_PARAMETER}},
        {2,
         {mutex, rwLock},
         [](void *h) {
             const Statuses statuses{SMSemaphoreAcquireWait(h, 0), SMSemaphoreRelease(h, 1, nullptr)};
             SMSemaphoreDestroy(h);
             return statuses;
         },
         {SM_STATUS_INVALID_PARAMETER, SM_STATUS_INVALID_PARAMETER}},
        {5,
         {mutex, semaphore},
         [](void *h) {
             const Statuses statuses{SMRWLReadLockGet(h, 0), SMRWLWriteLockGet(h, 0), SMRWLReadLockRelease(h),
                                     SMRWLWriteLockRelease(h)};
             SMRWLDestroy(h);
             return statuses;
         },
         {SM_STATUS_INVALID_PARAMETER, SM_STATUS_INVALID_PARAMETER, SM_STATUS_SUCCESS, SM_STATUS_SUCCESS}},
    };
    for (const auto &family : families) {
        EXPECT_EQ(family.use(nullptr), family.forNull) << "kind " << family.kind;
        for (void *handle : foreign.except(family.kind, {family.others[0], family.others[1]}))
            EXPECT_EQ(family.use(handle), Statuses(family.forNull.size(), SM_STATUS_BAD_OBJECT))
                << "kind " << family.kind << " given kind " << *static_cast<uint32_t *>(handle);
    }
    EXPECT_EQ(SMMutexLock(mutex, 0), SM_STATUS_SUCCESS);
    EXPECT_EQ(SMMutexUnLock(mutex), SM_STATUS_SUCCESS);
    EXPECT_EQ(SMSemaphoreRelease(semaphore, 1, nullptr), SM_STATUS_SUCCESS);
    EXPECT_EQ(SMRWLWriteLockGet(rwLock, 0), SM_STATUS_SUCCESS);
    EXPECT_EQ(SMRWLWriteLockRelease(rwLock), SM_STATUS_SUCCESS);
    SMMutexDestroy(mutex);
    SMSemaphoreDestroy(semaphore);
    SMRWLDestroy(rwLock);
}

// Named objects need a name, a lock-file path of at most 256 bytes and the
// ".ipc" directory; without them they are refused cleanly. Unnamed ones
// need none of it.
TEST_F(Semaphores, NamedObjectsWithoutTheirFormAreRefused)
{
    const auto refused = [](const char *name) {
        EXPECT_EQ(SMMutexCreate(name), nullptr) << name;
        EXPECT_EQ(SMMutexOpen(name), nullptr) << name;
        EXPECT_EQ(SMSemaphoreCreate(name, 0), nullptr) << name;
        EXPECT_EQ(SMSemaphoreOpen(name), nullptr) << name;
        EXPECT_EQ(SMRWLCreate(name), nullptr) << name;
    };
    refused("");
    EXPECT_EQ(SMMutexOpen(nullptr), nullptr);
    EXPECT_EQ(SMSemaphoreOpen(nullptr), nullptr);
    const std::string saved = lock::ipcDirectory();
    ASSERT_TRUE(lock::setIpcDirectory(saved + std::string(214 - saved.size(), '/')));
    EXPECT_EQ(SMMutexCreate("x"), nullptr);
    ASSERT_TRUE(lock::setIpcDirectory(saved));

    const std::string ipc = test::sandbox().ipcDir();
    std::filesystem::rename(ipc, ipc + ".away");
    refused("no directory");
    void *unnamed = SMMutexCreate(nullptr);
    EXPECT_NE(unnamed, nullptr);
    SMMutexDestroy(unnamed);
    std::filesystem::rename(ipc + ".away", ipc);
}

}  // namespace
}  // namespace zksupt::ipc
