// Wide text escaped to ASCII, and the growth of the library's text buffers.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include <zksupt/text.h>

#include "text/growth.h"
#include "text_test_util.h"

namespace {

using zksupt::test::wide;

std::string escaped(std::u16string_view text)
{
    uint32_t size = 0;
    if (SMUCS2ToEscape(nullptr, &size, wide(text).data()) != SM_STATUS_BUFFER_TOO_SMALL)
        return "(no size)";
    std::string out(size, '#');
    if (SMUCS2ToEscape(out.data(), &size, wide(text).data()) != SM_STATUS_SUCCESS || out.back() != '\0')
        return "(failed)";
    out.pop_back();
    return out;
}

TEST(Ucs2Escape, EscapesControlsBackslashAndEverythingBeyondAscii)
{
    EXPECT_EQ(escaped(u"A\t\u263a"), "A\\t\\u263a");
    EXPECT_EQ(escaped(u"\n\r\\\"' ~\x7f"), "\\n\\r\\\\\"' ~\x7f");
    EXPECT_EQ(escaped(u"\x01\x1f\x80\xabcd\xffff"), "\\u0001\\u001f\\u0080\\uabcd\\uffff");
    EXPECT_EQ(escaped(u""), "");
}

TEST(Ucs2Escape, SizeIsAlwaysReportedAndCheckedWhenGiven)
{
    const auto src = wide(u"A\t\u263a");
    char dst[16];
    std::memset(dst, '#', sizeof dst);
    uint32_t size = 9;
    EXPECT_EQ(SMUCS2ToEscape(dst, &size, src.data()), SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(size, 10u);
    EXPECT_EQ(dst[0], '#') << "nothing is copied when it does not fit";
    EXPECT_EQ(SMUCS2ToEscape(nullptr, &size, src.data()), SM_STATUS_SUCCESS);
    EXPECT_EQ(SMUCS2ToEscape(dst, &size, src.data()), SM_STATUS_SUCCESS);
    EXPECT_STREQ(dst, "A\\t\\u263a");
    std::memset(dst, '#', sizeof dst);
    EXPECT_EQ(SMUCS2ToEscape(dst, nullptr, src.data()), SM_STATUS_SUCCESS);  // no size, no check
    EXPECT_STREQ(dst, "A\\t\\u263a");
    EXPECT_EQ(SMUCS2ToEscape(dst, &size, nullptr), SM_STATUS_BAD_ARGUMENT);
}

TEST(Ucs2Escape, OutgrowsTheFirstWorkBuffer)
{
    const std::u16string text(3000, u'\u4e2d');  // 18,000 bytes escaped
    std::string expected;
    for (int i = 0; i < 3000; ++i)
        expected += "\\u4e2d";
    EXPECT_EQ(escaped(text), expected);
}

TEST(TextGrowth, DoublesWhileSmallThenAddsAQuarter)
{
    using zksupt::text::grownCapacity;
    EXPECT_EQ(grownCapacity(8, 9), 16u);
    EXPECT_EQ(grownCapacity(8, 40), 40u);
    EXPECT_EQ(grownCapacity(0xFFFFF, 0x100000), 0x1FFFFEu);
    EXPECT_EQ(grownCapacity(0x100000, 0x100001), 0x140000u);
    EXPECT_EQ(grownCapacity(0x100000, 0x200000), 0x200000u);
}

}  // namespace
