// Memory handed across the library's boundary: always the C allocator, so
// SMFreeMem, SMFreeGeneric and free are interchangeable for it.
#pragma once

#include <cstdint>

namespace zksupt::frame {

void *allocate(uint32_t size) noexcept;
void *reallocate(void *pointer, uint32_t size) noexcept;
void release(void *pointer) noexcept;

}  // namespace zksupt::frame
