// The two converters: sizes, capacities, what the decoder accepts, and the
// library's own handling of code points above 0xFFFF.
#include <gtest/gtest.h>

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include <zksupt/text.h>

#include "text_test_util.h"

namespace {

using zksupt::test::exactCopy;
using zksupt::test::wide;

std::vector<char> bytes(std::string_view text)
{
    return {text.begin(), text.end()};
}

std::vector<ucs2> unitsOf(std::u16string_view text)
{
    return {text.begin(), text.end()};
}

// A text made of pieces that convert one to one: a source character (or,
// from UCS-2, a source unit) and the output it must give.
template <class From, class To>
using Pieces = std::vector<std::pair<std::vector<From>, std::vector<To>>>;

template <class From, class To>
using Converter = int32_t (*)(To *, uint32_t *, const From *);

// Converts the text with every capacity from 0 up to the size needed. Short
// of it: 0x10, *size untouched, and dst holds exactly the pieces that fit
// whole, nothing of the next. At it: the whole result and its terminator.
template <class From, class To>
void expectConversionAtEveryCapacity(Converter<From, To> convert, const Pieces<From, To> &pieces)
{
    std::vector<From> source;
    std::vector<To> expected;
    std::vector<std::size_t> pieceEnds{0};
    for (const auto &[in, out] : pieces) {
        source.insert(source.end(), in.begin(), in.end());
        expected.insert(expected.end(), out.begin(), out.end());
        pieceEnds.push_back(expected.size());
    }
    source.push_back(0);
    const auto needed = static_cast<uint32_t>((expected.size() + 1) * sizeof(To));

    uint32_t size = 0;  // a size query does not look at the capacity
    ASSERT_EQ(convert(nullptr, &size, source.data()), SM_STATUS_SUCCESS);
    ASSERT_EQ(size, needed);

    constexpr To kUntouched = 0x5A;
    for (uint32_t capacity = 0; capacity <= needed; ++capacity) {
        const std::size_t room = capacity / sizeof(To);
        auto dst = std::make_unique<To[]>(room);  // exactly the capacity, for the sanitizer
        std::fill_n(dst.get(), room, kUntouched);
        size = capacity;
        const int32_t status = convert(dst.get(), &size, source.data());
        if (capacity == needed) {
            EXPECT_EQ(status, SM_STATUS_SUCCESS);
            EXPECT_EQ(size, needed);
            EXPECT_TRUE(std::equal(expected.begin(), expected.end(), dst.get()));
            EXPECT_EQ(dst[expected.size()], 0);
            break;
        }
        ASSERT_EQ(status, SM_STATUS_BUFFER_TOO_SMALL) << "capacity " << capacity;
        ASSERT_EQ(size, capacity);
        const std::size_t whole = *std::prev(std::upper_bound(pieceEnds.begin(), pieceEnds.end(), room));
        EXPECT_TRUE(std::equal(expected.begin(), expected.begin() + whole, dst.get())) << "capacity " << capacity;
        EXPECT_TRUE(std::all_of(dst.get() + whole, dst.get() + room, [](To unit) { return unit == kUntouched; }))
            << "a character that does not fit leaves nothing behind, capacity " << capacity;
    }
}

template <class From, class To>
void appendAscii(Pieces<From, To> &pieces, std::string_view ascii)
{
    for (char c : ascii)
        pieces.push_back({{static_cast<From>(c)}, {static_cast<To>(c)}});
}

TEST(Utf8ToUcs2, EverySequenceFormAtEveryCapacity)
{
    Pieces<char, ucs2> pieces{
        {bytes("\xC3\xA9"), unitsOf(u"\u00e9")},
        {bytes("\xE2\x98\xBA"), unitsOf(u"\u263a")},
        {bytes("\xED\xA0\x80"), {0xD800}},                   // a surrogate code point passes unchanged
        {bytes("\xF0\x9F\x98\x80"), {0xD87D, 0xDE00}},       // split without subtracting 0x10000
        {bytes("\xF4\x8F\xBF\xBF"), {0xD83F, 0xDFFF}},       // 0x10FFFF, the largest there is
        {bytes("\xC1\x81"), unitsOf(u"A")},                  // overlong forms decode to their value
        {bytes("\xF8\x80\x80\x81\x81"), unitsOf(u"A")},      // five bytes
        {bytes("\xFC\x80\x80\x80\x81\x81"), unitsOf(u"A")},  // six bytes
        {bytes("\xE9\x41\x42"), {0x9042}},                   // continuations are only tested for non-zero
        {bytes("\xC0\x80"), {0}},
    };
    appendAscii(pieces, "twenty ascii letters");
    pieces.push_back({bytes("\xC3\xA9"), unitsOf(u"\u00e9")});
    appendAscii(pieces, "tail");
    expectConversionAtEveryCapacity<char, ucs2>(SMUTF8StrToUCS2Str, pieces);
}

TEST(Utf8ToUcs2, EmptyTextNeedsTheTerminatorUnit)
{
    expectConversionAtEveryCapacity<char, ucs2>(SMUTF8StrToUCS2Str, {});
}

TEST(Utf8ToUcs2, InvalidSequencesNeverReadPastTheTerminator)
{
    for (std::string_view bad : {
             "\x80", "\xBF" "abcdef", "\xFE" "abcdef", "\xFF" "abcdef", "\xE9\x41",  // stray, unusable or truncated
             "\xF4\x90\x80\x80",                                                   // 0x110000
             "\xF8\x88\x80\x80\x80", "\xFC\x84\x80\x80\x80\x80",                   // beyond UCS-2 altogether
         }) {
        const auto text = exactCopy(bad);
        uint32_t size = 77;
        EXPECT_EQ(SMUTF8StrToUCS2Str(nullptr, &size, text.get()), SM_STATUS_BAD_OBJECT) << testing::PrintToString(bad);
        EXPECT_EQ(size, 77u);
    }
    // Every sequence cut short by the terminator, after some text that is kept.
    for (std::string_view full : {"\xC3\xA9", "\xE2\x98\xBA", "\xF0\x9F\x98\x80", "\xF8\x80\x80\x81\x81",
                                  "\xFC\x80\x80\x80\x81\x81"}) {
        for (std::size_t cut = 1; cut < full.size(); ++cut) {
            const auto text = exactCopy(std::string("ok") + std::string(full.substr(0, cut)));
            ucs2 dst[8] = {};
            uint32_t size = sizeof dst;
            EXPECT_EQ(SMUTF8StrToUCS2Str(dst, &size, text.get()), SM_STATUS_BAD_OBJECT);
            EXPECT_EQ(size, sizeof dst);
            EXPECT_EQ(dst[0], u'o');
            EXPECT_EQ(dst[1], u'k');
        }
    }
}

TEST(Utf8ToUcs2, FailuresComeInTextOrder)
{
    ucs2 dst[2];
    uint32_t size = sizeof dst;
    EXPECT_EQ(SMUTF8StrToUCS2Str(dst, &size, "abc\xFF"), SM_STATUS_BUFFER_TOO_SMALL);
    ucs2 roomy[8];
    size = sizeof roomy;
    EXPECT_EQ(SMUTF8StrToUCS2Str(roomy, &size, "abc\xFF"), SM_STATUS_BAD_OBJECT);
    EXPECT_EQ(size, sizeof roomy);
}

TEST(Ucs2ToUtf8, EveryUnitAtEveryCapacity)
{
    // Each surrogate unit stands for the pair that opens the text, wherever
    // it is: here U+1F600, written once for each of its two units.
    const std::vector<char> grin = bytes("\xF0\x9F\x98\x80");
    Pieces<ucs2, char> pieces{{{0xD83D}, grin}, {{0xDE00}, grin}};
    appendAscii(pieces, "some plain ascii text");
    pieces.insert(pieces.end(), {
                                    {unitsOf(u"\u00e9"), bytes("\xC3\xA9")},
                                    {unitsOf(u"\u07ff"), bytes("\xDF\xBF")},
                                    {unitsOf(u"\u0800"), bytes("\xE0\xA0\x80")},
                                    {unitsOf(u"\u263a"), bytes("\xE2\x98\xBA")},
                                    {unitsOf(u"\uffff"), bytes("\xEF\xBF\xBF")},
                                    {{0xDC00}, grin},
                                    {{0xD800}, grin},
                                    {unitsOf(u"\u007f"), bytes("\x7F")},
                                });
    expectConversionAtEveryCapacity<ucs2, char>(SMUCS2StrToUTF8Str, pieces);
}

TEST(Ucs2ToUtf8, SurrogatesTakeTheTextsFirstCharacter)
{
    char dst[16];
    uint32_t size = sizeof dst;
    ASSERT_EQ(SMUCS2StrToUTF8Str(dst, &size, wide(u"A\xd800\xdc00").data()), SM_STATUS_SUCCESS);
    EXPECT_STREQ(dst, "AAA");
    EXPECT_EQ(size, 4u);

    // A text that opens with a surrogate must open with a proper pair.
    for (std::u16string_view bad : {u"\xdc00\xdc00", u"\xd800", u"\xd800x", u"\xd800\xd800"}) {
        size = sizeof dst;
        EXPECT_EQ(SMUCS2StrToUTF8Str(dst, &size, wide(bad).data()), SM_STATUS_BAD_OBJECT);
        EXPECT_EQ(size, sizeof dst);
        EXPECT_EQ(SMUCS2StrToUTF8Str(nullptr, &size, wide(bad).data()), SM_STATUS_BAD_OBJECT);
        EXPECT_EQ(size, sizeof dst);
    }
}

TEST(Converters, NullSourceOrSizeIsRefused)
{
    char narrow[8];
    ucs2 widened[8];
    uint32_t size = 8;
    const auto text = wide(u"x");
    EXPECT_EQ(SMUCS2StrToUTF8Str(narrow, &size, nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMUCS2StrToUTF8Str(nullptr, nullptr, text.data()), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMUTF8StrToUCS2Str(widened, &size, nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMUTF8StrToUCS2Str(widened, nullptr, "x"), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(size, 8u);
}

}  // namespace
