// Caller threads over POSIX threads: a record per joinable thread, detached
// threads that free their own record, and the calling thread's identity.
#pragma once

#include <pthread.h>

#include <cstddef>
#include <cstdint>

#include <zksupt/os.h>

// A thread started by startThread, stopped or killed through it.
struct SMThread {
    SMThreadRoutine routine;
    void *argument;
    pthread_t thread;
    int32_t *status;  // reserved word, 0; nothing writes it
};

namespace zksupt::os {

// Every caller thread gets a stack of this many bytes.
inline constexpr std::size_t kThreadStackSize = 0x20000;

// Starts a joinable thread that calls routine(argument); null for a null
// routine or when the thread cannot be made.
SMThread *startThread(SMThreadRoutine routine, void *argument) noexcept;
// Starts a detached thread that calls routine(argument) and frees its own
// record: 0, FAILURE, or INVALID_PARAMETER for a null routine.
int32_t startReleasedThread(SMThreadRoutine routine, void *argument) noexcept;
// Waits for the thread to end and frees its record: 0, FAILURE when it cannot
// be joined (the record is freed all the same), INVALID_PARAMETER for null.
int32_t stopThread(SMThread *thread) noexcept;
// Sends signal 9 to the thread, which ends the whole process, and frees the
// record: 0, FAILURE when the signal cannot be sent, INVALID_PARAMETER for null.
int32_t killThread(SMThread *thread) noexcept;

int32_t yieldThread() noexcept;
pthread_t currentThreadId() noexcept;
// Names the calling thread (the kernel keeps the first 15 bytes): 0, FAILURE,
// or INVALID_PARAMETER for a null name.
int32_t nameCurrentThread(const char *name) noexcept;

}  // namespace zksupt::os
