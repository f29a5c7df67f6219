#include "frame/memory.h"

#include <cstdlib>

namespace zksupt::frame {

void *allocate(uint32_t size) noexcept
{
    return std::malloc(size);
}

void *reallocate(void *pointer, uint32_t size) noexcept
{
    return std::realloc(pointer, size);
}

void release(void *pointer) noexcept
{
    std::free(pointer);  // free(nullptr) does nothing
}

}  // namespace zksupt::frame
