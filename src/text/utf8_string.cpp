#include "text/utf8_string.h"

#include <cctype>
#include <cstring>
#include <strings.h>

#include "frame/memory.h"
#include "text/units.h"

namespace zksupt::text {
namespace {

template <class Change> char *changeEachByte(char *s, Change change) noexcept
{
    for (char *p = s; *p != '\0'; ++p)
        *p = static_cast<char>(change(static_cast<unsigned char>(*p)));
    return s;
}

bool isBlank(char c) noexcept
{
    return c == '\t' || c == '\n' || c == '\r' || c == ' ';
}

int foldAsciiUpper(unsigned char c) noexcept
{
    return c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c;
}

}  // namespace

char *utf8UpperCase(char *s) noexcept
{
    return changeEachByte(s, [](unsigned char c) noexcept { return std::toupper(c); });
}

char *utf8LowerCase(char *s) noexcept
{
    return changeEachByte(s, [](unsigned char c) noexcept { return std::tolower(c); });
}

void utf8Reverse(char *s) noexcept
{
    reverse(s);
}

char *utf8TrimLeft(char *s) noexcept
{
    if (s == nullptr)
        return nullptr;
    for (; isBlank(*s); ++s)
        *s = '\0';
    return s;
}

char *utf8TrimRight(char *s) noexcept
{
    if (s == nullptr)
        return nullptr;
    for (std::size_t n = std::strlen(s); n > 0 && isBlank(s[n - 1]); --n)
        s[n - 1] = '\0';
    return s;
}

char *utf8Trim(char *s) noexcept
{
    return utf8TrimRight(utf8TrimLeft(s));
}

char *utf8Duplicate(const char *s, uint32_t *allocated) noexcept
{
    char *copy = nullptr;
    const std::size_t bytes = s == nullptr ? 0 : std::strlen(s) + 1;
    if (bytes != 0 && bytes <= UINT32_MAX)
        copy = static_cast<char *>(frame::allocate(static_cast<uint32_t>(bytes)));
    if (copy != nullptr)
        std::memcpy(copy, s, bytes);
    if (allocated != nullptr)
        *allocated = copy == nullptr ? 0 : static_cast<uint32_t>(bytes);
    return copy;
}

int32_t utf8CompareFoldedN(const char *a, const char *b, uint32_t n) noexcept
{
    int32_t difference = 0;
    for (uint32_t i = 0; i < n; ++i) {
        const auto byteA = static_cast<unsigned char>(a[i]);
        difference = foldAsciiUpper(byteA) - foldAsciiUpper(static_cast<unsigned char>(b[i]));
        if (difference != 0 || byteA == 0)
            break;
    }
    return difference;
}

char *utf8FindCaseless(const char *s, const char *sub) noexcept
{
    if (s == nullptr || sub == nullptr)
        return nullptr;
    const std::size_t m = std::strlen(sub);
    const std::size_t total = std::strlen(s);
    if (m > total)
        return nullptr;
    for (std::size_t start = 0; start <= total - m; ++start)
        if (strncasecmp(s + start, sub, m) == 0)
            return const_cast<char *>(s + start);
    return nullptr;
}

}  // namespace zksupt::text
