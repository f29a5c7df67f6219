// Ownership of blocks from the C allocator. Memory the library hands to a
// caller comes from malloc, so an owner releases with free; release() passes
// the block on to the caller.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>

namespace zksupt::frame {

struct FreeDeleter {
    void operator()(void *block) const noexcept { std::free(block); }
};

// A malloc'ed T (or array of T) freed when the owner goes out of scope.
template <class T> using Owned = std::unique_ptr<T, FreeDeleter>;

// malloc of bytes as an Owned<T>; null when the allocation fails.
template <class T> Owned<T> allocateOwned(std::size_t bytes) noexcept
{
    return Owned<T>(static_cast<T *>(std::malloc(bytes)));
}

}  // namespace zksupt::frame
