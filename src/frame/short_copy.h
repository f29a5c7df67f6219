// Copies of a few bytes, where a call to memcpy costs more than the copy
// itself: formatted fields, SDO values. Up to 64 bytes go as two fixed-size
// moves that may overlap, which the compiler turns into plain loads and
// stores; longer runs go to memcpy.
#pragma once

#include <cstddef>
#include <cstring>

namespace zksupt::frame {

inline void copyShort(void *to, const void *from, std::size_t n) noexcept
{
    auto *out = static_cast<char *>(to);
    const auto *in = static_cast<const char *>(from);
    if (n > 32 && n <= 64) {
        std::memcpy(out, in, 32);
        std::memcpy(out + n - 32, in + n - 32, 32);
    } else if (n >= 16 && n <= 32) {
        std::memcpy(out, in, 16);
        std::memcpy(out + n - 16, in + n - 16, 16);
    } else if (n >= 8 && n < 16) {
        std::memcpy(out, in, 8);
        std::memcpy(out + n - 8, in + n - 8, 8);
    } else if (n >= 4 && n < 8) {
        std::memcpy(out, in, 4);
        std::memcpy(out + n - 4, in + n - 4, 4);
    } else if (n > 0 && n < 4) {
        out[0] = in[0];
        out[n / 2] = in[n / 2];
        out[n - 1] = in[n - 1];
    } else if (n > 64) {
        std::memcpy(out, in, n);
    }
}

}  // namespace zksupt::frame
