// How the library's growable text buffers grow: doubling while small, by a
// quarter once above 1 MiB, and never to less than what is needed.
#pragma once

#include <algorithm>
#include <cstdint>

namespace zksupt::text {

// The capacity to grow to when `needed` bytes exceed `capacity`. The quarter
// is computed in 64 bits and capped at the largest 32-bit size, so that
// strings above about 34 MB still grow ahead, not by each append's need.
constexpr uint32_t grownCapacity(uint32_t capacity, uint32_t needed) noexcept
{
    const uint64_t grown = capacity > 0xFFFFFu ? uint64_t{capacity} * 125u / 100u : uint64_t{capacity} * 2u;
    return std::max(needed, static_cast<uint32_t>(std::min<uint64_t>(grown, UINT32_MAX)));
}

}  // namespace zksupt::text
