// Typed values as text and back: every code and flag, the integer limits,
// statuses, capacities, and round trips.
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "sdo/sdo_test_util.h"

namespace zksupt::test {
namespace {

// A UCS-2 string's bytes in host order, terminator included unless asked.
Bytes units(std::u16string_view s, bool terminated = true)
{
    Bytes b((s.size() + terminated) * 2, 0);
    std::memcpy(b.data(), s.data(), s.size() * 2);
    return b;
}

// Parses text with a generous buffer: the status and the bytes *size names.
std::pair<int32_t, Bytes> parse(uint32_t type, const char *text)
{
    Bytes buffer(256, 0xEE);
    uint32_t size = 256;
    const int32_t status = SMXLTUTF8ToTypeValue(text, buffer.data(), &size, type);
    buffer.resize(status == 0 ? size : 0);
    return {status, buffer};
}

// Formats a value that ends where readable memory does: its text, or the
// status as text when it fails.
std::string format(uint32_t type, const Bytes &value)
{
    std::string text(512, '\x7f');
    uint32_t size = 512;
    const PageEnd atEnd(value);
    const int32_t status =
        SMXLTTypeValueToUTF8(atEnd.data(), static_cast<uint32_t>(value.size()), text.data(), &size, type);
    return status == 0 ? text.substr(0, size - 1) : std::to_string(status);
}

TEST(TypeText, ParsesEveryCode)
{
    const std::tuple<uint32_t, const char *, int32_t, Bytes> cases[] = {
        {1, "127", 0, of<int8_t>(127)},
        {1, "-128", 0, of<int8_t>(-128)},
        {1, "128", 0x122, {}},
        {1, "-129", 0x123, {}},
        {0x401, "0x7f", 0, of<int8_t>(127)},
        {0x401, "80", 0x122, {}},
        {0x201, "177", 0, of<int8_t>(127)},
        {2, "32767", 0, of<int16_t>(32767)},
        {2, "-32768", 0, of<int16_t>(-32768)},
        {2, "32768", 0x122, {}},
        {2, "-32769", 0x123, {}},
        {0x302, "+12", 0, of<int16_t>(12)},
        {3, "-2147483648", 0, of<int32_t>(INT32_MIN)},
        {3, "2147483648", 0, of<int32_t>(INT32_MAX)},
        {0x403, "FFFFFFFF", 0, of<int32_t>(INT32_MAX)},
        {4, "-9223372036854775808", 0, of<int64_t>(INT64_MIN)},
        {0x204, "777", 0, of<int64_t>(511)},
        {0x404, "0x7FFFFFFFFFFFFFFF", 0, of<int64_t>(INT64_MAX)},
        {0x404, "12345678901234567", 0x10F, {}},
        {5, "255", 0, of<uint8_t>(255)},
        {5, "256", 0x122, {}},
        {5, "-1", 0x122, {}},
        {6, "65536", 0x122, {}},
        {0x406, "0XfFfF", 0, of<uint16_t>(65535)},
        {7, "-1", 0, of<uint32_t>(UINT32_MAX)},
        {7, "4294967296", 0, of<uint32_t>(UINT32_MAX)},
        {0x407, "123456789", 0x10F, {}},
        {0x207, "37777777777", 0, of<uint32_t>(UINT32_MAX)},
        {8, "-1", 0, of<uint64_t>(UINT64_MAX)},
        {8, "18446744073709551615", 0, of<uint64_t>(UINT64_MAX)},
        {0x408, "ffffffffffffffff", 0, of<uint64_t>(UINT64_MAX)},
        {0x208, "1777777777777777777777", 0, of<uint64_t>(UINT64_MAX)},
        {0, "TRUE", 0, of<uint16_t>(1)},
        {0, "false", 0, of<uint16_t>(0)},
        {9, "-42", 0, of<double>(-42.0)},
        {9, "2.5e3", 0, of<double>(2500.0)},
        {9, "9007199254740993", 0, of<double>(9007199254740993.0)},
        {10, "ko", 0, of<uint32_t>(2066)},
        {10, "zh_TW", 0, of<uint32_t>(1028)},
        {10, "EN_US", -1, {}},
        {11, "Thu Jan  1 00:00:00 1970", 2, {}},
        {17, "1", 2, {}},
        {12, "01aB", 0, {0x01, 0xAB}},
        {12, "0aF", 0, {0x0A, 0x0F}},
        {12, "", 0, {}},
        {12, "g0", -1, {}},
        {0x40C, "0x1,2,0xff", 0, {1, 2, 0xFF}},
        {0x40C, "1,,2", -1, {}},
        {0x40C, "0x100", -1, {}},
        {0x10C, "00", 2, {}},
        {0x410, "ff00", 0, {0xFF, 0}},
        {13, "h\xC3\xA9", 0, Bytes{'h', 0xC3, 0xA9, 0}},
        {14, "a\xC3\xA9", 0, units(u"a\u00E9")},
        {15, "10.1.2.254", 0, {10, 1, 2, 254}},
        {15, "no address", -1, {}},
        // text that is no number of its radix
        {3, "", 0x10F, {}},
        {3, "+", 0x10F, {}},
        {3, "-", 0x10F, {}},
        {3, " 1", 0x10F, {}},
        {3, "1 ", 0x10F, {}},
        {3, "0x10", 0x10F, {}},
        {0x203, "8", 0x10F, {}},
        {0x203, "-1", 0x10F, {}},
        {0x403, "0x", 0x10F, {}},
        {0x403, "g", 0x10F, {}},
        {0x103, "1", 0x10F, {}},
        {0x503, "1", 0x10F, {}},
        {4, "1.5", 0x10F, {}},
        {0x204, "9", 0x10F, {}},
        {8, "+", 0x10F, {}},
        {0x408, "0x", 0x10F, {}},
        {5, "x", 0x10F, {}},
        {0, "yes", 0x10F, {}},
        {0, "", 0x10F, {}},
    };
    for (const auto &[type, text, status, bytes] : cases)
        EXPECT_EQ(parse(type, text), std::make_pair(status, bytes)) << std::hex << type << " " << text;
}

TEST(TypeText, ParsingChecksArgumentsThenCapacity)
{
    uint8_t buffer[8] = {0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE};
    uint32_t size = 8;
    const std::vector<int32_t> refused{SMXLTUTF8ToTypeValue(nullptr, buffer, &size, 3),
                                       SMXLTUTF8ToTypeValue("1", buffer, nullptr, 3),
                                       SMXLTUTF8ToTypeValue("1", nullptr, &size, 3)};
    EXPECT_EQ(refused, std::vector<int32_t>(3, 0x10F));
    size = 0;
    EXPECT_EQ(SMXLTUTF8ToTypeValue("junk", nullptr, &size, 4), 0x10);
    EXPECT_EQ(size, 8u) << "a capacity of 0 with no buffer asks for the size";
    const std::tuple<uint32_t, const char *, uint32_t, uint32_t> tooSmall[] = {
        {0, "true", 1, 2},      {3, "1", 3, 4},        {4, "1", 7, 8},       {9, "1", 7, 8},
        {10, "de", 3, 4},       {15, "1.2.3.4", 3, 4}, {13, "abc", 3, 4},    {12, "0102", 1, 2},
        {0x40C, "1,2,3", 2, 3}, {14, "ab", 5, 6},      {16, "abcdef", 2, 3},
    };
    for (const auto &[type, text, capacity, need] : tooSmall) {
        size = capacity;
        EXPECT_EQ(SMXLTUTF8ToTypeValue(text, buffer, &size, type), 0x10) << type;
        EXPECT_EQ(size, need) << type;
    }
    EXPECT_EQ(Bytes(buffer, buffer + 8), Bytes(8, 0xEE)) << "nothing written when it does not fit";
}

TEST(TypeText, FormatsEveryCode)
{
    setenv("TZ", "UTC0", 1);  // the time text is local time
    tzset();
    const std::tuple<uint32_t, Bytes, std::string> cases[] = {
        {1, of<int8_t>(-128), "-128"},
        {0x401, of<int8_t>(-1), "0xffffffff"},
        {0x201, of<int8_t>(8), "10"},
        {0x101, of<int8_t>(5), "101"},
        {0x101, of<int8_t>(-1), std::string(32, '1')},
        {3, of<int16_t>(1), "271"},
        {0x302, of<int16_t>(-32768), "-32768"},
        {3, of<int32_t>(INT32_MIN), "-2147483648"},
        {0x403, of<int32_t>(0x1f), "0x1f"},
        {5, of<uint8_t>(255), "255"},
        {0x405, of<uint8_t>(255), "0xff"},
        {0x105, of<uint8_t>(255), "11111111"},
        {0x205, of<uint8_t>(255), "377"},
        {6, of<uint16_t>(65535), "65535"},
        {7, of<uint32_t>(UINT32_MAX), "4294967295"},
        {0x207, of<uint32_t>(UINT32_MAX), "37777777777"},
        {4, of<int64_t>(INT64_MIN), "-9223372036854775808"},
        {0x404, of<int64_t>(-1), "-1"},
        {8, of<uint64_t>(UINT64_MAX), "18446744073709551615"},
        {0x408, of<uint64_t>(16), "16"},
        {0, of<uint16_t>(1), "true"},
        {0, of<uint16_t>(2), "false"},
        {9, of<double>(2.5), "2.500"},
        {9, of<double>(-1.0006), "-1.001"},
        {9, of<double>(1e40), "10000000000000000303786028427003666890752.000"},
        {10, of<uint32_t>(2066), "ko"},
        {10, of<uint32_t>(1), "en_US"},
        {11, of<int32_t>(0), "Thu Jan  1 00:00:00 1970"},
        {12, {0x01, 0xAB, 0x00}, "01AB00"},
        {0x40C, {0x01, 0xAB}, "0x01,0xAB"},
        {0x20C, {1}, "2"},
        {0x410, {0xFE, 0x0}, "FE00"},
        {16, Bytes(63, 0xAA), std::string(126, 'A')},
        {16, Bytes(64, 0), "-1"},
        {13, {'h', 'i', 0, 'x'}, "hi"},
        {14, units(u"a\u20AC"), "a\xE2\x82\xAC"},
        // A UCS-2 value without a terminator ends at its size, a lone last
        // byte dropped.
        {14, units(u"ab", false), "ab"},
        {14, Bytes{'?'}, ""},
        {15, {192, 168, 0, 1}, "192.168.0.1"},
        {17, of<uint32_t>(1), "2"},
    };
    for (const auto &[type, value, text] : cases)
        EXPECT_EQ(format(type, value), text) << std::hex << type;
    EXPECT_EQ(format(0x10C, Bytes{'A', 0x00, 0xFF}).rfind("0x00000000: 41", 0), 0u);
}

TEST(TypeText, FormattingReportsTheCapacityItNeeds)
{
    const std::tuple<uint32_t, Bytes, uint32_t, uint32_t> cases[] = {
        {0, of<uint16_t>(1), 4, 5},     {0, of<uint16_t>(0), 5, 6},   {1, of<int8_t>(0), 16, 17},
        {0x101, of<int8_t>(0), 32, 33}, {5, of<uint8_t>(0), 15, 16},  {0x107, of<uint32_t>(0), 17, 33},
        {4, of<int64_t>(0), 32, 33},    {8, of<uint64_t>(0), 31, 32}, {9, of<double>(1e40), 32, 46},
        {10, of<uint32_t>(0), 15, 16},  {11, of<int32_t>(0), 63, 64}, {12, {1, 2}, 4, 5},
        {0x40C, {1, 2}, 9, 10},         {13, {'a', 'b', 0}, 2, 3},    {14, units(u"ab"), 2, 3},
        {15, {1, 2, 3, 4}, 7, 8},
    };
    for (const auto &[type, value, capacity, need] : cases) {
        std::string text(need + 1, '#');
        uint32_t size = capacity;
        const auto n = static_cast<uint32_t>(value.size());
        EXPECT_EQ(SMXLTTypeValueToUTF8(value.data(), n, text.data(), &size, type), 0x10) << std::hex << type;
        EXPECT_EQ(size, need) << std::hex << type;
        EXPECT_EQ(text, std::string(need + 1, '#')) << "nothing written";
        EXPECT_EQ(SMXLTTypeValueToUTF8(value.data(), n, text.data(), &size, type), 0);
    }
    uint32_t size = 64;
    char text[64];
    const std::vector<int32_t> refused{SMXLTTypeValueToUTF8(nullptr, 4, text, &size, 3),
                                       SMXLTTypeValueToUTF8(text, 4, text, nullptr, 3),
                                       SMXLTTypeValueToUTF8(text, 4, nullptr, &size, 3)};
    EXPECT_EQ(refused, std::vector<int32_t>(3, 0x10F));
}

TEST(TypeText, RoundTripsThroughText)
{
    const std::pair<uint32_t, Bytes> cases[] = {
        {1, of<int8_t>(-128)},
        {0x201, of<int8_t>(127)},
        {0x402, of<int16_t>(0x7ff)},
        {3, of<int32_t>(INT32_MIN)},
        {0x206, of<uint16_t>(65535)},
        {0x407, of<uint32_t>(UINT32_MAX)},
        {4, of<int64_t>(INT64_MIN)},
        {8, of<uint64_t>(UINT64_MAX)},
        {0, of<uint16_t>(1)},
        {9, of<double>(-1.25)},
        {10, of<uint32_t>(2057)},
        {12, {0, 0x7F, 0xFF}},
        {0x40C, {0xA0}},
        {16, {1, 2, 3}},
        {13, {'x', 0}},
        {15, {127, 0, 0, 1}},
    };
    for (const auto &[type, value] : cases)
        EXPECT_EQ(parse(type, format(type, value).c_str()), std::make_pair(0, value)) << std::hex << type;
}

}  // namespace
}  // namespace zksupt::test
