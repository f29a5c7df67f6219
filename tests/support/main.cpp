// Main of every test program: takes an IPC namespace of its own, makes the
// sandbox installation, attaches the library inside it as the loader would,
// runs the tests, then detaches and removes the sandbox.
#include <gtest/gtest.h>

#include <sched.h>

#include <memory>

#include "frame/lifecycle.h"
#include "support/sandbox.h"

namespace zksupt::test {
namespace {

std::unique_ptr<Sandbox> theSandbox;

class LibraryEnvironment : public ::testing::Environment {
  public:
    void SetUp() override
    {
        theSandbox = std::make_unique<Sandbox>();
        ASSERT_EQ(frame::library().attach(), 1) << "the library did not attach in " << theSandbox->root();
    }
    void TearDown() override
    {
        frame::library().detach();
        theSandbox.reset();
    }
};

}  // namespace

Sandbox &sandbox()
{
    return *theSandbox;
}

}  // namespace zksupt::test

int main(int argc, char **argv)
{
    // CTest runs programs side by side, and every start of the library removes
    // the semaphore sets of dead processes: in a shared namespace one program
    // would take another's sets. Where the kernel refuses (no privilege), the
    // runner's namespace is shared as before.
    static_cast<void>(::unshare(CLONE_NEWIPC));
    ::testing::InitGoogleTest(&argc, argv);
    ::testing::AddGlobalTestEnvironment(new zksupt::test::LibraryEnvironment);
    return RUN_ALL_TESTS();
}
