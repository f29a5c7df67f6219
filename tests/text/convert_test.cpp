// The two converters: sizes and capacities, what the decoder accepts, and iconv.
#include <gtest/gtest.h>

#include <iconv.h>

#include <algorithm>
#include <memory>
#include <random>
#include <type_traits>

#include <zksupt/text.h>

#include "support/values.h"

namespace {

using zksupt::test::units;
using zksupt::test::wide;

template <class Unit> using Text = std::conditional_t<sizeof(Unit) == 1, std::string, std::u16string>;

// Converts the ASCII, the pieces (a source character and the output it must
// give) and the terminator at every capacity up to the size they need. Short
// of it: 0x10, *size untouched, dst holds the pieces that fit whole and
// nothing after them.
template <class From, class To>
void expectConversionAtEveryCapacity(int32_t (*convert)(To *, uint32_t *, const From *), std::string_view ascii,
                                     std::vector<std::pair<Text<From>, Text<To>>> pieces)
{
    for (auto c = ascii.rbegin(); c != ascii.rend(); ++c)
        pieces.insert(pieces.begin(), {Text<From>(1, *c), Text<To>(1, *c)});
    pieces.push_back({Text<From>(1, 0), Text<To>(1, 0)});
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
    for (uint32_t capacity = 0; capacity <= needed; ++capacity) {
        const std::size_t room = capacity / sizeof(To);
        const std::size_t whole = *std::prev(std::upper_bound(pieceEnds.begin(), pieceEnds.end(), room));
        std::vector<To> fit(expected.begin(), expected.begin() + whole);
        fit.resize(room, 0x5A);
        auto dst = std::make_unique<To[]>(room);  // exactly the capacity, for the sanitizer
        std::fill_n(dst.get(), room, 0x5A);
        size = capacity;
        EXPECT_EQ(convert(dst.get(), &size, source.data()),
                  capacity < needed ? SM_STATUS_BUFFER_TOO_SMALL : SM_STATUS_SUCCESS);
        ASSERT_EQ(std::vector<To>(dst.get(), dst.get() + room), fit) << "capacity " << capacity;
        ASSERT_EQ(size, capacity);
    }
}

TEST(Utf8ToUcs2, EveryFormAtEveryCapacityAndInvalidTextNeverReadPastItsEnd)
{
    // Surrogate code points pass unchanged; code points above 0xFFFF are split
    // without subtracting 0x10000; continuations are only tested for non-zero;
    // overlong forms decode to their value, five- and six-byte forms too. The
    // last piece ends the text, where the decoder has fewer than four bytes.
    expectConversionAtEveryCapacity<char, ucs2>(SMUTF8StrToUCS2Str, "plain ASCII, in blocks",
                                                {{"\xE9\x41\x42", u"\x9042"},
                                                 {"\xED\xA0\x80", u"\xD800"},
                                                 {"\xF0\x9F\x98\x80", u"\xD87D\xDE00"},
                                                 {"\xF4\x8F\xBF\xBF", u"\xD83F\xDFFF"},
                                                 {"\xC1\x81", u"A"},
                                                 {"\xF8\x80\x80\x81\x82", u"B"},
                                                 {"\xFC\x80\x80\x80\x81\x83", u"C"},
                                                 {"\xC0\x80", std::u16string(1, 0)},
                                                 {"\xEA\x41\x43", u"\xA043"}});

    // Bytes that cannot lead, code points above 0x10FFFF, then every sequence
    // cut short by the terminator. Decoding fails before the room runs out.
    std::vector<std::string> bad{"\x80",
                                 "\xBFwxyz",
                                 "\xFEwxyz",
                                 "\xFFwxyz",
                                 "\xF4\x90\x80\x80",
                                 "\xF8\x88\x80\x80\x80",
                                 "\xFC\x84\x80\x80\x80\x80"};
    for (std::string_view full : {"\xC3\xA9", "\xE9\x41\x42", "\xF0\x9F\x98\x80", "\xFC\x80\x80\x80\x81\x81"})
        for (std::size_t cut = 1; cut < full.size(); ++cut)
            bad.emplace_back(full.substr(0, cut));
    for (const std::string &text : bad) {
        const auto source = zksupt::test::narrow("ok" + text);
        ucs2 dst[2];
        uint32_t query = 77, size = sizeof dst;
        EXPECT_EQ(SMUTF8StrToUCS2Str(nullptr, &query, source.data()), SM_STATUS_BAD_OBJECT);
        EXPECT_EQ(SMUTF8StrToUCS2Str(dst, &size, source.data()), SM_STATUS_BAD_OBJECT);
        EXPECT_TRUE(query == 77 && size == sizeof dst) << "*size is left alone";
        EXPECT_EQ(std::u16string(dst, dst + 2), u"ok");
        EXPECT_EQ(SMUTF8StrToUCS2Str(dst, &(size = 2), source.data()), SM_STATUS_BUFFER_TOO_SMALL) << "in text order";
    }
}

TEST(Ucs2ToUtf8, EveryUnitAtEveryCapacityAndSurrogatesTakeTheOpeningPair)
{
    // A surrogate unit is not decoded where it stands: it stands for the
    // text's opening pair, its own two units included, or for its first
    // character when that is no surrogate.
    expectConversionAtEveryCapacity<ucs2, char>(SMUCS2StrToUTF8Str, "plain ASCII, in blocks",
                                                {{u"\x7F", "\x7F"},
                                                 {u"\x80", "\xC2\x80"},
                                                 {u"\x7FF", "\xDF\xBF"},
                                                 {u"\x800", "\xE0\xA0\x80"},
                                                 {u"\xD83D", "p"},
                                                 {u"\xDE00", "p"},
                                                 {u"\xFFFF", "\xEF\xBF\xBF"}});
    const std::string smile = "\xF0\x9F\x98\x80";
    expectConversionAtEveryCapacity<ucs2, char>(
        SMUCS2StrToUTF8Str, "", {{u"\xD83D", smile}, {u"\xDE00", smile}, {u"x", "x"}, {u"\xDC00", smile}});
    uint32_t size = 77;
    for (std::u16string_view bad : {u"\xDC00\xDC00", u"\xD800", u"\xD800x", u"\xD800\xD800"})
        EXPECT_EQ(SMUCS2StrToUTF8Str(nullptr, &size, wide(bad).data()), SM_STATUS_BAD_OBJECT);
    EXPECT_EQ(size, 77u);
}

// Random BMP text without surrogates, where the library's forms are the
// standard ones: glibc's iconv gives each character's UTF-8, and both
// converters must agree with it at every capacity. glibc's builtin "UCS-2" is
// in host byte order and needs no module (the PowerPC sysroot has none).
TEST(IconvAgreement, BothDirectionsAtEveryCapacityOverRandomBmpText)
{
    const iconv_t toUtf8 = iconv_open("UTF-8", "UCS-2");
    ASSERT_NE(toUtf8, reinterpret_cast<iconv_t>(-1)) << "iconv cannot convert UCS-2 to UTF-8";
    // Two fifths ASCII, a fifth two-byte forms, two fifths three-byte forms.
    std::mt19937 random(20261121);
    using Range = std::uniform_int_distribution<unsigned>;
    Range length(0, 40), pick(0, 4),
        forms[] = {Range(1, 0x7F), Range(1, 0x7F), Range(0x80, 0x7FF), Range(0x800, 0xD7FF), Range(0xE000, 0xFFFF)};
    for (int round = 0; round < 300; ++round) {
        std::vector<std::pair<std::u16string, std::string>> toUtf8Pieces;
        std::vector<std::pair<std::string, std::u16string>> toUcs2Pieces;
        for (unsigned n = length(random); n > 0; --n) {
            auto unit = static_cast<ucs2>(forms[pick(random)](random));
            char bytes[4], *in = reinterpret_cast<char *>(&unit), *out = bytes;
            std::size_t left = sizeof unit, room = sizeof bytes;
            ASSERT_NE(iconv(toUtf8, &in, &left, &out, &room), static_cast<std::size_t>(-1));
            toUtf8Pieces.push_back({std::u16string(1, unit), std::string(bytes, out)});
            toUcs2Pieces.push_back({std::string(bytes, out), std::u16string(1, unit)});
        }
        expectConversionAtEveryCapacity<ucs2, char>(SMUCS2StrToUTF8Str, "plain ASCII, in blocks", toUtf8Pieces);
        expectConversionAtEveryCapacity<char, ucs2>(SMUTF8StrToUCS2Str, "plain ASCII, in blocks", toUcs2Pieces);
    }
    iconv_close(toUtf8);
}

}  // namespace
