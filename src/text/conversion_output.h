// What the two converters share: where their units go (the caller's buffer,
// or nowhere for a size query), the handling of *size and the terminator,
// and the copying of ASCII runs in blocks.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include <zksupt/status.h>

namespace zksupt::text {

// The most units a walk takes at once.
inline constexpr std::size_t kMaxTake = 8;

// Output of a size query: counts units and keeps none.
template <class Unit> class CountingOutput {
  public:
    // Room for n more units (n <= kMaxTake): always.
    Unit *take(std::size_t n) noexcept
    {
        count_ += n;
        return scratch_;
    }
    std::size_t units() const noexcept { return count_; }

  private:
    std::size_t count_ = 0;
    Unit scratch_[kMaxTake];  // encoders write here; nothing reads it
};

// Output into the caller's buffer of a capacity in bytes.
template <class Unit> class BufferOutput {
  public:
    BufferOutput(Unit *dst, uint32_t capacityBytes) noexcept
        : start_(dst), next_(dst), room_(capacityBytes / sizeof(Unit))
    {
    }
    // Room for n more units, or null when they do not all fit: a character
    // that does not fit leaves none of its units behind.
    Unit *take(std::size_t n) noexcept
    {
        if (n > room_)
            return nullptr;
        Unit *at = next_;
        next_ += n;
        room_ -= n;
        return at;
    }
    std::size_t units() const noexcept { return static_cast<std::size_t>(next_ - start_); }

  private:
    Unit *start_;
    Unit *next_;
    std::size_t room_;
};

// Copies whole blocks of ASCII from p on while they fit, advancing p; stops
// at the first block that holds anything else, and at the last partial block.
template <class Source, class Output> void copyAsciiBlocks(const Source *&p, const Source *end, Output &out) noexcept
{
    while (static_cast<std::size_t>(end - p) >= kMaxTake) {
        uint32_t any = 0;
        for (std::size_t i = 0; i < kMaxTake; ++i)
            any |= p[i];
        if (any >= 0x80)
            return;
        auto *at = out.take(kMaxTake);
        if (at == nullptr)
            return;
        // Through a local block, which cannot alias the source, so that the
        // compiler may widen or narrow all units at once.
        using Unit = std::remove_pointer_t<decltype(at)>;
        Unit block[kMaxTake];
        for (std::size_t i = 0; i < kMaxTake; ++i)
            block[i] = static_cast<Unit>(p[i]);
        std::memcpy(at, block, sizeof block);
        p += kMaxTake;
    }
}

// Converts the source [p, end) into out: whole blocks of ASCII at a time
// where it can, else one character at a time through one(p, out), which
// moves p past the character and returns its status. After a block that is
// not all ASCII, a block's worth of source goes through one() before the
// next try, so that mostly non-ASCII text is not tested twice over.
template <class Source, class Output, class One>
int32_t convertCharacters(const Source *p, const Source *end, Output &out, One &&one) noexcept
{
    while (p != end) {
        copyAsciiBlocks(p, end, out);
        const Source *stop = p + std::min<std::size_t>(kMaxTake, static_cast<std::size_t>(end - p));
        while (p < stop)
            if (const int32_t status = one(p, out); status != SM_STATUS_SUCCESS)
                return status;
    }
    return SM_STATUS_SUCCESS;
}

// Runs walk(output) into dst, or as a size query when dst is null (then the
// capacity in *size is not looked at), and ends the text with a zero unit.
// *size receives the bytes of the whole result, terminator included, only on
// success; after a failure dst holds what was converted, unterminated.
template <class Unit, class Walk> int32_t convertText(Unit *dst, uint32_t *size, Walk &&walk) noexcept
{
    auto finish = [size](auto &out, int32_t status) noexcept {
        if (status != SM_STATUS_SUCCESS)
            return status;
        Unit *terminator = out.take(1);
        if (terminator == nullptr)
            return static_cast<int32_t>(SM_STATUS_BUFFER_TOO_SMALL);
        *terminator = 0;
        *size = static_cast<uint32_t>(out.units() * sizeof(Unit));
        return static_cast<int32_t>(SM_STATUS_SUCCESS);
    };
    if (dst == nullptr) {
        CountingOutput<Unit> out;
        return finish(out, walk(out));
    }
    BufferOutput<Unit> out(dst, *size);
    return finish(out, walk(out));
}

}  // namespace zksupt::text
