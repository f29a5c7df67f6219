// Typed values as text and back: every code and flag, the integer limits,
// statuses and capacities. The radix checks themselves are the number-text
// helpers' (tests/text_helpers); here only what the typed parse adds.
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "sdo/sdo_test_util.h"
#include "support/status_names.h"

namespace zksupt::test {
namespace {

// A UCS-2 string's bytes in host order, terminator included unless asked.
Bytes units(std::u16string_view s, bool terminated = true)
{
    Bytes b((s.size() + terminated) * 2, 0);
    std::memcpy(b.data(), s.data(), s.size() * 2);
    return b;
}

// Parses text with a generous buffer: the bytes *size names, or the status.
std::string parse(uint32_t type, const char *text)
{
    Bytes buffer(256, 0xEE);
    uint32_t size = 256;
    const int32_t status = SMXLTUTF8ToTypeValue(text, buffer.data(), &size, type);
    return status == SM_STATUS_SUCCESS ? std::string(buffer.begin(), buffer.begin() + size) : statusName(status);
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
    return status == SM_STATUS_SUCCESS ? text.substr(0, size - 1) : statusName(status);
}

template <class T> std::string as(T value)
{
    const Bytes bytes = bytesOf(value);
    return {bytes.begin(), bytes.end()};
}

TEST(TypeText, ParsesEveryCode)
{
    const std::tuple<uint32_t, const char *, std::string> cases[] = {
        {1, "127", as<int8_t>(127)},
        {1, "-128", as<int8_t>(-128)},
        {1, "128", "VALUE_TOO_LARGE"},
        {1, "-129", "VALUE_TOO_SMALL"},
        {0x401, "0x7f", as<int8_t>(127)},
        {0x401, "80", "VALUE_TOO_LARGE"},
        {0x201, "177", as<int8_t>(127)},
        {2, "32767", as<int16_t>(32767)},
        {2, "-32768", as<int16_t>(-32768)},
        {2, "32768", "VALUE_TOO_LARGE"},
        {2, "-32769", "VALUE_TOO_SMALL"},
        {0x302, "+12", as<int16_t>(12)},
        {3, "-2147483648", as<int32_t>(INT32_MIN)},
        {3, "2147483648", as<int32_t>(INT32_MAX)},
        {0x403, "FFFFFFFF", as<int32_t>(INT32_MAX)},
        {4, "-9223372036854775808", as<int64_t>(INT64_MIN)},
        {0x204, "777", as<int64_t>(511)},
        {0x404, "0x7FFFFFFFFFFFFFFF", as<int64_t>(INT64_MAX)},
        {0x404, "12345678901234567", "INVALID_PARAMETER"},
        {5, "255", as<uint8_t>(255)},
        {5, "256", "VALUE_TOO_LARGE"},
        {5, "-1", "VALUE_TOO_LARGE"},
        {6, "65536", "VALUE_TOO_LARGE"},
        {0x406, "0XfFfF", as<uint16_t>(65535)},
        {7, "-1", as<uint32_t>(UINT32_MAX)},
        {7, "4294967296", as<uint32_t>(UINT32_MAX)},
        {0x407, "123456789", "INVALID_PARAMETER"},
        {0x207, "37777777777", as<uint32_t>(UINT32_MAX)},
        {8, "-1", as<uint64_t>(UINT64_MAX)},
        {8, "18446744073709551615", as<uint64_t>(UINT64_MAX)},
        {0x408, "ffffffffffffffff", as<uint64_t>(UINT64_MAX)},
        {0x208, "1777777777777777777777", as<uint64_t>(UINT64_MAX)},
        {0, "TRUE", as<uint16_t>(1)},
        {0, "false", as<uint16_t>(0)},
        {0, "yes", "INVALID_PARAMETER"},
        {9, "-42", as(-42.0)},
        {9, "2.5e3", as(2500.0)},
        {9, "9007199254740993", as(9007199254740993.0)},
        {10, "ko", as<uint32_t>(2066)},
        {10, "zh_TW", as<uint32_t>(1028)},
        {10, "EN_US", "FAILURE"},
        {11, "Thu Jan  1 00:00:00 1970", "BAD_ARGUMENT"},
        {17, "1", "BAD_ARGUMENT"},
        {12, "01aB", "\x01\xAB"},
        {12, "0aF", "\x0A\x0F"},
        {12, "", ""},
        {12, "g0", "FAILURE"},
        {0x40C, "0x1,2,0xff", "\x01\x02\xFF"},
        {0x40C, "1,,2", "FAILURE"},
        {0x40C, "0x100", "FAILURE"},
        {0x10C, "00", "BAD_ARGUMENT"},
        {0x410, "ff00", std::string("\xFF\0", 2)},
        {13, "h\xC3\xA9", std::string("h\xC3\xA9\0", 4)},
        {15, "10.1.2.254", "\x0A\x01\x02\xFE"},
        {15, "no address", "FAILURE"},
        // no digits, an unknown or binary flag, a fraction
        {3, "", "INVALID_PARAMETER"},
        {3, "+", "INVALID_PARAMETER"},
        {8, "+", "INVALID_PARAMETER"},
        {0x103, "1", "INVALID_PARAMETER"},
        {0x503, "1", "INVALID_PARAMETER"},
        {4, "1.5", "INVALID_PARAMETER"},
    };
    for (const auto &[type, text, expected] : cases)
        EXPECT_EQ(parse(type, text), expected) << std::hex << type << " " << text;
    const Bytes wide = units(u"a\u00E9");
    EXPECT_EQ(parse(14, "a\xC3\xA9"), std::string(wide.begin(), wide.end()));
}

TEST(TypeText, ParsingChecksArgumentsThenCapacity)
{
    uint8_t buffer[8] = {0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE};
    uint32_t size = 8;
    EXPECT_EQ(SMXLTUTF8ToTypeValue(nullptr, buffer, &size, 3), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMXLTUTF8ToTypeValue("1", buffer, nullptr, 3), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMXLTUTF8ToTypeValue("1", nullptr, &size, 3), SM_STATUS_INVALID_PARAMETER);
    size = 0;
    EXPECT_EQ(SMXLTUTF8ToTypeValue("junk", nullptr, &size, 4), SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(size, 8u) << "a capacity of 0 with no buffer asks for the size";
    // {type, text, capacity, the size it needs}
    const std::tuple<uint32_t, const char *, uint32_t, uint32_t> tooSmall[] = {
        {0, "true", 1, 2},      {3, "1", 3, 4},        {4, "1", 7, 8},       {9, "1", 7, 8},
        {10, "de", 3, 4},       {15, "1.2.3.4", 3, 4}, {13, "abc", 3, 4},    {12, "0102", 1, 2},
        {0x40C, "1,2,3", 2, 3}, {14, "ab", 5, 6},      {16, "abcdef", 2, 3},
    };
    for (const auto &[type, text, capacity, need] : tooSmall) {
        size = capacity;
        EXPECT_EQ(SMXLTUTF8ToTypeValue(text, buffer, &size, type), SM_STATUS_BUFFER_TOO_SMALL) << type;
        EXPECT_EQ(size, need) << type;
    }
    EXPECT_EQ(Bytes(buffer, buffer + 8), Bytes(8, 0xEE)) << "nothing written when it does not fit";
}

TEST(TypeText, FormatsEveryCode)
{
    setenv("TZ", "UTC0", 1);  // the time text is local time
    tzset();
    const std::tuple<uint32_t, Bytes, std::string> cases[] = {
        {1, bytesOf<int8_t>(-128), "-128"},
        {0x401, bytesOf<int8_t>(-1), "0xffffffff"},
        {0x201, bytesOf<int8_t>(8), "10"},
        {0x101, bytesOf<int8_t>(5), "101"},
        {0x101, bytesOf<int8_t>(-1), std::string(32, '1')},
        {3, bytesOf<int16_t>(1), "INVALID_PARAMETER"},  // a value shorter than its type
        {0x302, bytesOf<int16_t>(-32768), "-32768"},
        {3, bytesOf<int32_t>(INT32_MIN), "-2147483648"},
        {0x403, bytesOf<int32_t>(0x1f), "0x1f"},
        {5, bytesOf<uint8_t>(255), "255"},
        {0x405, bytesOf<uint8_t>(255), "0xff"},
        {0x105, bytesOf<uint8_t>(255), "11111111"},
        {0x205, bytesOf<uint8_t>(255), "377"},
        {6, bytesOf<uint16_t>(65535), "65535"},
        {7, bytesOf<uint32_t>(UINT32_MAX), "4294967295"},
        {0x207, bytesOf<uint32_t>(UINT32_MAX), "37777777777"},
        {4, bytesOf<int64_t>(INT64_MIN), "-9223372036854775808"},
        {0x404, bytesOf<int64_t>(-1), "-1"},
        {8, bytesOf<uint64_t>(UINT64_MAX), "18446744073709551615"},
        {0x408, bytesOf<uint64_t>(16), "16"},
        {0, bytesOf<uint16_t>(1), "true"},
        {0, bytesOf<uint16_t>(2), "false"},
        {9, bytesOf(2.5), "2.500"},
        {9, bytesOf(-1.0006), "-1.001"},
        {9, bytesOf(1e40), "10000000000000000303786028427003666890752.000"},
        {10, bytesOf<uint32_t>(2066), "ko"},
        {10, bytesOf<uint32_t>(1), "en_US"},
        {11, bytesOf<int32_t>(0), "Thu Jan  1 00:00:00 1970"},
        {12, {0x01, 0xAB, 0x00}, "01AB00"},
        {0x40C, {0x01, 0xAB}, "0x01,0xAB"},
        {0x20C, {1}, "BAD_ARGUMENT"},
        {0x410, {0xFE, 0x0}, "FE00"},
        {16, Bytes(63, 0xAA), std::string(126, 'A')},
        {16, Bytes(64, 0), "FAILURE"},
        {13, {'h', 'i', 0, 'x'}, "hi"},
        {14, units(u"a\u20AC"), "a\xE2\x82\xAC"},
        // A UCS-2 value without a terminator ends at its size, a lone last
        // byte dropped.
        {14, units(u"ab", false), "ab"},
        {14, Bytes{'?'}, ""},
        {15, {192, 168, 0, 1}, "192.168.0.1"},
        {17, bytesOf<uint32_t>(1), "BAD_ARGUMENT"},
    };
    for (const auto &[type, value, text] : cases)
        EXPECT_EQ(format(type, value), text) << std::hex << type;
    EXPECT_EQ(format(0x10C, Bytes{'A', 0x00, 0xFF}).rfind("0x00000000: 41", 0), 0u);
}

// {type, value, capacity, the size it needs}: a capacity below the type's
// minimum (or the exact need of the variable forms) writes nothing.
TEST(TypeText, FormattingReportsTheCapacityItNeeds)
{
    const std::tuple<uint32_t, Bytes, uint32_t, uint32_t> cases[] = {
        {0, bytesOf<uint16_t>(1), 4, 5},
        {0, bytesOf<uint16_t>(0), 5, 6},
        {1, bytesOf<int8_t>(0), 16, 17},
        {0x101, bytesOf<int8_t>(0), 32, 33},
        {5, bytesOf<uint8_t>(0), 15, 16},
        {0x107, bytesOf<uint32_t>(0), 17, 33},
        {4, bytesOf<int64_t>(0), 32, 33},
        {8, bytesOf<uint64_t>(0), 31, 32},
        {9, bytesOf(1e40), 32, 46},
        {10, bytesOf<uint32_t>(0), 15, 16},
        {11, bytesOf<int32_t>(0), 63, 64},
        {12, {1, 2}, 4, 5},
        {0x40C, {1, 2}, 9, 10},
        {13, {'a', 'b', 0}, 2, 3},
        {14, units(u"ab"), 2, 3},
        {15, {1, 2, 3, 4}, 7, 8},
    };
    for (const auto &[type, value, capacity, need] : cases) {
        std::string text(need + 1, '#');
        uint32_t size = capacity;
        const auto n = static_cast<uint32_t>(value.size());
        EXPECT_EQ(SMXLTTypeValueToUTF8(value.data(), n, text.data(), &size, type), SM_STATUS_BUFFER_TOO_SMALL)
            << std::hex << type;
        EXPECT_EQ(size, need) << std::hex << type;
        EXPECT_EQ(text, std::string(need + 1, '#')) << "nothing written";
        EXPECT_EQ(SMXLTTypeValueToUTF8(value.data(), n, text.data(), &size, type), SM_STATUS_SUCCESS);
    }
    uint32_t size = 64;
    char text[64];
    EXPECT_EQ(SMXLTTypeValueToUTF8(nullptr, 4, text, &size, 3), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMXLTTypeValueToUTF8(text, 4, text, nullptr, 3), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMXLTTypeValueToUTF8(text, 4, nullptr, &size, 3), SM_STATUS_INVALID_PARAMETER);
}

}  // namespace
}  // namespace zksupt::test
