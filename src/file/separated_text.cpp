// Separated values: one separator swapped for another.
#include "file/separated_text.h"

#include <algorithm>
#include <cstring>

#include "frame/memory.h"

namespace zksupt::file {

char *convertSeparators(const char *text, uint32_t *size, char from, char to) noexcept
{
    if (text == nullptr)
        return nullptr;
    const std::size_t length = std::strlen(text);
    if (length > UINT32_MAX - 2)
        return nullptr;
    auto *copy = static_cast<char *>(frame::allocate(static_cast<uint32_t>(length + 2)));
    if (copy == nullptr)
        return nullptr;
    std::replace_copy(text, text + length, copy, from, to);
    copy[length] = to;
    copy[length + 1] = '\0';
    if (size != nullptr)
        *size = static_cast<uint32_t>(length + 2);
    return copy;
}

}  // namespace zksupt::file
