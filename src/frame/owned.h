// Ownership of blocks from the C allocator. Memory the library hands to a
// caller comes from malloc, so an owner releases with free; release() passes
// the block on to the caller.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <type_traits>

namespace zksupt::frame {

struct FreeDeleter {
    void operator()(void *block) const noexcept { std::free(block); }
};

// A malloc'ed T (or array of T) freed when the owner goes out of scope.
template <class T> using Owned = std::unique_ptr<T, FreeDeleter>;

// malloc of bytes as an Owned<T>; null when the allocation fails.
template <class T> Owned<T> allocateOwned(std::size_t bytes) noexcept
{
    return Owned<T>(static_cast<std::remove_extent_t<T> *>(std::malloc(bytes)));
}

// calloc of count elements of T (T or T[]), zeroed; null when it fails.
template <class T> Owned<T> allocateZeroed(std::size_t count) noexcept
{
    using Element = std::remove_extent_t<T>;
    return Owned<T>(static_cast<Element *>(std::calloc(count, sizeof(Element))));
}

// realloc of the owned block to bytes. On failure the owner keeps its old
// block and false comes back, so running out of memory is an answer.
template <class T> bool reallocateOwned(Owned<T> &block, std::size_t bytes) noexcept
{
    void *grown = std::realloc(block.get(), bytes);
    if (grown == nullptr)
        return false;
    static_cast<void>(block.release());
    block.reset(static_cast<std::remove_extent_t<T> *>(grown));
    return true;
}

}  // namespace zksupt::frame
