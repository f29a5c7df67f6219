#include "text/ucs2_string.h"

#include <algorithm>
#include <cstring>

#include "text/units.h"

namespace zksupt::text {
namespace {

ucs2 lowUnit(uint32_t c) noexcept
{
    return static_cast<ucs2>(c & 0xFFFF);
}

}  // namespace

uint32_t ucs2Length(const ucs2 *s) noexcept
{
    return static_cast<uint32_t>(length(s));
}

ucs2 *ucs2Copy(ucs2 *dst, const ucs2 *src) noexcept
{
    std::memmove(dst, src, (length(src) + 1) * sizeof(ucs2));
    return dst;
}

ucs2 *ucs2CopyN(ucs2 *dst, const ucs2 *src, uint32_t n) noexcept
{
    for (uint32_t i = 0; i < n; ++i) {
        dst[i] = src[i];
        if (src[i] == 0)
            break;
    }
    return dst;
}

ucs2 *ucs2Append(ucs2 *dst, const ucs2 *src) noexcept
{
    ucs2Copy(dst + length(dst), src);
    return dst;
}

ucs2 *ucs2AppendN(ucs2 *dst, const ucs2 *src, uint32_t n) noexcept
{
    if (n == 0)
        return dst;
    ucs2 *end = dst + length(dst);
    uint32_t i = 0;
    for (; i < n && src[i] != 0; ++i)
        end[i] = src[i];
    end[i] = 0;
    return dst;
}

uint32_t ucs2Compare(const ucs2 *a, const ucs2 *b) noexcept
{
    while (*a == *b && *a != 0) {
        ++a;
        ++b;
    }
    return static_cast<uint16_t>(*a - *b);
}

ucs2 *ucs2FindUnit(const ucs2 *s, uint32_t c) noexcept
{
    const ucs2 unit = lowUnit(c);
    for (;; ++s) {
        if (*s == unit)
            return const_cast<ucs2 *>(s);
        if (*s == 0)
            return nullptr;
    }
}

ucs2 *ucs2FindString(const ucs2 *s, const ucs2 *sub) noexcept
{
    const std::size_t m = length(sub);
    if (m == 0)
        return const_cast<ucs2 *>(s);
    const std::size_t total = length(s);
    // Every start leaves at least m units, so the comparison stays inside s.
    for (std::size_t start = 0; total - start >= m; ++start)
        if (std::equal(sub, sub + m, s + start))
            return const_cast<ucs2 *>(s + start);
    return nullptr;
}

uint32_t ucs2Span(const ucs2 *s, const ucs2 *set) noexcept
{
    return static_cast<uint32_t>(prefixLength<true>(s, set));
}

uint32_t ucs2ComplementSpan(const ucs2 *s, const ucs2 *set) noexcept
{
    return static_cast<uint32_t>(prefixLength<false>(s, set));
}

ucs2 *ucs2Fill(ucs2 *s, uint32_t c) noexcept
{
    std::fill_n(s, length(s), lowUnit(c));
    return s;
}

ucs2 *ucs2FillN(ucs2 *s, uint32_t c, uint32_t n) noexcept
{
    std::fill_n(s, n, lowUnit(c));
    return s;
}

ucs2 *ucs2Reverse(ucs2 *s) noexcept
{
    reverse(s);
    return s;
}

}  // namespace zksupt::text
