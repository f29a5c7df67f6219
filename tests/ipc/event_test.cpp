// Events, named and unnamed, in one process and across real processes.
#include <gtest/gtest.h>

#include <sys/sem.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <vector>

#include <zksupt/ipc.h>
#include <zksupt/status.h>

#include "ipc/event.h"
#include "processes.h"

namespace zksupt::ipc {
namespace {

using test::Child;

class Events : public test::NoLeftovers {};

// What one process sees of its own event, for both forms and both modes.
TEST_F(Events, SetResetAndWaitInOneProcess)
{
    for (const char *name : {static_cast<const char *>(nullptr), "own event"}) {
        for (const int32_t manual : {0, 1}) {
            SCOPED_TRACE(std::string(name != nullptr ? name : "unnamed") + (manual == 1 ? ", manual" : ", automatic"));
            void *event = SMEventCreate(name, manual, 0);
            ASSERT_NE(event, nullptr);
            EXPECT_EQ(SMEventWait(event, 0), SM_STATUS_TIMEOUT);
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
        Child waiter([name, manual](Child &self) {
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

// Blocks until count processes wait on the event's set.
bool waitersBlocked(void *event, int count)
{
    const int32_t id = static_cast<EventRecord *>(event)->state.setId;
    for (int waited = 0; waited < test::kBoundSeconds * 1000; ++waited) {
        if (::semctl(id, 0, GETNCNT) == count)
            return true;
        ::usleep(1000);
    }
    return false;
}

struct PulseCase {
    int32_t manual;
    int waiters;  // all of them are let through
    // A released waiter of a manual-reset event puts its unit back when it
    // next runs, which may be after the pulse has reset the event: only an
    // automatic event is sure to be left not signalled.
    bool leftNotSignalled;
};

TEST_F(Events, APulseReleasesTheWaitersAlreadyBlocked)
{
    for (const PulseCase &pulse : {PulseCase{1, 3, false}, PulseCase{0, 1, true}}) {
        SCOPED_TRACE(pulse.manual == 1 ? "manual" : "automatic");
        const char *name = "pulsed event";
        void *event = SMEventCreate(name, pulse.manual, 0);
        ASSERT_NE(event, nullptr);
        std::vector<std::unique_ptr<Child>> waiters;
        for (int i = 0; i < pulse.waiters; ++i) {
            waiters.push_back(std::make_unique<Child>([name](Child &) {
                void *opened = SMEventOpen(name);
                const int32_t status = SMEventWait(opened, test::kBoundSeconds * 1000);
                SMEventDestroy(opened);
                return status == SM_STATUS_SUCCESS ? 0 : 1;
            }));
        }
        ASSERT_TRUE(waitersBlocked(event, pulse.waiters));
        EXPECT_EQ(SMEventPulse(event), SM_STATUS_SUCCESS);
        for (auto &waiter : waiters)
            EXPECT_EQ(waiter->wait(), 0);
        if (pulse.leftNotSignalled) {
            EXPECT_EQ(SMEventWait(event, 0), SM_STATUS_TIMEOUT);
        }
        SMEventDestroy(event);
    }
}

// Creating a named event that exists gives its set with the state it has.
TEST_F(Events, CreatingAnExistingEventKeepsItsState)
{
    void *first = SMEventCreate("twice created", 1, 1);
    void *second = SMEventCreate("twice created", 1, 0);
    ASSERT_NE(first, nullptr);
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(SMEventWait(second, 0), SM_STATUS_SUCCESS);
    SMEventDestroy(second);
    EXPECT_EQ(SMEventWait(first, 0), SM_STATUS_FAILURE) << "the second creator's destroy removed the set";
    SMEventDestroy(first);
}

TEST_F(Events, BadInputIsRefused)
{
    EXPECT_EQ(SMEventSet(nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMEventReset(nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMEventPulse(nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMEventWait(nullptr, 0), SM_STATUS_INVALID_PARAMETER);
    SMEventDestroy(nullptr);
    void *semaphore = SMSemaphoreCreate(nullptr, 0);
    test::ForeignHandles foreign;
    for (void *handle : foreign.except(4, {semaphore})) {
        EXPECT_EQ(SMEventSet(handle), SM_STATUS_BAD_OBJECT);
        EXPECT_EQ(SMEventReset(handle), SM_STATUS_BAD_OBJECT);
        EXPECT_EQ(SMEventPulse(handle), SM_STATUS_BAD_OBJECT);
        EXPECT_EQ(SMEventWait(handle, 0), SM_STATUS_BAD_OBJECT);
        SMEventDestroy(handle);
    }
    EXPECT_EQ(SMSemaphoreRelease(semaphore, 1, nullptr), SM_STATUS_SUCCESS) << "a wrong-kind destroy left it";
    SMSemaphoreDestroy(semaphore);

    EXPECT_EQ(SMEventCreate("", 0, 0), nullptr);
    EXPECT_EQ(SMEventOpen(nullptr), nullptr);
    EXPECT_EQ(SMEventOpen(""), nullptr);
    EXPECT_EQ(SMEventOpen("never created"), nullptr);

    // A name the registry can give no key makes no event; unnamed ones do
    // not need a key.
    void *unnamed = nullptr;
    {
        test::KeylessRegistry keyless;
        EXPECT_EQ(SMEventCreate("keyless", 1, 0), nullptr);
        EXPECT_EQ(SMEventOpen("keyless"), nullptr);
        unnamed = SMEventCreate(nullptr, 1, 0);
    }
    EXPECT_NE(unnamed, nullptr);
    SMEventDestroy(unnamed);
}

}  // namespace
}  // namespace zksupt::ipc
