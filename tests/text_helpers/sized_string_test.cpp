// Sized strings: allocation, the growth steps, the records that appenders
// must leave alone, and the narrow rules of the converting appenders.
#include <gtest/gtest.h>

#include <functional>
#include <tuple>
#include <vector>

#include <zksupt/text.h>

#include "support/values.h"
#include "text/growth.h"

namespace {

using zksupt::test::wide;

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
