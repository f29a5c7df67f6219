// Any text through the number parsers and the byte-list and hex-string
// parsers. The parsers get blocks of exactly the text's size, so reading past
// it is caught; where text can be made back, the round trip must hold.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "text_helpers/byte_text.h"
#include "text_helpers/hex_dump.h"
#include "text_helpers/number_text.h"

namespace {

namespace tx = zksupt::text_helpers;

struct Free {
    void operator()(void *p) const noexcept { std::free(p); }
};
template <class T> using Heap = std::unique_ptr<T, Free>;

void check(bool condition)
{
    if (!condition)
        __builtin_trap();
}

// Bytes made into text by make, parsed back by parse: the same bytes.
template <class Make, class Parse> void roundTrip(const uint8_t *bytes, uint32_t count, Make make, Parse parse)
{
    uint32_t len = count;
    Heap<char> text(make(bytes, &len));
    check(text != nullptr);
    Heap<uint8_t> back(parse(text.get(), &len));
    check(count == 0 || (back != nullptr && len == count && std::memcmp(back.get(), bytes, count) == 0));
}

void numbers(const char *text)
{
    for (uint32_t format : {0u, 0x200u, 0x300u, 0x400u, 0x401u}) {
        uint32_t status = 0;
        const int64_t signed64 = tx::textToInt64(text, format, &status);
        if (status == 0) {  // decimal: the digits read back as written
            char digits[24];
            tx::int64ToDecimal(digits, signed64);
            check(tx::decimalToInt64(digits) == signed64);
        }
        const int32_t signed32 = tx::textToInt32(text, format, &status);
        const uint32_t unsigned32 = tx::textToUint32(text, format, &status);
        if (status == 0 && signed32 >= 0 && signed32 < INT32_MAX)  // below saturation both read the digits alike
            check(unsigned32 == static_cast<uint32_t>(signed32));
        const uint64_t unsigned64 = tx::textToUint64(text, format, &status);
        if (status == 0 && format == 0x400) {  // up to 8 digits both read the same value
            const uint32_t low = tx::textToUint32(text, format, &status);
            check(status != 0 || low == unsigned64);
        }
        tx::textToDoubleByFormat(text, format, &status);
    }
    uint32_t status = 0;
    tx::textToBoolean(text, &status);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size > 0x10000)
        return 0;
    const std::string text(reinterpret_cast<const char *>(data), size);  // ends in NUL
    numbers(text.c_str());

    // The parsers on a block without a terminator, of the text's own size.
    const auto count = static_cast<uint32_t>(size);
    Heap<char> exact(static_cast<char *>(std::malloc(size == 0 ? 1 : size)));
    std::memcpy(exact.get(), data, size);
    uint32_t len = count;
    Heap<uint8_t> listed(tx::byteListParse(exact.get(), &len));
    check(listed == nullptr || len <= count / 5);
    if (listed != nullptr)
        roundTrip(listed.get(), len, tx::byteListText, tx::byteListParse);
    len = count;
    Heap<uint8_t> hexed(tx::hexStringParse(reinterpret_cast<const char *>(data), &len));
    check(hexed == nullptr || len <= count / 2 + 1);

    roundTrip(data, count, tx::byteListText, tx::byteListParse);
    roundTrip(data, count, tx::hexStringText, tx::hexStringParse);
    len = count;
    Heap<char> dump(tx::hexDumpText(data, &len, count));
    check(dump != nullptr && len == (count + 15) / 16 * 81 + 1);
    return 0;
}
