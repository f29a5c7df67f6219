// Shared-memory segments between real processes: the guard that tells a
// live creator, adoption of what an ended creator left, and bad input.
#include <gtest/gtest.h>

#include <sched.h>
#include <sys/sem.h>
#include <sys/shm.h>
#include <unistd.h>

#include <cstring>
#include <fstream>
#include <string>

#include <zksupt/ipc.h>
#include <zksupt/status.h>

#include "ipc/registry.h"
#include "ipc/semaphore_set.h"
#include "ipc/shared_memory.h"
#include "lock/object_name.h"
#include "processes.h"

namespace zksupt::ipc {
namespace {

using test::Child;

// The key of a segment's name, as the registry gives it out.
uint32_t segmentKey(const char *name)
{
    return keyOf(lock::objectName(lock::kSharedMemoryKind, name)->text);
}

// An adopter's free leaves the segment and its guard (only the maker of a
// segment removes it): the test removes them itself.
void removeAdopted(const char *name)
{
    const uint32_t key = segmentKey(name);
    const int segment = ::shmget(static_cast<key_t>(key), 0, 0600);
    EXPECT_GE(segment, 0);
    ::shmctl(segment, IPC_RMID, nullptr);
    removeSet(openSet(key));
}

class SharedMemory : public test::NoLeftovers {};

// Where the test's processes write in the segment.
constexpr std::size_t kOpenerText = 100;
constexpr std::size_t kGoFlag = 200;

// The creator child: makes the segment, writes to it, and exits once the
// parent sets the flag, seeing the parent's text, or is killed first.
int createAndWait(Child &self, const char *name)
{
    void *segment = SMSharedMemCreate(name, 4096);
    if (segment == nullptr)
        return 1;
    auto *text = static_cast<volatile char *>(SMSharedMemGetAddressPtr(segment));
    std::strcpy(const_cast<char *>(text), "from the creator");
    self.tell('c');
    for (int waited = 0; text[kGoFlag] != 'x'; ++waited) {
        if (waited > test::kBoundSeconds * 1000)
            return 2;
        ::usleep(1000);
    }
    return std::strcmp(const_cast<char *>(text) + kOpenerText, "from the opener") == 0 ? 0 : 3;
}

struct CreatorEnd {
    const char *how;
    void (*end)(Child &creator, char *segment);
};

// A creator holds the name while it lives; once it has ended, however, the
// next creator takes over its segment with what was written, and an opener
// finds nothing.
TEST_F(SharedMemory, ACreatorHoldsTheNameUntilItsProcessEnds)
{
    const CreatorEnd ends[] = {
        {"killed", [](Child &creator, char *) { creator.kill(); }},
        {"exited without freeing",
         [](Child &creator, char *segment) {
             segment[kGoFlag] = 'x';
             EXPECT_EQ(creator.wait(), 0) << "the creator saw the opener's text";
         }},
    };
    for (const CreatorEnd &end : ends) {
        SCOPED_TRACE(end.how);
        const char *name = "segment of a process";
        Child creator([name](Child &self) { return createAndWait(self, name); });
        ASSERT_EQ(creator.heard(), 'c');
        EXPECT_EQ(SMSharedMemCreate(name, 4096), nullptr) << "its creator is alive";

        void *opened = SMSharedMemOpen(name);
        ASSERT_NE(opened, nullptr);
        auto *seen = static_cast<char *>(SMSharedMemGetAddressPtr(opened));
        EXPECT_STREQ(seen, "from the creator");
        std::strcpy(seen + kOpenerText, "from the opener");
        end.end(creator, seen);
        SMSharedMemFree(opened);  // an opener's free leaves the segment

        EXPECT_EQ(SMSharedMemOpen(name), nullptr) << "no creator holds it any more";
        void *adopted = SMSharedMemCreate(name, 16);
        ASSERT_NE(adopted, nullptr);
        const auto *kept = static_cast<char *>(SMSharedMemGetAddressPtr(adopted));
        EXPECT_STREQ(kept, "from the creator");
        EXPECT_STREQ(kept + kOpenerText, "from the opener") << "the old segment, its size kept";
        EXPECT_EQ(SMSharedMemCreate(name, 16), nullptr) << "the adopter is its live creator now";
        void *again = SMSharedMemOpen(name);
        EXPECT_NE(again, nullptr);
        SMSharedMemFree(again);
        SMSharedMemFree(adopted);
        removeAdopted(name);
    }
}

// The creator's free removes the segment and its guard, and the name can be
// made afresh; an opener's free only detaches.
TEST_F(SharedMemory, TheCreatorsFreeRemovesTheSegmentAndItsGuard)
{
    const char *name = "freed segment";
    void *created = SMSharedMemCreate_s(name, 64, 0x06000000);
    ASSERT_NE(created, nullptr);
    auto *record = static_cast<SharedMemoryRecord *>(created);
    EXPECT_EQ(record->creator, 1u);
    shmid_ds status{};
    ASSERT_EQ(::shmctl(record->segmentId, IPC_STAT, &status), 0);
    EXPECT_EQ(status.shm_perm.mode & 0777, 0600u);
    EXPECT_EQ(setValue(record->guardId), 0) << "held by its live creator";

    void *opened = SMSharedMemOpen(name);
    ASSERT_NE(opened, nullptr);
    EXPECT_NE(SMSharedMemGetAddressPtr(opened), SMSharedMemGetAddressPtr(created)) << "attached twice";
    SMSharedMemFree(opened);
    static_cast<char *>(SMSharedMemGetAddressPtr(created))[0] = 'k';

    SMSharedMemFree(created);
    EXPECT_EQ(SMSharedMemOpen(name), nullptr);
    void *fresh = SMSharedMemCreate(name, 64);
    ASSERT_NE(fresh, nullptr);
    EXPECT_EQ(static_cast<char *>(SMSharedMemGetAddressPtr(fresh))[0], 0) << "a new, zeroed segment";
    SMSharedMemFree(fresh);
}

TEST_F(SharedMemory, BadInputMakesNothing)
{
    EXPECT_EQ(SMSharedMemCreate(nullptr, 64), nullptr);
    EXPECT_EQ(SMSharedMemCreate_s(nullptr, 64, 0), nullptr);
    EXPECT_EQ(SMSharedMemCreate("", 64), nullptr);
    EXPECT_EQ(SMSharedMemCreate("empty segment", 0), nullptr);
    EXPECT_EQ(SMSharedMemOpen(nullptr), nullptr);
    EXPECT_EQ(SMSharedMemOpen(""), nullptr);
    EXPECT_EQ(SMSharedMemOpen("never created"), nullptr);

    EXPECT_EQ(SMSharedMemGetAddressPtr(nullptr), nullptr);
    SMSharedMemFree(nullptr);
    void *event = SMEventCreate(nullptr, 0, 0);
    test::ForeignHandles foreign;
    for (void *handle : foreign.except(3, {event})) {
        EXPECT_EQ(SMSharedMemGetAddressPtr(handle), nullptr);
        SMSharedMemFree(handle);
    }
    EXPECT_EQ(SMEventSet(event), SM_STATUS_SUCCESS) << "a wrong-kind free left the event alone";
    SMEventDestroy(event);
}

// Without a key from the registry the segment and its guard are private:
// each create makes its own, and no open finds them.
TEST_F(SharedMemory, ANameWithoutAKeyGivesAPrivateSegment)
{
    void *first = nullptr;
    void *second = nullptr;
    {
        test::KeylessRegistry keyless;
        first = SMSharedMemCreate("keyless", 32);
        second = SMSharedMemCreate("keyless", 32);
        EXPECT_EQ(SMSharedMemOpen("keyless"), nullptr);
    }
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    EXPECT_NE(SMSharedMemGetAddressPtr(first), SMSharedMemGetAddressPtr(second));
    static_cast<char *>(SMSharedMemGetAddressPtr(first))[0] = 'a';
    EXPECT_EQ(static_cast<char *>(SMSharedMemGetAddressPtr(second))[0], 0);
    SMSharedMemFree(first);
    SMSharedMemFree(second);
}

// In a namespace of its own, whose segment limit the test may lower, a
// size above the limit makes neither segment nor guard.
TEST_F(SharedMemory, ASizeAboveTheSystemLimitLeavesNothing)
{
    Child own([](Child &) {
        if (::unshare(CLONE_NEWIPC) != 0)
            return 77;
        std::ofstream limit("/proc/sys/kernel/shmmax");
        limit << "65536\n" << std::flush;
        if (!limit)
            return 77;
        if (SMSharedMemCreate("too large", 65537) != nullptr)
            return 1;
        if (!test::sharedSegments().empty() || !test::semaphoreSets().empty())
            return 2;
        void *largest = SMSharedMemCreate("largest", 65536);
        if (largest == nullptr)
            return 3;
        SMSharedMemFree(largest);
        return test::sharedSegments().empty() && test::semaphoreSets().empty() ? 0 : 4;
    });
    const int result = own.wait();
    if (result == 77)
        GTEST_SKIP() << "no private IPC namespace whose limits this user may set";
    EXPECT_EQ(result, 0);
}

}  // namespace
}  // namespace zksupt::ipc
