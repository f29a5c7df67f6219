// One directive's settings, the pieces of its converted text, and how the
// text is laid into its field. Every conversion ends in layOut, so padding,
// signs and prefixes behave alike for all of them.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

#include "format/output.h"

namespace zksupt::format {

// What the flags, width and precision of a directive asked for.
struct Directive {
    bool alternate = false;
    bool leftAdjust = false;
    bool zeroPad = false;
    bool shortInt = false;
    bool longInt = false;
    char sign = '\0';        // '+' or ' ' from the flags; the conversion may replace it
    int32_t width = 0;       // negative only after an overflow (digits, or '*' of INT32_MIN): no padding
    int32_t precision = -1;  // -1: none
};

// A converted text made of a few runs: bytes, or a number of zeros (long runs
// of zeros come from precisions and are never held in memory).
class Pieces {
  public:
    void text(const char *bytes, uint64_t length) noexcept { add(bytes, length); }
    void zeros(int64_t count) noexcept
    {
        if (count > 0)
            add(nullptr, static_cast<uint64_t>(count));
    }

    uint64_t size() const noexcept { return size_; }

    void writeTo(Output &out) const noexcept
    {
        for (std::size_t i = 0; i < count_; ++i) {
            if (runs_[i].bytes != nullptr)
                out.put(runs_[i].bytes, runs_[i].length);
            else
                out.fill('0', static_cast<int64_t>(runs_[i].length));
        }
    }

  private:
    struct Run {
        const char *bytes;
        uint64_t length;
    };

    void add(const char *bytes, uint64_t length) noexcept
    {
        if (length == 0)
            return;
        runs_[count_++] = {bytes, length};
        size_ += length;
    }

    // The longest text, a floating value in fixed form, takes five runs.
    std::array<Run, 8> runs_;
    std::size_t count_ = 0;
    uint64_t size_ = 0;
};

// Writes text into its field: blanks or zeros up to the width, then the sign
// or the "0x"/"0X" prefix (hexPrefix 'x' or 'X'), and leading zeros up to an
// integer precision, which counts the sign and prefix too.
inline void layOut(Output &out, const Directive &d, char sign, char hexPrefix, int32_t integerPrecision,
                   const Pieces &text) noexcept
{
    const auto realSize = static_cast<int64_t>(text.size()) + (sign != '\0' ? 1 : hexPrefix != '\0' ? 2 : 0);
    const int64_t padding = d.width - std::max<int64_t>(realSize, integerPrecision);
    if (!d.leftAdjust && !d.zeroPad)
        out.fill(' ', padding);
    if (sign != '\0') {
        out.put(sign);
    } else if (hexPrefix != '\0') {
        const char prefix[2] = {'0', hexPrefix};
        out.put(prefix, 2);
    }
    if (!d.leftAdjust && d.zeroPad)
        out.fill('0', padding);
    out.fill('0', integerPrecision - realSize);
    text.writeTo(out);
    if (d.leftAdjust)
        out.fill(' ', padding);
}

}  // namespace zksupt::format
