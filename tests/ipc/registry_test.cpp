// The name registry: key allocation in the shared key file, System V
// semaphore sets, and the removal of sets whose creator has ended.
#include <gtest/gtest.h>

#include <sched.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <zksupt/status.h>

#include "ipc/registry.h"
#include "ipc/semaphore_set.h"
#include "lock/object_name.h"
#include "processes.h"
#include "support/sandbox.h"

namespace zksupt::ipc {
namespace {

using test::Child;
using test::sandbox;

std::string readFile(const std::string &path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

class Registry : public test::NoLeftovers {
  protected:
    // A machine on which no name was ever registered.
    static void forgetAllKeys() { std::filesystem::remove(keyFilePath()); }
};

TEST_F(Registry, KeysCountUpFromTheFirstAndStay)
{
    forgetAllKeys();
    EXPECT_EQ(keyOf("zksupsmpA"), 300001u);
    EXPECT_EQ(keyOf("zksupsmpB"), 300002u);
    EXPECT_EQ(keyOf("zksupsmpA"), 300001u);
    EXPECT_EQ(readFile(keyFilePath()), "[Unique String Name Key Section]\n"
                                       "zksupsmpA=300001\n"
                                       "zksupsmpB=300002\n"
                                       "\n"
                                       "[Unique Numeric Value Key Section]\n"
                                       "300001=zksupsmpA\n"
                                       "300002=zksupsmpB\n");
    EXPECT_EQ(keyOf(nullptr), 0u);
}

TEST_F(Registry, GarbageInTheKeyFileDoesNotDisturbAllocation)
{
    std::ofstream(keyFilePath(), std::ios::trunc) << "[Unique Numeric Value Key Section]\n"
                                                     "junk without equals\n"
                                                     "12x=a\n"
                                                     "=b\n"
                                                     "-5=c\n"
                                                     "+7=c\n"
                                                     "400000=d\n"
                                                     "99999999999=e\n"
                                                     "; 900000=f\n"
                                                     "[Other]\n"
                                                     "500000=g\n";
    EXPECT_EQ(keyOf("zksupsmpNew"), 400001u);
    EXPECT_EQ(keyOf("zksupsmpNew"), 400001u);
}

// The numeric section is read as a list that starts small and grows once.
TEST_F(Registry, ManyKeysStillCountUp)
{
    forgetAllKeys();
    for (uint32_t i = 0; i < 40; ++i)
        ASSERT_EQ(keyOf(("zksupevtMany" + std::to_string(i)).c_str()), 300001 + i);
}

// Processes that register at the same time, under the key-file lock, agree
// on a shared name's key and never hand one key to two names.
TEST_F(Registry, ProcessesNamingTheSameObjectShareItsKey)
{
    forgetAllKeys();
    constexpr int kProcesses = 4;
    std::vector<std::unique_ptr<Child>> children;
    for (int i = 0; i < kProcesses; ++i)
        children.push_back(std::make_unique<Child>([i](Child &) {
            const std::string own = "zksupsmpOwn" + std::to_string(i);
            std::ofstream(sandbox().path("var/keys" + std::to_string(i)))
                << keyOf("zksupsmpShared") << ' ' << keyOf(own.c_str()) << '\n';
            return 0;
        }));
    std::set<uint32_t> shared;
    std::set<uint32_t> all;
    for (int i = 0; i < kProcesses; ++i) {
        ASSERT_EQ(children[i]->wait(), 0);
        std::ifstream keys(sandbox().path("var/keys" + std::to_string(i)));
        uint32_t sharedKey = 0;
        uint32_t ownKey = 0;
        ASSERT_TRUE(keys >> sharedKey >> ownKey);
        shared.insert(sharedKey);
        all.insert(sharedKey);
        all.insert(ownKey);
        std::filesystem::remove(sandbox().path("var/keys" + std::to_string(i)));
    }
    EXPECT_EQ(shared.size(), 1u);
    EXPECT_EQ(all, (std::set<uint32_t>{300001, 300002, 300003, 300004, 300005}));
    EXPECT_EQ(keyOf("zksupsmpShared"), *shared.begin());
}

TEST_F(Registry, SetsWaitPostAndReset)
{
    const uint32_t key = keyOf("zksupsmpSets");
    const int32_t id = createSet(key, 1, 0, 0);
    ASSERT_NE(id, 0);
    EXPECT_EQ(waitSet(id, 0, false), SM_STATUS_TIMEOUT);
    EXPECT_EQ(waitSet(id, 20, false), SM_STATUS_TIMEOUT);
    EXPECT_EQ(postSet(id, 2), SM_STATUS_SUCCESS);
    EXPECT_EQ(setValue(id), 2);
    EXPECT_EQ(waitSet(id, 0, false), SM_STATUS_SUCCESS);
    EXPECT_EQ(waitSet(id, -1, false), SM_STATUS_SUCCESS);
    EXPECT_EQ(waitSet(id, 0, false), SM_STATUS_TIMEOUT);
    // Creating the key's set again finds it, value as it was.
    EXPECT_EQ(postSet(id, 3), SM_STATUS_SUCCESS);
    EXPECT_EQ(createSet(key, 1, 7, 0), id);
    EXPECT_EQ(openSet(key), id);
    EXPECT_EQ(setValue(id), 3);
    EXPECT_EQ(resetSet(id), SM_STATUS_SUCCESS);
    EXPECT_EQ(setValue(id), 0);
    EXPECT_EQ(setSize(id), 1);
    removeSet(id);
    EXPECT_EQ(openSet(key), 0);
    EXPECT_EQ(setValue(id), -1);

    const int32_t pair = createSet(keyOf("zksupevtPair"), 2, 1, -1);
    ASSERT_NE(pair, 0);
    EXPECT_EQ(setSize(pair), 2);
    removeSet(pair);

    EXPECT_EQ(waitSet(0, 0, false), SM_STATUS_FAILURE);
    EXPECT_EQ(postSet(0, 1), SM_STATUS_FAILURE);
    removeSet(0);
}

TEST_F(Registry, APostInOneProcessReleasesAWaiterInAnother)
{
    const uint32_t key = keyOf("zksupsmpAcross");
    const int32_t id = createSet(key, 1, 0, 0);
    ASSERT_NE(id, 0);
    Child waiter([key](Child &self) {
        const int32_t set = openSet(key);
        self.tell();
        return set != 0 && waitSet(set, -1, false) == SM_STATUS_SUCCESS ? 0 : 1;
    });
    ASSERT_EQ(waiter.heard(), '!');
    EXPECT_EQ(postSet(id, 1), SM_STATUS_SUCCESS);
    EXPECT_EQ(waiter.wait(), 0);
    removeSet(id);
}

// A unit taken with undo comes back when its taker is killed.
TEST_F(Registry, UndoGivesBackWhatAKilledProcessTook)
{
    const int32_t id = createSet(keyOf("zksupshmUndo"), 1, 1, 0);
    ASSERT_NE(id, 0);
    Child taker([id](Child &self) {
        if (waitSet(id, 0, true) != SM_STATUS_SUCCESS)
            return 1;
        self.tell();
        pause();
        return 0;
    });
    ASSERT_EQ(taker.heard(), '!');
    EXPECT_EQ(setValue(id), 0);
    taker.kill();
    EXPECT_EQ(setValue(id), 1);
    removeSet(id);
}

std::string semaphoreListEntry(int32_t id)
{
    const std::string text = readFile(keyFilePath());
    const std::string key = "\n" + std::to_string(id) + "=";
    const std::size_t at = text.find(key);
    return at == std::string::npos ? "(none)" : text.substr(at + key.size(), text.find('\n', at + 1) - at - key.size());
}

// Private sets are listed with their creator; at the next start the sets of
// creators that have ended go, with their entries, and the others stay.
TEST_F(Registry, StaleSetsAreRemovedAtTheNextStart)
{
    const std::set<int> before = test::semaphoreSets();
    Child creator([](Child &) { return createSet(0, 1, 1, 0) != 0 ? 0 : 1; });
    ASSERT_EQ(creator.wait(), 0);
    std::set<int> made = test::semaphoreSets();
    for (const int id : before)
        made.erase(id);
    ASSERT_EQ(made.size(), 1u);
    const int stale = *made.begin();
    EXPECT_EQ(semaphoreListEntry(stale), std::to_string(creator.pid()));

    const int32_t live = createSet(0, 1, 0, 0);
    ASSERT_NE(live, 0);
    EXPECT_EQ(semaphoreListEntry(live), std::to_string(getpid()));

    stopRegistry();
    ASSERT_TRUE(startRegistry());
    EXPECT_EQ(test::semaphoreSets().count(stale), 0u);
    EXPECT_EQ(semaphoreListEntry(stale), "(none)");
    EXPECT_EQ(semaphoreListEntry(live), std::to_string(getpid()));
    removeSet(live);
    EXPECT_EQ(semaphoreListEntry(live), "(none)");
}

// In a fresh IPC namespace the first set would get identifier 0, which the
// library keeps for "no set"; and a namespace out of sets refuses cleanly.
TEST_F(Registry, IdentifierZeroIsNeverHandedOut)
{
    Child fresh([](Child &) {
        if (unshare(CLONE_NEWIPC) != 0)
            return 77;
        const int32_t id = createSet(keyOf("zksupsmpFresh"), 1, 3, 0);
        if (id == 0 || test::semaphoreSets() != std::set<int>{id} || setValue(id) != 3)
            return 1;
        // Room for this one set only (where the namespace's limits may be
        // set): the next creation fails, and is logged.
        std::ofstream limits("/proc/sys/kernel/sem");
        limits << "250 32000 32 1\n" << std::flush;
        if (limits && createSet(keyOf("zksupsmpNoRoom"), 1, 0, 0) != 0)
            return 2;
        removeSet(id);
        return test::semaphoreSets().empty() ? 0 : 3;
    });
    const int result = fresh.wait();
    if (result == 77)
        GTEST_SKIP() << "no private IPC namespace for this user";
    EXPECT_EQ(result, 0);
}

}  // namespace
}  // namespace zksupt::ipc
