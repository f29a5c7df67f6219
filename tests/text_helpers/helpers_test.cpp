// The shared text helpers: hex dump lines, byte lists and hex strings, and
// number text in both directions with every number format's checks.
#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <limits>
#include <string>
#include <tuple>
#include <vector>

#include <zksupt/status.h>

#include "text_helpers/byte_text.h"
#include "text_helpers/hex_dump.h"
#include "text_helpers/number_text.h"
#include "text_helpers/sized_string.h"

namespace {

namespace tx = zksupt::text_helpers;
using Bytes = std::vector<uint8_t>;

std::string dumpOf(const Bytes &data, uint32_t base)
{
    uint32_t len = static_cast<uint32_t>(data.size());
    char *text = tx::hexDumpText(data.data(), &len, base);
    std::string dump = text != nullptr ? std::string(text, len - 1) : "(null)";
    std::free(text);
    return dump;
}

TEST(HexDump, LineLayout)
{
    EXPECT_EQ(dumpOf({'A', 'B', 'C', 'D', 'E'}, 0x100),
              "0x00000100: 41 42 43 44:45" + std::string(36, ' ') + "ABCDE" + std::string(12, ' ') + "\r\n");
    const Bytes edges{0x1F, 0x20, 0x7A, 0x7B, 0x7C, 0x7E, 0x7F, 0x80, 0xFF, 0, 'a', 'z', '0', '~', '{', 0x30};
    EXPECT_EQ(dumpOf(edges, 0xFFFFFFF8),
              "0xFFFFFFF8: 1F 20 7A 7B:7C 7E 7F 80:FF 00 61 7A:30 7E 7B 30   . z.......az0..0 \r\n");
    Bytes seventeen(17, 0x41);
    const std::string two = dumpOf(seventeen, 0);
    EXPECT_EQ(two.substr(81), "0x00000010: 41" + std::string(48, ' ') + "A" + std::string(16, ' ') + "\r\n");
    EXPECT_EQ(dumpOf({}, 0), "");
    SMSizedString none{};  // no buffer to append to
    EXPECT_EQ(tx::hexDumpAppend(&none, seventeen.data(), 17, 0), SM_STATUS_FAILURE);
}

// The text form and the parsed-back bytes, or "(null)".
template <class Make, class Parse>
std::pair<std::string, std::string> roundTrip(const Bytes &data, Make make, Parse parse)
{
    uint32_t len = static_cast<uint32_t>(data.size());
    const uint8_t none = 0;
    char *text = make(data.empty() ? &none : data.data(), &len);
    const std::string made(text, len - 1);
    uint8_t *back = parse(text, &len);
    const std::string parsed = back ? std::string(back, back + len) : "(null)";
    std::free(text);
    std::free(back);
    return {made, parsed};
}

TEST(ByteText, RoundTrips)
{
    const std::vector<Bytes> sets{{}, {0x01, 0xFF}, {0, 0x7F, 0x80, 0xA5}};
    const std::vector<std::string> lists{"", "0x01,0xFF", "0x00,0x7F,0x80,0xA5"}, hexes{"", "01FF", "007F80A5"};
    for (std::size_t i = 0; i < sets.size(); ++i) {
        const std::string raw(sets[i].begin(), sets[i].end());
        auto [list, listBack] = roundTrip(sets[i], tx::byteListText, tx::byteListParse);
        EXPECT_EQ(list, lists[i]);
        EXPECT_EQ(listBack, i == 0 ? "(null)" : raw);  // one terminator byte is no list of 5
        EXPECT_EQ(roundTrip(sets[i], tx::hexStringText, tx::hexStringParse), std::make_pair(hexes[i], raw));
    }
}

// Parsed bytes, or "(null)" and *len.
TEST(ByteText, ParsersStopWhereTheyMust)
{
    struct Row {
        bool list;
        std::string text;
        uint32_t size;
        std::string bytes;
    };
    for (Row row : std::vector<Row>{{true, "0x01,0xFF", 9, "(null) 9"},
                                    {true, "0x1FF,0x1", 10, "(null) 0"},  // 9: not 5 * n
                                    {true, "0x01,zz,0x02", 15, "\x01"},
                                    {true, ",,7, 0x8,a,b,c,d", 15, "\x07\x08\x0A"},
                                    {false, "ABC", 4, "\xAB\x0C"},
                                    {false, "01G2", 5, "\x01"},
                                    {false, "01-1", 5, "(null) 0"},
                                    {false, "0102", 2, "\x01"}}) {  // the size bounds the text
        uint8_t *got =
            row.list ? tx::byteListParse(row.text.data(), &row.size) : tx::hexStringParse(row.text.c_str(), &row.size);
        EXPECT_EQ(got ? std::string(got, got + row.size) : "(null) " + std::to_string(row.size), row.bytes) << row.text;
        std::free(got);
    }
}

TEST(NumberText, ToText)
{
    char text[40];
    for (int64_t v : {std::numeric_limits<int64_t>::min(), int64_t{-1}, int64_t{0}, int64_t{1234567890123}}) {
        tx::int64ToDecimal(text, v);
        EXPECT_EQ(text, std::to_string(v));
        EXPECT_EQ(tx::decimalToInt64(text), v);
    }
    tx::uint64ToDecimal(text, UINT64_MAX);
    EXPECT_EQ(tx::decimalToUint64(text), UINT64_MAX);
    EXPECT_EQ(tx::decimalToInt64(" \t-12ab"), -12);
    EXPECT_EQ(tx::decimalToUint64("-5") + tx::decimalToUint64("+7") + tx::decimalToUint64("18446744073709551616"), 7u);
    struct Row {
        int32_t value;
        uint32_t radix;
        std::string text;
    };
    for (const Row &row : std::vector<Row>{{0, 2, ""},
                                           {5, 2, "101"},
                                           {INT32_MIN, 2, "1" + std::string(31, '0')},
                                           {-1, 8, "37777777777"},
                                           {-1, 16, "ffffffff"},
                                           {-42, 10, "-42"},
                                           {7, 3, "7"}}) {
        tx::int32ToRadixText(row.value, text, row.radix);
        EXPECT_EQ(text, row.text);
    }
    EXPECT_EQ(tx::doubleToText(text, sizeof text, -2.0 / 3), 6);
    EXPECT_STREQ(text, "-0.667");

    const time_t t = 1700000000, farFuture = sizeof(time_t) > 4 ? INT64_C(253402300800) : 0;  // year 10000
    char ctimeText[32];
    ASSERT_NE(ctime_r(&t, ctimeText), nullptr);
    ctimeText[24] = '\0';
    ASSERT_EQ(tx::timeToText(&t, text, 4), 0);
    EXPECT_EQ(text + std::string(ctimeText + 3, 21), ctimeText);  // cut to 3, no line feed
    EXPECT_EQ(tx::timeToText(nullptr, text, 4), -1);
    EXPECT_EQ(tx::timeToText(&farFuture, text, sizeof text), sizeof(time_t) > 4 ? -1 : 0);
}

constexpr uint32_t kBad = 0x10F;

TEST(NumberText, ThirtyTwoBitFormats)
{
    struct Row {
        const char *text;
        uint32_t format;
        int32_t i;
        uint32_t u;
        uint32_t status;
    };
    const std::vector<Row> rows{{"0x1F", 0x400, 31, 31, 0},
                                {"1f", 0x400, 31, 31, 0},
                                {"0X", 0x400, 0, 0, kBad},
                                {"123456789", 0x400, 0, 0, kBad},
                                {"FFFFFFFF", 0x400, INT32_MAX, UINT32_MAX, 0},
                                {"17", 0x200, 15, 15, 0},
                                {"9", 0x200, 0, 0, kBad},
                                {"", 0x200, 0, 0, kBad},
                                {"+7", 0x200, 0, 0, kBad},
                                {"+", 0, 0, 0, 0},
                                {"", 0x300, 0, 0, 0},
                                {"-5", 0x300, -5, 4294967291u, 0},
                                {" 5", 0, 0, 0, kBad},
                                {"5 ", 0, 0, 0, kBad},
                                {"0x5", 0, 0, 0, kBad},
                                {"4294967296", 0, INT32_MAX, UINT32_MAX, 0},
                                {"-2147483649", 0, INT32_MIN, 2147483647u, 0},
                                {"-99999999999", 0, INT32_MIN, UINT32_MAX, 0},
                                {"12", 0x100, 0, 0, kBad},
                                {nullptr, 0, 0, 0, kBad}};
    for (const Row &row : rows) {
        uint32_t iStatus = 99, uStatus = 99;
        const int32_t i = tx::textToInt32(row.text, row.format, &iStatus);
        const uint32_t u = tx::textToUint32(row.text, row.format, &uStatus);
        EXPECT_EQ(std::tie(i, u, iStatus, uStatus), std::tie(row.i, row.u, row.status, row.status))
            << (row.text ? row.text : "null");
    }
}

TEST(NumberText, SixtyFourBitFormats)
{
    struct Row {
        const char *text;
        uint32_t format;
        int64_t i;
        uint32_t iStatus;
        uint64_t u;
        uint32_t uStatus;
    };
    const std::vector<Row> rows{{"-9223372036854775808", 0, INT64_MIN, 0, 0, 0},
                                {"18446744073709551615", 0x300, -1, 0, UINT64_MAX, 0},
                                {"17", 0x200, 0, 1, 0, 1},
                                {"0xFFFFFFFFFFFFFFFF", 0x400, 0, 1, UINT64_MAX, 0},
                                {"abc", 0, 0, kBad, 0, kBad},
                                {"123456789", 0x400, 0, 1, 0x123456789, 0},
                                {"12345678901234567", 0x400, 0, 1, 0, kBad},
                                {"7", 0x500, 0, kBad, 0, kBad}};
    for (const Row &row : rows) {
        uint32_t iStatus = 99, uStatus = 99;
        const int64_t i = tx::textToInt64(row.text, row.format, &iStatus);
        const uint64_t u = tx::textToUint64(row.text, row.format, &uStatus);
        EXPECT_EQ(std::tie(i, u, iStatus, uStatus), std::tie(row.i, row.u, row.iStatus, row.uStatus)) << row.text;
    }
}

TEST(NumberText, BooleansAndDoubles)
{
    struct Row {
        const char *text;
        uint32_t value, status;
    };
    uint32_t status = 99;
    for (const Row &row :
         std::vector<Row>{{"TRUE", 1, 0}, {"False", 0, 0}, {"yes", 0, kBad}, {"true ", 0, kBad}, {nullptr, 0, kBad}}) {
        const uint32_t value = tx::textToBoolean(row.text, &status);
        EXPECT_EQ(std::tie(value, status), std::tie(row.value, row.status));
    }
    EXPECT_EQ(tx::textToDoubleByFormat("-12", 0, &status), -12.0);
    EXPECT_EQ(tx::textToDoubleByFormat("1.5", 0, &status), 1.5);  // not decimal: read as a double
    EXPECT_EQ(status, 0u);
    EXPECT_EQ(tx::textToDoubleByFormat("0x10", 0x400, &status), 16.0);
    EXPECT_EQ(tx::textToDouble("2.5e1"), 25.0);
}

}  // namespace
