// The text helpers: hex dumps, byte lists and hex strings, number text with
// every number format's checks, escaping, and sized strings.
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <ctime>
#include <string>
#include <tuple>
#include <vector>

#include <zksupt/status.h>
#include <zksupt/text.h>

#include "support/values.h"
#include "text/growth.h"
#include "text_helpers/byte_text.h"
#include "text_helpers/hex_dump.h"
#include "text_helpers/number_text.h"

namespace {

namespace tx = zksupt::text_helpers;
using zksupt::test::Bytes;
using zksupt::test::wide;

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
    const Bytes seventeen(17, 0x41);
    EXPECT_EQ(dumpOf(seventeen, 0).substr(81),
              "0x00000010: 41" + std::string(48, ' ') + "A" + std::string(16, ' ') + "\r\n");
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

TEST(ByteText, RoundTripsAndWhereParsersStop)
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
    // {byte list?, text, size given, the bytes parsed or "(null)" and the size left}
    const std::tuple<bool, std::string, uint32_t, std::string> parses[] = {
        {true, "0x01,0xFF", 9, "(null) 9"},  // 9: not 5 * n
        {true, "0x1FF,0x1", 10, "(null) 0"},
        {true, "0x01,zz,0x02", 15, "\x01"},
        {true, ",,7, 0x8,a,b,c,d", 15, "\x07\x08\x0A"},
        {false, "ABC", 4, "\xAB\x0C"},
        {false, "01G2", 5, "\x01"},
        {false, "01-1", 5, "(null) 0"},
        {false, "0102", 2, "\x01"},  // the size bounds the text
    };
    for (auto [list, text, size, bytes] : parses) {
        uint8_t *got = list ? tx::byteListParse(text.data(), &size) : tx::hexStringParse(text.c_str(), &size);
        EXPECT_EQ(got ? std::string(got, got + size) : "(null) " + std::to_string(size), bytes) << text;
        std::free(got);
    }
}

TEST(NumberText, ToText)
{
    char text[40];
    for (int64_t v : {INT64_MIN, int64_t{-1}, int64_t{0}, int64_t{1234567890123}}) {
        tx::int64ToDecimal(text, v);
        EXPECT_EQ(text, std::to_string(v));
        EXPECT_EQ(tx::decimalToInt64(text), v);
    }
    tx::uint64ToDecimal(text, UINT64_MAX);
    EXPECT_EQ(tx::decimalToUint64(text), UINT64_MAX);
    EXPECT_EQ(tx::decimalToInt64(" \t-12ab"), -12);
    EXPECT_EQ(tx::decimalToUint64("-5") + tx::decimalToUint64("+7") + tx::decimalToUint64("18446744073709551616"), 7u);
    const std::tuple<int32_t, uint32_t, std::string> radixTexts[] = {
        {0, 2, ""},           {5, 2, "101"},          {INT32_MIN, 2, "1" + std::string(31, '0')},
        {-1, 16, "ffffffff"}, {-1, 8, "37777777777"}, {7, 3, "7"},
    };
    for (const auto &[value, radix, expected] : radixTexts) {
        tx::int32ToRadixText(value, text, radix);
        EXPECT_EQ(text, expected);
    }
    EXPECT_EQ(tx::doubleToText(text, sizeof text, -2.0 / 3), 6);
    EXPECT_STREQ(text, "-0.667");

    const time_t t = 1700000000, farFuture = sizeof(time_t) > 4 ? INT64_C(253402300800) : 0;  // year 10000
    char ctimeText[32];
    ASSERT_NE(ctime_r(&t, ctimeText), nullptr);
    ctimeText[24] = '\0';
    ASSERT_EQ(tx::timeToText(&t, text, 4), SM_STATUS_SUCCESS);
    EXPECT_EQ(text + std::string(ctimeText + 3, 21), ctimeText);  // cut to 3, no line feed
    EXPECT_EQ(tx::timeToText(nullptr, text, 4), SM_STATUS_FAILURE);
    EXPECT_EQ(tx::timeToText(&farFuture, text, sizeof text), sizeof(time_t) > 4 ? SM_STATUS_FAILURE : 0);
}

// Both 32-bit readings of texts their format accepts, then texts it refuses:
// those read as 0 with INVALID_PARAMETER.
TEST(NumberText, ThirtyTwoBitFormats)
{
    const std::tuple<const char *, uint32_t, int32_t, uint32_t> accepted[] = {
        {"0x1F", 0x400, 31, 31},
        {"1f", 0x400, 31, 31},
        {"FFFFFFFF", 0x400, INT32_MAX, UINT32_MAX},
        {"17", 0x200, 15, 15},
        {"+", 0, 0, 0},
        {"", 0x300, 0, 0},
        {"-5", 0x300, -5, 4294967291u},
        {"4294967296", 0, INT32_MAX, UINT32_MAX},
        {"-2147483649", 0, INT32_MIN, 2147483647u},
        {"-99999999999", 0, INT32_MIN, UINT32_MAX},
    };
    const std::pair<const char *, uint32_t> refused[] = {
        {"0X", 0x400}, {"123456789", 0x400}, {"9", 0x200},  {"", 0x200},  {"+7", 0x200}, {" 5", 0},
        {"5 ", 0},     {"0x5", 0},           {"12", 0x100}, {nullptr, 0},
    };
    const auto read = [](const char *text, uint32_t format) {
        uint32_t iStatus = 99, uStatus = 99;
        const int32_t i = tx::textToInt32(text, format, &iStatus);
        const uint32_t u = tx::textToUint32(text, format, &uStatus);
        return std::tuple(i, u, iStatus, uStatus);
    };
    for (const auto &[text, format, i, u] : accepted)
        EXPECT_EQ(read(text, format), std::tuple(i, u, SM_STATUS_SUCCESS, SM_STATUS_SUCCESS)) << text;
    for (const auto &[text, format] : refused)
        EXPECT_EQ(read(text, format), std::tuple(0, 0u, SM_STATUS_INVALID_PARAMETER, SM_STATUS_INVALID_PARAMETER))
            << (text ? text : "null");
}

TEST(NumberText, SixtyFourBitFormats)
{
    constexpr uint32_t kOk = SM_STATUS_SUCCESS, kRefused = SM_STATUS_INVALID_PARAMETER, kNo = SM_STATUS_NOT_SERVED;
    const std::tuple<const char *, uint32_t, int64_t, uint32_t, uint64_t, uint32_t> rows[] = {
        {"-9223372036854775808", 0, INT64_MIN, kOk, 0, kOk},
        {"18446744073709551615", 0x300, -1, kOk, UINT64_MAX, kOk},
        {"17", 0x200, 0, kNo, 0, kNo},
        {"0xFFFFFFFFFFFFFFFF", 0x400, 0, kNo, UINT64_MAX, kOk},
        {"abc", 0, 0, kRefused, 0, kRefused},
        {"123456789", 0x400, 0, kNo, 0x123456789, kOk},
        {"12345678901234567", 0x400, 0, kNo, 0, kRefused},
        {"7", 0x500, 0, kRefused, 0, kRefused},
    };
    for (const auto &[text, format, i, iStatus, u, uStatus] : rows) {
        uint32_t gotI = 99, gotU = 99;
        EXPECT_EQ(tx::textToInt64(text, format, &gotI), i) << text;
        EXPECT_EQ(tx::textToUint64(text, format, &gotU), u) << text;
        EXPECT_EQ(std::tie(gotI, gotU), std::tie(iStatus, uStatus)) << text;
    }
}

TEST(NumberText, BooleansAndDoubles)
{
    const std::tuple<const char *, uint32_t, uint32_t> booleans[] = {
        {"False", 0, SM_STATUS_SUCCESS},
        {"true ", 0, SM_STATUS_INVALID_PARAMETER},
        {nullptr, 0, SM_STATUS_INVALID_PARAMETER},
    };
    uint32_t status = 99;
    for (const auto &[text, value, expected] : booleans) {
        EXPECT_EQ(tx::textToBoolean(text, &status), value);
        EXPECT_EQ(status, expected);
    }
    EXPECT_EQ(tx::textToDoubleByFormat("-12", 0, &status), -12.0);
    EXPECT_EQ(tx::textToDoubleByFormat("1.5", 0, &status), 1.5);  // not decimal: read as a double
    EXPECT_EQ(status, SM_STATUS_SUCCESS);
    EXPECT_EQ(tx::textToDoubleByFormat("0x10", 0x400, &status), 16.0);
    EXPECT_EQ(tx::textToDouble("2.5e1"), 25.0);
}

TEST(Ucs2Escape, EscapesControlsBackslashAndEverythingBeyondAsciiCopyingOnlyWhatFits)
{
    const std::pair<std::u16string, std::string> rows[] = {
        {u"\t\n\r\\\"' ~\x7F", "\\t\\n\\r\\\\\"' ~\x7F"},
        {u"\x01\x1F\x80\xABCD\xFFFF", "\\u0001\\u001f\\u0080\\uabcd\\uffff"},
        {u"", ""},
        {std::u16string(20000, u'~'), std::string(20000, '~')},  // outgrows the work string twice
    };
    for (const auto &[text, expected] : rows) {
        const auto src = wide(text);
        uint32_t size = 0;  // too small, and checked without a dst too
        EXPECT_EQ(SMUCS2ToEscape(nullptr, &size, src.data()), SM_STATUS_BUFFER_TOO_SMALL);
        std::string dst(size, '#');
        uint32_t oneShort = size - 1;
        EXPECT_EQ(SMUCS2ToEscape(dst.data(), &oneShort, src.data()), SM_STATUS_BUFFER_TOO_SMALL);
        EXPECT_TRUE(oneShort == size && dst == std::string(size, '#')) << "*size is what is needed; nothing is copied";
        EXPECT_EQ(SMUCS2ToEscape(dst.data(), &size, src.data()), SM_STATUS_SUCCESS);
        EXPECT_EQ(dst, expected + '\0');
        dst.assign(size, '#');
        EXPECT_EQ(SMUCS2ToEscape(dst.data(), nullptr, src.data()), SM_STATUS_SUCCESS);  // no size, no check
        EXPECT_EQ(dst, expected + '\0');
    }
}

// Buffer present, capacity, length.
std::tuple<bool, uint32_t, uint32_t> state(const SMSizedString &rec)
{
    return {rec.buf != nullptr, rec.capacity, rec.length};
}

// The characters of a record, terminator included: bytes or UCS-2 units.
std::vector<uint16_t> contents(const SMSizedString &rec, bool ucs2Record)
{
    if (ucs2Record)
        return {static_cast<const ucs2 *>(rec.buf), static_cast<const ucs2 *>(rec.buf) + rec.length + 1};
    return {static_cast<const char *>(rec.buf), static_cast<const char *>(rec.buf) + rec.length + 1};
}

TEST(SizedStrings, AllocAndFree)
{
    SMSizedString rec{&rec, 7, 3};
    EXPECT_EQ(SMSSUTF8StrAlloc(&rec, 0), nullptr);  // buffer dropped, sizes kept
    EXPECT_EQ(state(rec), std::make_tuple(false, 7u, 3u));
    ASSERT_NE(SMSSUCS2StrAlloc(&rec, 1), nullptr);  // room for the 0 unit
    EXPECT_EQ(state(rec), std::make_tuple(true, 2u, 0u));
    EXPECT_EQ(contents(rec, true), std::vector<uint16_t>{0});
    SMSSUCS2StrFree(&rec);
    EXPECT_EQ(state(rec), std::make_tuple(false, 0u, 0u));
}

// Doubling up to 0xFFFFF bytes, a quarter more above it (also beyond what a
// quarter more fits in 32 bits), never less than the need, never more than
// 32 bits can hold; a need beyond 32 bits keeps the old text.
TEST(SizedStrings, GrowthSteps)
{
    struct Row {
        bool ucs2;
        uint32_t capacity, held, added, grown;
    };
    for (const Row &row : std::vector<Row>{{false, 8, 7, 1, 16},
                                           {false, 8, 7, 20, 28},
                                           {true, 0x100000, 0x7FFFF, 1, 0x140000},
                                           {true, 0x100000, 0x7FFFF, 0x100000, 0x300000},
                                           {false, 0x2200000, 0x21FFFFF, 1, 0x2A80000},
                                           {true, 8, 3, 0x80000000, 8}}) {
        SMSizedString rec{};
        const uint32_t kept = row.grown == row.capacity ? row.held : row.held + row.added;  // refused: nothing read
        const std::vector<uint16_t> units(row.ucs2 ? kept : 0, 'u');
        const std::vector<char> bytes(row.ucs2 ? 0 : kept, 'u');
        ASSERT_NE(row.ucs2 ? SMSSUCS2StrAlloc(&rec, row.capacity) : SMSSUTF8StrAlloc(&rec, row.capacity), nullptr);
        for (uint32_t n : {row.held, row.added})
            row.ucs2 ? SMSSUCS2StrNCatUCS2Str(&rec, units.data(), n) : SMSSUTF8StrNCatUTF8Str(&rec, bytes.data(), n);
        EXPECT_EQ(state(rec), std::make_tuple(true, row.grown, kept));
        const auto *end = static_cast<const char *>(rec.buf) + rec.length * (row.ucs2 ? 2 : 1);
        EXPECT_TRUE(end[0] == 0 && (!row.ucs2 || end[1] == 0)) << "terminated";
        SMSSUTF8StrFree(&rec);
    }
    EXPECT_EQ(zksupt::text::grownCapacity(0xF0000000u, 0xF0000001u), UINT32_MAX);
}

TEST(SizedStrings, NullSourceOrNoBufferLeavesTheRecord)
{
    const auto u = wide(u"z");
    using Append = std::function<void *(SMSizedString *, bool nullSource)>;
    const std::vector<std::pair<bool, Append>> appenders{
        {true, [&](SMSizedString *r, bool z) { return SMSSUCS2StrCatUCS2Str(r, z ? nullptr : u.data()); }},
        {true, [&](SMSizedString *r, bool z) { return SMSSUCS2StrNCatUCS2Str(r, z ? nullptr : u.data(), 1); }},
        {true, [](SMSizedString *r, bool z) { return SMSSUCS2StrCatUTF8Str(r, z ? nullptr : "z"); }},
        {true, [](SMSizedString *r, bool z) { return SMSSUCS2StrNCatUTF8Str(r, z ? nullptr : "z", 1); }},
        {false, [](SMSizedString *r, bool z) { return SMSSUTF8StrCatUTF8Str(r, z ? nullptr : "z"); }},
        {false, [](SMSizedString *r, bool z) { return SMSSUTF8StrNCatUTF8Str(r, z ? nullptr : "z", 1); }},
        {false, [&](SMSizedString *r, bool z) { return SMSSUTF8StrCatUCS2Str(r, z ? nullptr : u.data()); }},
        {false, [&](SMSizedString *r, bool z) { return SMSSUTF8StrNCatUCS2Str(r, z ? nullptr : u.data(), 1); }}};
    for (const auto &[ucs2Record, append] : appenders) {
        SMSizedString unallocated{nullptr, 5, 3}, rec{};
        EXPECT_EQ(append(&unallocated, false), nullptr);
        EXPECT_EQ(state(unallocated), std::make_tuple(false, 5u, 3u));
        void *buffer = ucs2Record ? SMSSUCS2StrAlloc(&rec, 4) : SMSSUTF8StrAlloc(&rec, 4);
        EXPECT_EQ(append(&rec, true), buffer);
        EXPECT_EQ(state(rec), std::make_tuple(true, 4u, 0u));
        EXPECT_EQ(append(&rec, false), rec.buf);
        EXPECT_EQ(contents(rec, ucs2Record), (std::vector<uint16_t>{'z', 0}));
        SMSSUTF8StrFree(&rec);
    }
}

// Each appender after a record holding "x": what the record then holds.
TEST(SizedStrings, AppendersKeepTheirNarrowRules)
{
    const auto abc = wide(u"abc"), eAcute = wide(u"\u00E9"), gap = wide(std::u16string_view(u"a\0b", 3));
    struct Row {
        bool ucs2;
        std::function<void(SMSizedString *)> append;
        std::vector<uint16_t> holds;
    };
    const std::vector<Row> rows{
        {false, [&](SMSizedString *r) { SMSSUTF8StrNCatUCS2Str(r, abc.data(), 2); }, {'x', 0}},  // 3 units in 3 bytes
        {false, [&](SMSizedString *r) { SMSSUTF8StrCatUCS2Str(r, abc.data()); }, {'x', 'a', 'b', 'c', 0}},
        {false, [&](SMSizedString *r) { SMSSUTF8StrCatUCS2Str(r, eAcute.data()); }, {'x', 0}},  // 2 bytes from 1 unit
        {false, [&](SMSizedString *r) { SMSSUTF8StrNCatUCS2Str(r, abc.data(), 5); }, {'x', 'a', 'b', 'c', 0, 0, 0}},
        {false, [&](SMSizedString *r) { SMSSUTF8StrNCatUTF8Str(r, "a\0b", 3); }, {'x', 'a', 0, 'b', 0}},
        {true, [&](SMSizedString *r) { SMSSUCS2StrCatUTF8Str(r, "\xC3\xA9"); }, {'x', 0xE9, 0, 0}},
        {true, [&](SMSizedString *r) { SMSSUCS2StrNCatUTF8Str(r, "ab", 1); }, {'x', 0}},  // 2 units in 1 + 1
        {true, [&](SMSizedString *r) { SMSSUCS2StrCatUTF8Str(r, "\xC3"); }, {'x', 0}},    // broken sequence
        {true, [&](SMSizedString *r) { SMSSUCS2StrNCatUCS2Str(r, gap.data(), 3); }, {'x', 'a', 0, 'b', 0}},
        {true, [&](SMSizedString *r) { SMSSUCS2StrNCatUCS2Str(r, gap.data(), 0); }, {'x', 'a', 0}}};
    for (std::size_t i = 0; i < rows.size(); ++i) {
        SMSizedString rec{};
        ASSERT_NE(rows[i].ucs2 ? SMSSUCS2StrAlloc(&rec, 2) : SMSSUTF8StrAlloc(&rec, 1), nullptr);
        rows[i].ucs2 ? SMSSUCS2StrCatUTF8Str(&rec, "x") : SMSSUTF8StrCatUTF8Str(&rec, "x");
        rows[i].append(&rec);
        EXPECT_EQ(contents(rec, rows[i].ucs2), rows[i].holds) << "row " << i;
        SMSSUCS2StrFree(&rec);
    }
}

}  // namespace
