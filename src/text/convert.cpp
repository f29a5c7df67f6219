#include "text/convert.h"

#include <cstring>

#include "text/codec.h"
#include "text/conversion_output.h"
#include "text/units.h"

namespace zksupt::text {
namespace {

// Puts one character's `units` output units, written by encode, or fails
// without writing: 0 units means that it has no form in the output.
template <class Output, class Encode>
int32_t put(Output &out, uint32_t codePoint, uint32_t units, Encode encode) noexcept
{
    if (units == 0)
        return SM_STATUS_BAD_OBJECT;
    auto *at = out.take(units);
    if (at == nullptr)
        return SM_STATUS_BUFFER_TOO_SMALL;
    encode(codePoint, units, at);
    return SM_STATUS_SUCCESS;
}

}  // namespace

int32_t ucs2ToUtf8(char *dst, uint32_t *size, const ucs2 *src) noexcept
{
    if (src == nullptr || size == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    const ucs2 *end = src + length(src);
    auto one = [src](const ucs2 *&p, auto &out) noexcept {
        const uint32_t unit = *p++;
        if (!isSurrogate(unit))
            return put(out, unit, utf8BytesBmp(unit), encodeUtf8Bmp);
        const Decoded pair = decodeOpeningPair(src);
        return put(out, pair.codePoint, pair.units == 0 ? 0 : utf8Bytes(pair.codePoint), encodeUtf8);
    };
    return convertText(dst, size, [&](auto &out) noexcept { return convertCharacters(src, end, out, one); });
}

int32_t utf8ToUcs2(ucs2 *dst, uint32_t *size, const char *src) noexcept
{
    if (src == nullptr || size == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    const auto *begin = reinterpret_cast<const unsigned char *>(src);
    const auto *end = begin + std::strlen(src);
    auto one = [end](const unsigned char *&p, auto &out) noexcept {
        const Decoded in = decodeUtf8(p, static_cast<std::size_t>(end - p));
        p += in.units;
        return put(out, in.codePoint, in.units == 0 ? 0 : ucs2Units(in.codePoint), encodeUcs2);
    };
    return convertText(dst, size, [&](auto &out) noexcept { return convertCharacters(begin, end, out, one); });
}

}  // namespace zksupt::text
