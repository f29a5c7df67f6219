// The name registry, events, shared memory and the INI engine under file
// locks, across real processes.
#include <gtest/gtest.h>

#include <sys/sem.h>
#include <sys/shm.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <zksupt/config.h>
#include <zksupt/ipc.h>
#include <zksupt/status.h>

#include "ipc/event.h"
#include "ipc/registry.h"
#include "ipc/semaphore_set.h"
#include "ipc/shared_memory.h"
#include "lock/file_lock.h"
#include "lock/object_name.h"
#include "processes.h"
#include "support/sandbox.h"

namespace zksupt::ipc {
namespace {

using namespace test;

class Registry : public test::NoLeftovers {
  protected:
    // A machine on which no name was ever registered.
    void SetUp() override { std::filesystem::remove(keyFilePath()); }
};

TEST_F(Registry, KeysCountUpFromTheLargestAndStay)
{
    EXPECT_EQ(keyOf("zksupsmpA"), kFirstKey);
    EXPECT_EQ(keyOf("zksupsmpB"), kFirstKey + 1);
    EXPECT_EQ(keyOf("zksupsmpA"), kFirstKey);
    EXPECT_EQ(test::readFile(keyFilePath()),
              "[Unique String Name Key Section]\nzksupsmpA=300001\nzksupsmpB=300002\n\n"
              "[Unique Numeric Value Key Section]\n300001=zksupsmpA\n300002=zksupsmpB\n");
    EXPECT_EQ(keyOf(nullptr), 0u);
    // Only whole numbers in the numeric section count.
    std::ofstream(keyFilePath(), std::ios::trunc)
        << "[Unique Numeric Value Key Section]\njunk without equals\n12x=a\n=b\n-5=c\n+7=c\n400000=d\n"
           "99999999999=e\n; 900000=f\n[Other]\n500000=g\n";
    EXPECT_EQ(keyOf("zksupsmpNew"), 400001u);
    EXPECT_EQ(keyOf("zksupsmpNew"), 400001u);
}

// Processes registering at once, under the key-file lock, agree on a shared
// name's key and never hand one key to two names.
TEST_F(Registry, ProcessesNamingTheSameObjectShareItsKey)
{
    constexpr int kProcesses = 4, kOwn = 10;
    const auto own = [](int p, int i) { return "zksupsmpOwn" + std::to_string(p) + "-" + std::to_string(i); };
    const std::vector<int> shared = test::inChildren(kProcesses, [&own](int p) {
        uint32_t key = 0;
        for (int i = 0; i < kOwn; ++i) {
            if (i == kOwn / 2)
                key = keyOf("zksupsmpShared");
            if (keyOf(own(p, i).c_str()) == 0)
                return 255;
        }
        return static_cast<int>(key - kFirstKey);
    });
    ASSERT_EQ(std::set<int>(shared.begin(), shared.end()).size(), 1u);
    std::set<uint32_t> keys{keyOf("zksupsmpShared")};
    EXPECT_EQ(*keys.begin(), kFirstKey + shared[0]);
    for (int p = 0; p < kProcesses; ++p)
        for (int i = 0; i < kOwn; ++i)
            keys.insert(keyOf(own(p, i).c_str()));
    EXPECT_EQ(keys.size(), 41u);
    EXPECT_EQ(*keys.rbegin(), kFirstKey + 40);
}

// The "Semaphore List" entry of a private set: its creator's process id.
std::string listedCreator(int32_t id)
{
    const std::string text = test::readFile(keyFilePath());
    const std::string key = "\n" + std::to_string(id) + "=";
    const std::size_t at = text.find(key);
    return at == std::string::npos ? "(none)" : text.substr(at + key.size(), text.find('\n', at + 1) - at - key.size());
}

// At the next start the private sets of creators that have ended go, with
// their entries; the others stay.
TEST_F(Registry, StaleSetsAreRemovedAtTheNextStart)
{
    const std::set<int> before = test::semaphoreSets();
    test::Child creator([](test::Child &) { return createSet(0, 1, 1, 0) != 0 ? 0 : 1; });
    ASSERT_EQ(creator.wait(), 0);
    std::set<int> made = test::semaphoreSets();
    for (const int id : before)
        made.erase(id);
    ASSERT_EQ(made.size(), 1u);
    const int stale = *made.begin();
    EXPECT_EQ(listedCreator(stale), std::to_string(creator.pid()));
    const int32_t live = createSet(0, 1, 0, 0);
    ASSERT_NE(live, 0);

    stopRegistry();
    ASSERT_TRUE(startRegistry());
    EXPECT_EQ(test::semaphoreSets().count(stale), 0u);
    EXPECT_EQ(listedCreator(stale), "(none)");
    EXPECT_EQ(listedCreator(live), std::to_string(getpid()));
    removeSet(live);
    EXPECT_EQ(listedCreator(live), "(none)");
}

class Events : public test::NoLeftovers {};

// What one process sees of its own event, for both forms and both modes.
TEST_F(Events, SetResetAndWaitInOneProcess)
{
    for (const char *name : {static_cast<const char *>(nullptr), "own event"}) {
        for (const int32_t manual : {0, 1}) {
            SCOPED_TRACE(std::string(name != nullptr ? name : "unnamed") + (manual == 1 ? ", manual" : ", automatic"));
            void *event = SMEventCreate(name, manual, 0);
            ASSERT_NE(event, nullptr);
            EXPECT_EQ(SMEventWait(event, 20), SM_STATUS_TIMEOUT);
            for (int i = 0; i < 3; ++i)
                EXPECT_EQ(SMEventSet(event), SM_STATUS_SUCCESS);
            EXPECT_EQ(SMEventWait(event, 0), SM_STATUS_SUCCESS);
            // One wait consumes an automatic event's whole signal; a
            // manual-reset event stays signalled until it is reset.
            EXPECT_EQ(SMEventWait(event, 0), manual == 1 ? SM_STATUS_SUCCESS : SM_STATUS_TIMEOUT);
            EXPECT_EQ(SMEventReset(event), SM_STATUS_SUCCESS);
            EXPECT_EQ(SMEventWait(event, 0), SM_STATUS_TIMEOUT);
            EXPECT_EQ(SMEventReset(event), SM_STATUS_SUCCESS) << "resetting a reset event";
            // Pulse without waiters, signalled or not, leaves it not signalled.
            EXPECT_EQ(SMEventPulse(event), SM_STATUS_SUCCESS);
            EXPECT_EQ(SMEventWait(event, 0), SM_STATUS_TIMEOUT);
            SMEventSet(event);
            EXPECT_EQ(SMEventPulse(event), SM_STATUS_SUCCESS);
            EXPECT_EQ(SMEventWait(event, 0), SM_STATUS_TIMEOUT);
            SMEventDestroy(event);

            void *signalled = SMEventCreate(name, manual, 1);
            ASSERT_NE(signalled, nullptr);
            EXPECT_EQ(SMEventWait(signalled, 0), SM_STATUS_SUCCESS);
            SMEventDestroy(signalled);
        }
    }
}

// An opener in another process learns the mode from the set, and a set in
// one process releases a waiter in the other.
TEST_F(Events, AnotherProcessOpensWaitsAndSeesTheMode)
{
    for (const int32_t manual : {0, 1}) {
        SCOPED_TRACE(manual == 1 ? "manual" : "automatic");
        const char *name = "event between processes";
        void *event = SMEventCreate_s(name, manual, 0, 0);
        ASSERT_NE(event, nullptr);
        test::Child waiter([name, manual](test::Child &self) {
            void *opened = SMEventOpen(name);
            if (opened == nullptr)
                return 1;
            int result = static_cast<EventRecord *>(opened)->manualReset == manual ? 0 : 2;
            self.tell();
            if (SMEventWait(opened, test::kBoundSeconds * 1000) != SM_STATUS_SUCCESS)
                result = 3;
            else if (SMEventWait(opened, 0) != (manual == 1 ? SM_STATUS_SUCCESS : SM_STATUS_TIMEOUT))
                result = 4;
            SMEventDestroy(opened);
            return result;
        });
        ASSERT_EQ(waiter.heard(), '!');
        EXPECT_EQ(SMEventSet(event), SM_STATUS_SUCCESS);
        EXPECT_EQ(waiter.wait(), 0);
        EXPECT_EQ(SMEventWait(event, 0), manual == 1 ? SM_STATUS_SUCCESS : SM_STATUS_TIMEOUT)
            << "the opener's destroy left the event, in its state";
        SMEventDestroy(event);
        EXPECT_EQ(SMEventOpen(name), nullptr) << "the creator's destroy removed it";
    }
}

// Waiters in other processes already blocked on the event are all let
// through by a pulse. A released waiter of a manual-reset event puts its
// unit back when it next runs, maybe after the pulse has reset the event:
// only an automatic event is sure to be left not signalled.
TEST_F(Events, APulseReleasesTheWaitersAlreadyBlocked)
{
    const struct {
        int32_t manual;
        int waiters;
    } cases[] = {{1, 3}, {0, 1}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.manual == 1 ? "manual" : "automatic");
        void *event = SMEventCreate("pulsed event", c.manual, 0);
        ASSERT_NE(event, nullptr);
        std::vector<std::unique_ptr<test::Child>> waiters;
        for (int i = 0; i < c.waiters; ++i)
            waiters.push_back(std::make_unique<test::Child>([](test::Child &) {
                void *opened = SMEventOpen("pulsed event");
                const int32_t status = SMEventWait(opened, test::kBoundSeconds * 1000);
                SMEventDestroy(opened);
                return status == SM_STATUS_SUCCESS ? 0 : 1;
            }));
        const int32_t id = static_cast<EventRecord *>(event)->state.setId;
        for (int waited = 0; ::semctl(id, 0, GETNCNT) != c.waiters; ++waited, ::usleep(1000))
            ASSERT_LT(waited, test::kBoundSeconds * 1000) << "the waiters never blocked";
        EXPECT_EQ(SMEventPulse(event), SM_STATUS_SUCCESS);
        for (auto &waiter : waiters)
            EXPECT_EQ(waiter->wait(), 0);
        EXPECT_TRUE(c.manual == 1 || SMEventWait(event, 0) == SM_STATUS_TIMEOUT) << "left signalled";
        SMEventDestroy(event);
    }
}

class SharedMemory : public test::NoLeftovers {};

// A creator holds the name while it lives; once it is killed the next
// creator takes over its segment with what was written, and an opener finds
// nothing.
TEST_F(SharedMemory, ACreatorHoldsTheNameUntilItsProcessEnds)
{
    const char *name = "segment of a process";
    auto creator = test::holding([name] {
        void *segment = SMSharedMemCreate(name, 4096);
        return segment != nullptr && std::strcpy(static_cast<char *>(SMSharedMemGetAddressPtr(segment)), "old");
    });
    ASSERT_NE(creator, nullptr);
    EXPECT_EQ(SMSharedMemCreate(name, 4096), nullptr) << "its creator is alive";
    void *opened = SMSharedMemOpen(name);
    ASSERT_NE(opened, nullptr);
    auto *seen = static_cast<char *>(SMSharedMemGetAddressPtr(opened));
    EXPECT_STREQ(seen, "old");
    std::strcpy(seen + 100, "from the opener");
    creator->kill();
    SMSharedMemFree(opened);  // an opener's free leaves the segment

    EXPECT_EQ(SMSharedMemOpen(name), nullptr) << "no creator holds it any more";
    void *adopted = SMSharedMemCreate(name, 16);
    ASSERT_NE(adopted, nullptr);
    const auto *kept = static_cast<char *>(SMSharedMemGetAddressPtr(adopted));
    EXPECT_STREQ(kept, "old");
    EXPECT_STREQ(kept + 100, "from the opener") << "the old segment, its size kept";
    EXPECT_EQ(SMSharedMemCreate(name, 16), nullptr) << "the adopter is its live creator now";
    SMSharedMemFree(adopted);
    // An adopter's free leaves the segment and its guard: remove them here.
    const uint32_t key = keyOf(lock::objectName(lock::kSharedMemoryKind, name)->text);
    const int segment = ::shmget(static_cast<key_t>(key), 0, 0600);
    EXPECT_GE(segment, 0);
    ::shmctl(segment, IPC_RMID, nullptr);
    removeSet(openSet(key));
}

using namespace lock;  // NOLINT

constexpr int kWriters = 3, kThreads = 3, kKeys = 8;

std::string keyName(int process, int thread, int key)
{
    return "p" + std::to_string(process) + "t" + std::to_string(thread) + "k" + std::to_string(key);
}

const char *sectionOf(int thread)
{
    return thread % 2 == 0 ? "even" : "odd";
}

// How many keys a listing of the section's names shows; -1 when the listing
// failed other than by the file or section not being there yet.
int keysListed(const std::string &path, const char *section)
{
    std::vector<char> names(16384);
    uint32_t size = static_cast<uint32_t>(names.size());
    const int32_t status =
        SMReadINIPathFileValue(section, nullptr, 1, names.data(), &size, nullptr, 0, path.c_str(), 1);
    if (status == SM_STATUS_SECTION_NOT_FOUND || status == SM_STATUS_FILE_OPEN_FAILED)
        return 0;
    int count = status == SM_STATUS_SUCCESS ? 0 : -1;
    for (const char *name = names.data(); count >= 0 && *name != '\0'; name += std::strlen(name) + 1)
        ++count;
    return count;
}

TEST(IniAcrossProcesses, ConcurrentWritersLoseNothingAndNothingTears)
{
    const std::string dir = sandbox().path("var/concurrent");
    std::filesystem::create_directories(dir);
    const std::string path = dir + "/shared.ini";
    // A reader sees each section grow and never fail.
    Child reader([&path](Child &) {
        int seen[2] = {0, 0};
        while (seen[0] + seen[1] < kWriters * kThreads * kKeys)
            for (int s = 0; s < 2; ++s) {
                const int now = keysListed(path, sectionOf(s));
                if (now < seen[s])
                    return 1;
                seen[s] = now;
            }
        return 0;
    });
    const std::vector<int> failures = inChildren(kWriters, [&path](int p) {
        std::atomic<int> failed{0};
        inThreads(kThreads, [&](int t) {
            for (int k = 0; k < kKeys; ++k) {
                const std::string key = keyName(p, t, k);
                failed += SMWriteINIPathFileValue(sectionOf(t), key.c_str(), 1, key.c_str(),
                                                  static_cast<uint32_t>(key.size() + 1), path.c_str(),
                                                  1) != SM_STATUS_SUCCESS;
            }
        });
        return failed.load();
    });
    EXPECT_EQ(failures, std::vector<int>(kWriters, 0)) << "writes failed";
    EXPECT_EQ(reader.wait(), 0) << "a reading failed or went backwards";

    for (int p = 0; p < kWriters; ++p)
        for (int t = 0; t < kThreads; ++t)
            for (int k = 0; k < kKeys; ++k) {
                const std::string key = keyName(p, t, k);
                char value[32] = {};
                uint32_t size = sizeof value;
                EXPECT_EQ(
                    SMReadINIPathFileValue(sectionOf(t), key.c_str(), 1, value, &size, nullptr, 0, path.c_str(), 1),
                    SM_STATUS_SUCCESS);
                EXPECT_STREQ(value, key.c_str());
            }
    EXPECT_EQ(keysListed(path, "even") + keysListed(path, "odd"), kWriters * kThreads * kKeys);
    // No temporary file or backup was left beside it.
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir), std::filesystem::directory_iterator()), 1);
    std::filesystem::remove_all(dir);
}

}  // namespace
}  // namespace zksupt::ipc
