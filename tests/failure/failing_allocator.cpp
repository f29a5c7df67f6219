// The wrapped allocation entry points behind failing_allocator.h. Only the
// objects of the test program (the library's among them) are linked with
// --wrap, so allocations inside the C and C++ runtimes are not counted.
#include "failure/failing_allocator.h"

#include <atomic>
#include <cstddef>
#include <new>

namespace {

std::atomic<bool> counting{false};
std::atomic<uint64_t> remaining{0};  // allocations until the planned failure; 0 for none
std::atomic<bool> injected{false};

// Whether this allocation is the planned failure.
bool failsNow() noexcept
{
    if (!counting.load(std::memory_order_relaxed))
        return false;
    uint64_t left = remaining.load(std::memory_order_relaxed);
    while (left != 0)
        if (remaining.compare_exchange_weak(left, left - 1)) {
            if (left != 1)
                return false;
            injected = true;
            return true;
        }
    return false;
}

}  // namespace

namespace zksupt::test {

void planAllocationFailure(uint64_t n)
{
    injected = false;
    remaining = n;
}

bool endAllocationPlan()
{
    remaining = 0;
    return injected.exchange(false);
}

CountedAllocations::CountedAllocations()
{
    counting = true;
}

CountedAllocations::~CountedAllocations()
{
    counting = false;
}

}  // namespace zksupt::test

// The names the linker gives the wrapped and the real entry points.
// NOLINTBEGIN
extern "C" {
void *__real_malloc(std::size_t size);
void *__real_calloc(std::size_t count, std::size_t size);
void *__real_realloc(void *block, std::size_t size);
char *__real_strdup(const char *text);
char *__real_strndup(const char *text, std::size_t size);
void *__real__Znwm(std::size_t size);
void *__real__Znam(std::size_t size);
void *__real__ZnwmRKSt9nothrow_t(std::size_t size, const std::nothrow_t &tag) noexcept;
void *__real__ZnamRKSt9nothrow_t(std::size_t size, const std::nothrow_t &tag) noexcept;

void *__wrap_malloc(std::size_t size)
{
    return failsNow() ? nullptr : __real_malloc(size);
}

void *__wrap_calloc(std::size_t count, std::size_t size)
{
    return failsNow() ? nullptr : __real_calloc(count, size);
}

void *__wrap_realloc(void *block, std::size_t size)
{
    return failsNow() ? nullptr : __real_realloc(block, size);
}

char *__wrap_strdup(const char *text)
{
    return failsNow() ? nullptr : __real_strdup(text);
}

char *__wrap_strndup(const char *text, std::size_t size)
{
    return failsNow() ? nullptr : __real_strndup(text, size);
}

void *__wrap__Znwm(std::size_t size)
{
    if (failsNow())
        throw std::bad_alloc();
    return __real__Znwm(size);
}

void *__wrap__Znam(std::size_t size)
{
    if (failsNow())
        throw std::bad_alloc();
    return __real__Znam(size);
}

void *__wrap__ZnwmRKSt9nothrow_t(std::size_t size, const std::nothrow_t &tag) noexcept
{
    return failsNow() ? nullptr : __real__ZnwmRKSt9nothrow_t(size, tag);
}

void *__wrap__ZnamRKSt9nothrow_t(std::size_t size, const std::nothrow_t &tag) noexcept
{
    return failsNow() ? nullptr : __real__ZnamRKSt9nothrow_t(size, tag);
}
}
// NOLINTEND
