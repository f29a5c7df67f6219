// The two converters: sizes and capacities, what the decoder accepts, and the
// library's own handling of code points above 0xFFFF.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <utility>

#include <zksupt/text.h>

#include "text_test_util.h"

namespace {

using zksupt::test::narrow;
using zksupt::test::wide;

std::vector<char> bytes(std::string_view text)
{
    return {text.begin(), text.end()};
}

// A text of pieces that convert one to one: a source character (from UCS-2:
// a source unit) and the output it must give.
template <class From, class To>
using Pieces = std::vector<std::pair<std::vector<From>, std::vector<To>>>;

// Converts ASCII, then the pieces, at every capacity up to the size they
// need. Short of it: 0x10, *size untouched, dst holds the pieces that fit whole.
template <class From, class To>
void expectConversionAtEveryCapacity(int32_t (*convert)(To *, uint32_t *, const From *), Pieces<From, To> pieces,
                                     std::string_view ascii = "")
{
    for (auto c = ascii.rbegin(); c != ascii.rend(); ++c)
        pieces.insert(pieces.begin(), {{static_cast<From>(*c)}, {static_cast<To>(*c)}});
    pieces.push_back({{0}, {0}});  // the terminator
    std::vector<From> source;
    std::vector<To> expected;
    std::vector<std::size_t> pieceEnds{0};
    for (const auto &[in, out] : pieces) {
        source.insert(source.end(), in.begin(), in.end());
        expected.insert(expected.end(), out.begin(), out.end());
        pieceEnds.push_back(expected.size());
    }
    const auto needed = static_cast<uint32_t>(expected.size() * sizeof(To));
    uint32_t size = 0;  // a size query ignores the capacity
    ASSERT_EQ(convert(nullptr, &size, source.data()), SM_STATUS_SUCCESS);
    ASSERT_EQ(size, needed);

    constexpr To kUntouched = 0x5A;
    for (uint32_t capacity = 0; capacity <= needed; ++capacity) {
        const std::size_t room = capacity / sizeof(To);
        auto dst = std::make_unique<To[]>(room);  // exactly the capacity, for the sanitizer
        std::fill_n(dst.get(), room, kUntouched);
        size = capacity;
        const int32_t status = convert(dst.get(), &size, source.data());
        const std::size_t whole = *std::prev(std::upper_bound(pieceEnds.begin(), pieceEnds.end(), room));
        EXPECT_TRUE(std::equal(expected.begin(), expected.begin() + whole, dst.get())) << "capacity " << capacity;
        EXPECT_TRUE(std::all_of(dst.get() + whole, dst.get() + room, [](To unit) { return unit == kUntouched; }))
            << "a character that does not fit leaves nothing, capacity " << capacity;
        ASSERT_EQ(status, capacity == needed ? SM_STATUS_SUCCESS : SM_STATUS_BUFFER_TOO_SMALL) << capacity;
        ASSERT_EQ(size, capacity);
    }
}

TEST(Utf8ToUcs2, EverySequenceFormAtEveryCapacity)
{
    expectConversionAtEveryCapacity<char, ucs2>(
        SMUTF8StrToUCS2Str,
        {
            {bytes("\xC3\xA9"), {0xE9}},
            {bytes("\xE2\x98\xBA"), {0x263A}},
            {bytes("\xED\xA0\x80"), {0xD800}},              // surrogate code points pass unchanged
            {bytes("\xF0\x9F\x98\x80"), {0xD87D, 0xDE00}},  // split without subtracting 0x10000
            {bytes("\xF4\x8F\xBF\xBF"), {0xD83F, 0xDFFF}},  // 0x10FFFF
            {bytes("\xC1\x81"), {0x41}},                    // overlong forms decode to their value
            {bytes("\xF8\x80\x80\x81\x81"), {0x41}},
            {bytes("\xFC\x80\x80\x80\x81\x81"), {0x41}},
            {bytes("\xE9\x41\x42"), {0x9042}},              // continuations are only tested for non-zero
            {bytes("\xC0\x80"), {0}},
        },
        "some twenty letters");
    expectConversionAtEveryCapacity<char, ucs2>(SMUTF8StrToUCS2Str, {});
}

TEST(Utf8ToUcs2, InvalidTextFailsWithoutReadingPastItsEnd)
{
    for (std::string_view bad : {"\x80", "\xBF" "abcdef", "\xFE" "abcdef", "\xFF" "abcdef",  // cannot lead
                                 "\xF4\x90\x80\x80", "\xF8\x88\x80\x80\x80", "\xFC\x84\x80\x80\x80\x80"}) {
        uint32_t size = 77;
        EXPECT_EQ(SMUTF8StrToUCS2Str(nullptr, &size, narrow(bad).data()), SM_STATUS_BAD_OBJECT);
        EXPECT_EQ(size, 77u);
    }
    for (std::string_view full : {"\xC3\xA9", "\xE9\x41\x42", "\xF0\x9F\x98\x80", "\xFC\x80\x80\x80\x81\x81"}) {
        for (std::size_t cut = 1; cut < full.size(); ++cut) {
            ucs2 dst[8] = {};
            uint32_t size = sizeof dst;
            const auto text = narrow(std::string("ok").append(full.substr(0, cut)));
            EXPECT_EQ(SMUTF8StrToUCS2Str(dst, &size, text.data()), SM_STATUS_BAD_OBJECT);
            EXPECT_EQ(size, sizeof dst);
            EXPECT_EQ(zksupt::test::units(dst), u"ok");
        }
    }
    ucs2 dst[2];
    uint32_t size = sizeof dst;
    EXPECT_EQ(SMUTF8StrToUCS2Str(dst, &size, "abc\xFF"), SM_STATUS_BUFFER_TOO_SMALL) << "failures come in text order";
}

TEST(Ucs2ToUtf8, EveryUnitAtEveryCapacity)
{
    // A surrogate unit is not decoded where it stands: it comes out as the
    // text's first character, here the 'p'.
    expectConversionAtEveryCapacity<ucs2, char>(SMUCS2StrToUTF8Str,
                                                {
                                                    {{0xE9}, bytes("\xC3\xA9")},
                                                    {{0x7FF}, bytes("\xDF\xBF")},
                                                    {{0x800}, bytes("\xE0\xA0\x80")},
                                                    {{0xD83D}, bytes("p")},
                                                    {{0xDE00}, bytes("p")},
                                                    {{0xFFFF}, bytes("\xEF\xBF\xBF")},
                                                    {{0x7F}, bytes("\x7F")},
                                                },
                                                "plain ascii runs on");
}

TEST(Ucs2ToUtf8, SurrogatesTakeTheTextsOpeningPair)
{
    // Every surrogate unit stands for the pair that opens the text, its own
    // two units included: here U+1F600.
    char dst[20];
    uint32_t size = sizeof dst;
    ASSERT_EQ(SMUCS2StrToUTF8Str(dst, &size, wide(u"\xd83d\xde00x\xdc00").data()), SM_STATUS_SUCCESS);
    EXPECT_STREQ(dst, "\xF0\x9F\x98\x80\xF0\x9F\x98\x80x\xF0\x9F\x98\x80");
    EXPECT_EQ(size, 14u);
    for (std::u16string_view bad : {u"\xdc00\xdc00", u"\xd800", u"\xd800x", u"\xd800\xd800"}) {
        EXPECT_EQ(SMUCS2StrToUTF8Str(nullptr, &size, wide(bad).data()), SM_STATUS_BAD_OBJECT);
        EXPECT_EQ(size, 14u);
    }
}

TEST(Converters, NullSourceOrSizeIsRefused)
{
    char text[8];
    uint32_t size = 8;
    EXPECT_EQ(SMUCS2StrToUTF8Str(text, &size, nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMUCS2StrToUTF8Str(nullptr, nullptr, wide(u"x").data()), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMUTF8StrToUCS2Str(nullptr, &size, nullptr), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMUTF8StrToUCS2Str(nullptr, nullptr, "x"), SM_STATUS_INVALID_PARAMETER);
}

}  // namespace
