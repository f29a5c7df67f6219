// Real processes for the named-object tests: forked children that report
// through a pipe and are killed when they overstay, and counts of what a
// test may leave behind (System V semaphore sets and segments, open
// descriptors).
#pragma once

#include <gtest/gtest.h>

#include <sys/types.h>

#include <functional>
#include <cstdint>
#include <initializer_list>
#include <set>
#include <vector>

namespace zksupt::test {

// Bounds every wait of these tests: a child or thread still running after
// it has failed, it does not hang the run.
inline constexpr int kBoundSeconds = 60;

// A forked child running body; body's result is its exit status.
class Child {
  public:
    explicit Child(const std::function<int(Child &)> &body);
    ~Child();  // kills a child that is still running
    Child(const Child &) = delete;
    Child &operator=(const Child &) = delete;

    // In the child: tells the parent something (one byte).
    void tell(char what = '!');
    // In the parent: the next byte the child told, or 0 when it said nothing
    // within the bound (or ended).
    char heard();
    // The exit status, or -1 when it did not exit normally or had to be
    // killed after the bound.
    int wait();
    // Ends the child at once with SIGKILL and reaps it.
    void kill();
    pid_t pid() const { return pid_; }

  private:
    pid_t pid_ = -1;
    int toParent_[2] = {-1, -1};
    bool reaped_ = false;
};

// Handles of the kinds a family's functions must refuse: records shaped
// like every object's (kind first) of kinds 0 (library), 3 (shared memory),
// 4 (event) and 6 (file lock).
class ForeignHandles {
  public:
    // Those records, without the one of kind `own`, plus more handles.
    std::vector<void *> except(uint32_t own, std::initializer_list<void *> more);

  private:
    struct Record {
        uint32_t kind;
        const char *name;
        void *fields[6];
    };
    Record records_[4] = {{0, nullptr, {}}, {3, nullptr, {}}, {4, nullptr, {}}, {6, nullptr, {}}};
};

// Runs f in a thread and aborts the test program when f has not returned
// within the bound, so a deadlock fails instead of hanging.
void runBounded(const std::function<void()> &f);

// While it lives, the sandbox's IPC directory is a plain file, so the
// registry can give out no key and nothing can make the directory again.
class KeylessRegistry {
  public:
    KeylessRegistry();
    ~KeylessRegistry();
    KeylessRegistry(const KeylessRegistry &) = delete;
    KeylessRegistry &operator=(const KeylessRegistry &) = delete;
};

// The identifiers of this IPC namespace's semaphore sets.
std::set<int> semaphoreSets();
// The identifiers of this IPC namespace's shared-memory segments.
std::set<int> sharedSegments();
// How many descriptors the process has open.
int openDescriptors();

// A test that must leave no semaphore set, segment or descriptor behind.
class NoLeftovers : public ::testing::Test {
  protected:
    void SetUp() override;
    void TearDown() override;

  private:
    std::set<int> sets_;
    std::set<int> segments_;
    int descriptors_ = 0;
};

}  // namespace zksupt::test
