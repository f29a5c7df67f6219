// Wide text escaped to ASCII.
#include <gtest/gtest.h>

#include <string>

#include <zksupt/text.h>

#include "text_test_util.h"

namespace {

using zksupt::test::wide;

// The escaped text through a size query (a capacity of 0 is too small, and
// *size receives what is needed) and a second call.
std::string escaped(std::u16string_view text)
{
    uint32_t size = 0;
    EXPECT_EQ(SMUCS2ToEscape(nullptr, &size, wide(text).data()), SM_STATUS_BUFFER_TOO_SMALL);
    std::string out(size, '#');
    EXPECT_EQ(SMUCS2ToEscape(out.data(), &size, wide(text).data()), SM_STATUS_SUCCESS);
    EXPECT_EQ(out.back(), '\0');
    return out.substr(0, out.size() - 1);
}

TEST(Ucs2Escape, EscapesControlsBackslashAndEverythingBeyondAscii)
{
    EXPECT_EQ(escaped(u"\n\r\\\"' ~\x7f"), "\\n\\r\\\\\"' ~\x7f");
    EXPECT_EQ(escaped(u"\x01\x1f\x80\xabcd\xffff"), "\\u0001\\u001f\\u0080\\uabcd\\uffff");
    EXPECT_EQ(escaped(u""), "");
    std::string many;
    for (int i = 0; i < 3000; ++i)
        many += "\\u4e2d";
    EXPECT_EQ(escaped(std::u16string(3000, u'\u4e2d')), many) << "outgrows the first work buffer";
}

TEST(Ucs2Escape, CopiesOnlyWhatFits)
{
    const auto src = wide(u"A\t\u263a");
    char dst[16] = "#";
    uint32_t size = 9;
    EXPECT_EQ(SMUCS2ToEscape(dst, &size, src.data()), SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(size, 10u);
    EXPECT_STREQ(dst, "#");
    EXPECT_EQ(SMUCS2ToEscape(dst, nullptr, src.data()), SM_STATUS_SUCCESS);  // no size, no check
    EXPECT_STREQ(dst, "A\\t\\u263a");
    EXPECT_EQ(SMUCS2ToEscape(dst, &size, nullptr), SM_STATUS_BAD_ARGUMENT);
}

}  // namespace
