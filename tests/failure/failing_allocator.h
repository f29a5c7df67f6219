// Allocation failure on demand. The failure test program is linked with the
// C and C++ allocation entry points wrapped (malloc, calloc, realloc, strdup,
// strndup, operator new), so that every allocation made by the library's own
// code while a call runs under underFailure() is counted and the planned one
// fails: null from the C allocator and the nothrow new, std::bad_alloc from
// the throwing new.
#pragma once

#include <cstdint>
#include <utility>

namespace zksupt::test {

// Makes the nth counted allocation from now (n >= 1) fail; 0 plans none.
void planAllocationFailure(uint64_t n);
// Whether the planned failure was injected since planAllocationFailure; the
// plan is dropped either way.
bool endAllocationPlan();

// Counts allocations while it lives.
class CountedAllocations {
  public:
    CountedAllocations();
    ~CountedAllocations();
    CountedAllocations(const CountedAllocations &) = delete;
    CountedAllocations &operator=(const CountedAllocations &) = delete;
};

// Calls call() with its allocations counted; only the library call belongs
// inside, never the test's own checks.
template <class Call> auto underFailure(Call &&call)
{
    CountedAllocations counted;
    return std::forward<Call>(call)();
}

}  // namespace zksupt::test
