// Real processes for the named-object tests: forked children that report
// through a pipe and are killed when they overstay, and what a test may
// leave behind (System V semaphore sets and segments, open descriptors).
#pragma once

#include <gtest/gtest.h>

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <set>
#include <vector>

namespace zksupt::test {

// Bounds every wait of these tests.
inline constexpr int kBoundSeconds = 60;

// A forked child running body; body's result is its exit status.
class Child {
  public:
    explicit Child(const std::function<int(Child &)> &body);
    ~Child();  // kills a child that is still running
    Child(const Child &) = delete;
    Child &operator=(const Child &) = delete;

    void tell(char what = '!');  // in the child
    char heard();                // in the parent: 0 when nothing came within the bound
    int wait();                  // the exit status; -1 when killed or overstaying
    void kill();                 // SIGKILL and reap
    pid_t pid() const { return pid_; }

  private:
    pid_t pid_ = -1;
    int pipe_[2] = {-1, -1};
    bool reaped_ = false;
};

// Runs body(0) to body(count - 1) in children at once; their exit statuses.
std::vector<int> inChildren(int count, const std::function<int(int)> &body);
// A child that has taken what take takes and holds it until killed; null
// when it could not take it.
std::unique_ptr<Child> holding(const std::function<bool()> &take);

// Records shaped like every object's (kind first) of kinds 0, 3, 4 and 6.
class ForeignHandles {
  public:
    // Those records, without the one of kind own, plus more handles.
    std::vector<void *> except(uint32_t own, std::initializer_list<void *> more);

  private:
    struct Record {
        uint32_t kind;
        const char *name;
        void *fields[6];
    };
    Record records_[4] = {{0, nullptr, {}}, {3, nullptr, {}}, {4, nullptr, {}}, {6, nullptr, {}}};
};

// Runs f in a thread and aborts the program when it overstays the bound.
void runBounded(const std::function<void()> &f);
// Runs body(0) to body(count - 1) in threads at once, bounded.
void inThreads(int count, const std::function<void(int)> &body);

std::set<int> semaphoreSets();
std::set<int> sharedSegments();

struct Snapshot;

// A test that must leave no semaphore set, segment or descriptor behind.
class NoLeftovers : public ::testing::Test {
  protected:
    NoLeftovers();
    void TearDown() override;

  private:
    std::shared_ptr<Snapshot> before_;
};

}  // namespace zksupt::test
