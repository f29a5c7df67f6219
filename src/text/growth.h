// How the library's growable text buffers grow: doubling while small, by a
// quarter once above 1 MiB, and never to less than what is needed.
#pragma once

#include <algorithm>
#include <cstdint>

namespace zksupt::text {

// The capacity to grow to when `needed` bytes exceed `capacity`. The quarter
// is computed in 32-bit arithmetic, as callers' sizes have always been.
constexpr uint32_t grownCapacity(uint32_t capacity, uint32_t needed) noexcept
{
    const uint32_t grown = capacity > 0xFFFFFu ? capacity * 125u / 100u : capacity * 2u;
    return std::max(needed, grown);
}

}  // namespace zksupt::text
