// Reproducible random test data.
#pragma once

#include <cstdint>
#include <random>
#include <vector>

namespace zksupt::test {

inline std::vector<uint8_t> randomBytes(std::size_t count, uint32_t seed)
{
    std::mt19937 random(seed);
    std::vector<uint8_t> bytes(count);
    for (auto &byte : bytes)
        byte = static_cast<uint8_t>(random());
    return bytes;
}

}  // namespace zksupt::test
