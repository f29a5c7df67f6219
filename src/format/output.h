// Where one formatting call writes: the caller's buffer, bounded to size - 1
// bytes so that the terminator always fits, and a count of every byte the
// conversions produced, stored or not (the count that "%n" reports).
#pragma once

#include <cstdint>
#include <cstring>

#include "frame/short_copy.h"

namespace zksupt::format {

class Output {
  public:
    // A size of 0, or one above 0x80000000, leaves no room: such a call only
    // terminates dst. dst may be null, which counts without storing.
    Output(char *dst, uint32_t size) noexcept
        : dst_(dst), left_(size == 0 || size > UINT32_C(0x80000000) ? 0 : size - 1)
    {
    }

    void put(const char *text, uint64_t length) noexcept
    {
        const uint32_t n = take(length);
        if (dst_ != nullptr && n != 0)
            frame::copyShort(dst_ + stored_, text, n);
        stored_ += n;
    }

    void put(char c) noexcept { put(&c, 1); }

    // Room for exactly length bytes, counted as stored, when all of them fit
    // in the caller's buffer: the caller must then write every one of them.
    // Null, and nothing counted, when dst is null or they do not fit.
    char *reserve(uint64_t length) noexcept
    {
        if (dst_ == nullptr || length > left_)
            return nullptr;
        char *at = dst_ + stored_;
        produced_ += length;
        left_ -= static_cast<uint32_t>(length);
        stored_ += static_cast<uint32_t>(length);
        return at;
    }

    // count copies of c; nothing when count is 0 or negative. The work is
    // bounded by the room left, not by count.
    void fill(char c, int64_t count) noexcept
    {
        if (count <= 0)
            return;
        const uint32_t n = take(static_cast<uint64_t>(count));
        if (dst_ != nullptr && n != 0) {
            if (n <= 16 && (c == ' ' || c == '0'))
                frame::copyShort(dst_ + stored_, c == ' ' ? kBlanks : kZeros, n);
            else
                std::memset(dst_ + stored_, c, n);
        }
        stored_ += n;
    }

    // Every byte produced so far, including those that did not fit.
    uint64_t produced() const noexcept { return produced_; }
    // Whether any byte had to be dropped.
    bool dropped() const noexcept { return dropped_; }

    // Terminates what was stored and returns its length.
    int32_t finish() noexcept
    {
        if (dst_ != nullptr)
            dst_[stored_] = '\0';
        return static_cast<int32_t>(stored_);
    }

  private:
    static constexpr char kBlanks[17] = "                ";
    static constexpr char kZeros[17] = "0000000000000000";

    // Counts length bytes and returns how many of them fit.
    uint32_t take(uint64_t length) noexcept
    {
        produced_ += length;
        if (length <= left_) {
            left_ -= static_cast<uint32_t>(length);
            return static_cast<uint32_t>(length);
        }
        const uint32_t n = left_;
        left_ = 0;
        dropped_ = true;
        return n;
    }

    char *dst_;
    uint32_t left_;
    uint32_t stored_ = 0;
    uint64_t produced_ = 0;
    bool dropped_ = false;
};

}  // namespace zksupt::format
