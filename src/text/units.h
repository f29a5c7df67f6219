// String algorithms over zero-terminated arrays of code units, shared by the
// UCS-2 family (16-bit units) and the UTF-8 helpers (bytes).
#pragma once

#include <cstddef>
#include <utility>

namespace zksupt::text {

// Number of units before the terminator.
template <class Unit> std::size_t length(const Unit *s) noexcept
{
    const Unit *end = s;
    while (*end != 0)
        ++end;
    return static_cast<std::size_t>(end - s);
}

// True when unit occurs in the zero-terminated set (its terminator excluded).
template <class Unit> bool occursIn(Unit unit, const Unit *set) noexcept
{
    for (; *set != 0; ++set)
        if (*set == unit)
            return true;
    return false;
}

// Number of leading units of s that occur in set (inSet) or do not (!inSet).
template <bool inSet, class Unit> std::size_t prefixLength(const Unit *s, const Unit *set) noexcept
{
    std::size_t n = 0;
    while (s[n] != 0 && occursIn(s[n], set) == inSet)
        ++n;
    return n;
}

// Reverses the units before the terminator in place: the first with the
// last, the second with the second-to-last, until the two meet.
template <class Unit> void reverse(Unit *s) noexcept
{
    std::size_t n = length(s);
    for (std::size_t i = 0; i < n / 2; ++i)
        std::swap(s[i], s[n - 1 - i]);
}

}  // namespace zksupt::text
