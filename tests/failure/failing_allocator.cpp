// The wrapped allocation entry points behind failing_allocator.h. Only the
// objects of the test program (the library's among them) are linked with
// --wrap, so allocations inside the C and C++ runtimes are not counted.
#include "failure/failing_allocator.h"

#include <atomic>
#include <cstddef>
#include <new>

namespace {

std::atomic<bool> counting{false};
std::atomic<uint32_t> remaining{0};  // allocations until the planned failure; 0 for none
std::atomic<bool> injected{false};

// Whether this allocation is the planned failure.
bool failsNow() noexcept
{
    if (!counting.load(std::memory_order_relaxed))
        return false;
    uint32_t left = remaining.load(std::memory_order_relaxed);
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
    remaining = static_cast<uint32_t>(n);
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
}

// operator new's names carry the mangled size_t: unsigned long ('m') on
// 64-bit hosts, unsigned int ('j') on 32-bit ones. The functions are named
// for the linker with asm labels, as C++ cannot spell those names.
#if __SIZEOF_SIZE_T__ == 8
#define ZKSUPT_SIZE_CODE "m"
#else
#define ZKSUPT_SIZE_CODE "j"
#endif
void *realNew(std::size_t size) __asm__("__real__Znw" ZKSUPT_SIZE_CODE);
void *realNewArray(std::size_t size) __asm__("__real__Zna" ZKSUPT_SIZE_CODE);
void *realNewNothrow(std::size_t size, const std::nothrow_t &tag) noexcept
    __asm__("__real__Znw" ZKSUPT_SIZE_CODE "RKSt9nothrow_t");
void *realNewArrayNothrow(std::size_t size, const std::nothrow_t &tag) noexcept
    __asm__("__real__Zna" ZKSUPT_SIZE_CODE "RKSt9nothrow_t");

void *wrapNew(std::size_t size) __asm__("__wrap__Znw" ZKSUPT_SIZE_CODE);
void *wrapNew(std::size_t size)
{
    if (failsNow())
        throw std::bad_alloc();
    return realNew(size);
}

void *wrapNewArray(std::size_t size) __asm__("__wrap__Zna" ZKSUPT_SIZE_CODE);
void *wrapNewArray(std::size_t size)
{
    if (failsNow())
        throw std::bad_alloc();
    return realNewArray(size);
}

void *wrapNewNothrow(std::size_t size, const std::nothrow_t &tag) noexcept
    __asm__("__wrap__Znw" ZKSUPT_SIZE_CODE "RKSt9nothrow_t");
void *wrapNewNothrow(std::size_t size, const std::nothrow_t &tag) noexcept
{
    return failsNow() ? nullptr : realNewNothrow(size, tag);
}

void *wrapNewArrayNothrow(std::size_t size, const std::nothrow_t &tag) noexcept
    __asm__("__wrap__Zna" ZKSUPT_SIZE_CODE "RKSt9nothrow_t");
void *wrapNewArrayNothrow(std::size_t size, const std::nothrow_t &tag) noexcept
{
    return failsNow() ? nullptr : realNewArrayNothrow(size, tag);
}
// NOLINTEND
