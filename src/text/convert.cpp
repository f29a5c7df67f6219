#include "text/convert.h"

#include <cstring>

#include "text/codec.h"
#include "text/conversion_output.h"
#include "text/units.h"

namespace zksupt::text {
namespace {

constexpr int32_t kTooSmall = SM_STATUS_BUFFER_TOO_SMALL;
constexpr int32_t kUnconvertible = SM_STATUS_BAD_OBJECT;

}  // namespace

int32_t ucs2ToUtf8(char *dst, uint32_t *size, const ucs2 *src) noexcept
{
    if (src == nullptr || size == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    const ucs2 *end = src + length(src);
    auto one = [src](const ucs2 *&p, auto &out) noexcept {
        uint32_t codePoint = *p++;
        if (isSurrogate(codePoint)) {
            const Decoded pair = decodeOpeningPair(src);
            if (pair.units == 0)
                return kUnconvertible;
            codePoint = pair.codePoint;
        }
        const uint32_t bytes = utf8Bytes(codePoint);
        if (bytes == 0)
            return kUnconvertible;
        char *at = out.take(bytes);
        if (at == nullptr)
            return kTooSmall;
        encodeUtf8(codePoint, bytes, at);
        return static_cast<int32_t>(SM_STATUS_SUCCESS);
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
        const uint32_t units = in.units == 0 ? 0 : ucs2Units(in.codePoint);
        if (units == 0)
            return kUnconvertible;
        ucs2 *at = out.take(units);
        if (at == nullptr)
            return kTooSmall;
        encodeUcs2(in.codePoint, units, at);
        p += in.units;
        return static_cast<int32_t>(SM_STATUS_SUCCESS);
    };
    return convertText(dst, size, [&](auto &out) noexcept { return convertCharacters(begin, end, out, one); });
}

}  // namespace zksupt::text
