// The name registry: object names, keys in the shared key file, System V
// semaphore sets, and the removal of sets whose creator has ended.
#include <gtest/gtest.h>

#include <sched.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <zksupt/digest.h>
#include <zksupt/status.h>

#include "ipc/registry.h"
#include "ipc/semaphore_set.h"
#include "lock/object_name.h"
#include "processes.h"
#include "support/sandbox.h"

namespace zksupt::ipc {
namespace {

using test::Child;

// The digest text through the public MD5 functions, name and NUL included.
std::string digestOf(const std::string &name)
{
    SMRFC1321Context context;
    SMRFC1321Load(&context);
    SMRFC1321AddMsg(&context, name.c_str(), static_cast<uint32_t>(name.size() + 1));
    SMRFC1321ComputeMsgDigest(&context);
    std::string text;
    char hex[3];
    for (const uint8_t byte : context.digest) {
        std::snprintf(hex, sizeof hex, "%02X", byte);
        text += hex;
    }
    return text;
}

std::string nameOf(uint32_t kind, const char *name)
{
    const auto form = lock::objectName(kind, name);
    return form ? std::string(form->view()) : "(none)";
}

TEST(ObjectNames, EachKindHasItsFormOfAtMost256Bytes)
{
    const std::string dir = test::sandbox().ipcDir();
    ASSERT_STREQ(lock::ipcDirectory(), dir.c_str());
    const std::string digest = digestOf("Lock");
    const struct {
        uint32_t kind;
        std::string expected;
    } cases[] = {
        {1, dir + "/.zksupmtx" + digest},
        {2, "zksupsmp" + digest},
        {3, "zksupshm" + digest},
        {4, "zksupevt" + digest},
        {5, "zksuprwl" + digest},
        {6, dir + "/.zksupflk" + digest},
        {0, "(none)"},
        {7, "(none)"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(nameOf(c.kind, "Lock"), c.expected) << "kind " << c.kind;
    EXPECT_NE(nameOf(2, "lock"), nameOf(2, "Lock"));
    EXPECT_EQ(nameOf(2, ""), "(none)");
    EXPECT_EQ(nameOf(2, std::string(5000, 'n').c_str()).size(), 40u);
    // Lock-file forms take the directory's length.
    for (const std::size_t length : {213u, 214u}) {
        ASSERT_TRUE(lock::setIpcDirectory(std::string(length, 'd')));
        const std::string form = std::string(length, 'd') + "/.zksupflk" + digestOf("x");  // 256 bytes at 213
        EXPECT_EQ(nameOf(6, "x"), length == 213 ? form : "(none)") << length;
    }
    lock::clearIpcDirectory();
    EXPECT_EQ(nameOf(1, "x"), "(none)");
    ASSERT_TRUE(lock::setIpcDirectory(dir));
}

class Registry : public test::NoLeftovers {
  protected:
    // A machine on which no name was ever registered.
    static void forgetAllKeys() { std::filesystem::remove(keyFilePath()); }
};

TEST_F(Registry, KeysCountUpFromTheLargestAndStay)
{
    forgetAllKeys();
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
// name's key and never hand one key to two names; 41 names make the
// numeric list grow.
TEST_F(Registry, ProcessesNamingTheSameObjectShareItsKey)
{
    forgetAllKeys();
    constexpr int kProcesses = 4, kOwn = 10;
    const auto own = [](int p, int i) { return "zksupsmpOwn" + std::to_string(p) + "-" + std::to_string(i); };
    std::vector<std::unique_ptr<Child>> children;
    for (int p = 0; p < kProcesses; ++p)
        children.push_back(std::make_unique<Child>([&own, p](Child &) {
            uint32_t shared = 0;
            for (int i = 0; i < kOwn; ++i) {
                if (i == kOwn / 2)
                    shared = keyOf("zksupsmpShared");
                if (keyOf(own(p, i).c_str()) == 0)
                    return 255;
            }
            return static_cast<int>(shared - kFirstKey);
        }));
    std::set<int> shared;
    for (auto &child : children)
        shared.insert(child->wait());
    ASSERT_EQ(shared.size(), 1u);
    std::set<uint32_t> keys{keyOf("zksupsmpShared")};
    EXPECT_EQ(*keys.begin(), kFirstKey + *shared.begin());
    for (int p = 0; p < kProcesses; ++p)
        for (int i = 0; i < kOwn; ++i)
            keys.insert(keyOf(own(p, i).c_str()));
    EXPECT_EQ(keys.size(), 41u);
    EXPECT_EQ(*keys.begin(), kFirstKey);
    EXPECT_EQ(*keys.rbegin(), kFirstKey + 40);
}

TEST_F(Registry, SetsWaitPostAndReset)
{
    const uint32_t key = keyOf("zksupsmpSets");
    const int32_t id = createSet(key, 1, 0, 0);
    ASSERT_NE(id, 0);
    EXPECT_EQ(waitSet(id, 20, false), SM_STATUS_TIMEOUT);
    EXPECT_EQ(postSet(id, 2), SM_STATUS_SUCCESS);
    EXPECT_EQ(waitSet(id, -1, false), SM_STATUS_SUCCESS);
    EXPECT_EQ(createSet(key, 1, 7, 0), id) << "the key's set, its value as it was";
    EXPECT_EQ(setValue(id), 1);
    EXPECT_EQ(resetSet(id), SM_STATUS_SUCCESS);
    EXPECT_EQ(setValue(id), 0);
    removeSet(id);
    EXPECT_EQ(openSet(key), 0);
    const int32_t pair = createSet(keyOf("zksupevtPair"), 2, 1, -1);
    EXPECT_EQ(setSize(pair), 2);
    removeSet(pair);
    EXPECT_EQ(postSet(0, 1), SM_STATUS_FAILURE);
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
    Child creator([](Child &) { return createSet(0, 1, 1, 0) != 0 ? 0 : 1; });
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

// In a fresh IPC namespace the first set would get identifier 0, which means
// "no set"; a namespace out of sets refuses cleanly.
TEST_F(Registry, IdentifierZeroIsNeverHandedOut)
{
    Child fresh([](Child &) {
        if (unshare(CLONE_NEWIPC) != 0)
            return 77;
        const int32_t id = createSet(keyOf("zksupsmpFresh"), 1, 3, 0);
        if (id == 0 || test::semaphoreSets() != std::set<int>{id} || setValue(id) != 3)
            return 1;
        std::ofstream limits("/proc/sys/kernel/sem");  // room for one set, where it may be set
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
