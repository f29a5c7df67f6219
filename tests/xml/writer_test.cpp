// The XML writer: documents built node by node and compared byte for byte,
// attributes, escaping, typed and missing values, and growth.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include <zksupt/zksupt.h>

namespace {

struct Free {
    void operator()(SMXGBuf *b) const { SMXGBufFree(b); }
};
using Buf = std::unique_ptr<SMXGBuf, Free>;

const std::string kDecl = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>";

std::string text(const SMXGBuf *b)
{
    EXPECT_EQ(std::strlen(static_cast<const char *>(b->buf)), b->length) << "terminated at its length";
    return {static_cast<const char *>(b->buf), b->length};
}

TEST(XmlWriter, BuildsADocumentNodeByNode)
{
    Buf doc(SMXGBufAlloc(10, 1)), attrs(SMXGBufAlloc(0, 0)), noAttrs(SMXGBufAlloc(64, 0));
    ASSERT_NE(doc, nullptr);
    EXPECT_EQ(doc->capacity, 64u);
    const uint32_t id = 7;
    const int16_t level = -3;
    const SMXGValueOptions hex{0x400, 0};
    EXPECT_EQ(SMXGBufCatAttribute(attrs.get(), "id", &id, 4, 7, nullptr), 0);
    EXPECT_EQ(text(attrs.get()), "id=\"7\"") << "no blank before the first attribute";
    EXPECT_EQ(SMXGBufCatAttribute(attrs.get(), "name", "a<b", 0, 13, nullptr), 0);
    EXPECT_EQ(SMXGBufCatAttribute(attrs.get(), "mask", &id, 4, 7, &hex), 0);
    const std::vector<int32_t> statuses{SMXGBufCatBeginNode(doc.get(), "Event", attrs.get()),
                                        SMXGBufCatNode(doc.get(), "Level", nullptr, &level, 2, 2, nullptr),
                                        SMXGBufCatNode(doc.get(), "Missing", nullptr, nullptr, 0, 13, nullptr),
                                        SMXGBufCatEmptyNode(doc.get(), "Flag", attrs.get()),
                                        SMXGBufCatEmptyNode(doc.get(), "Bare", nullptr),
                                        SMXGBufCatBeginNode(doc.get(), "Body", noAttrs.get()),
                                        SMXGBufCatEndNode(doc.get(), "Body"),
                                        SMXGBufCatEndNode(doc.get(), "Event"),
                                        SMXGBufCatBeginNode(nullptr, "a", nullptr),
                                        SMXGBufCatEmptyNode(doc.get(), nullptr, nullptr),
                                        SMXGBufCatEndNode(doc.get(), nullptr),
                                        SMXGBufCatAttribute(nullptr, "a", &id, 4, 7, nullptr)};
    EXPECT_EQ(statuses, (std::vector<int32_t>{0, 0, 0, 0, 0, 0, 0, 0, 0x10F, 0x10F, 0x10F, 0x10F}));
    EXPECT_EQ(text(doc.get()), kDecl + "<Event id=\"7\" name=\"a<b\" mask=\"0x7\"><Level>-3</Level><Missing></Missing>"
                                       "<Flag id=\"7\" name=\"a<b\" mask=\"0x7\" /><Bare /><Body></Body></Event>");
}

TEST(XmlWriter, WritesEveryValueType)
{
    const ucs2 units[] = {'p', 0xE9, '&', 0};
    const ucs2 *unitsPtr = units;
    const char *utf8Ptr = "x&y", *nullString = nullptr;
    const uint16_t yes = 1, two = 2;
    const int8_t i8 = -128;
    const uint8_t u8 = 255, bytes[] = {0x01, 0xAB};
    const int64_t i64 = INT64_MIN;
    const double d = 2.5;
    const uint32_t locale = 2057, u32 = 1;
    const int32_t epoch = 0;
    const SMXGValueOptions binary{0x100, 0}, list{0x400, 0}, octal{0x200, 0}, once{0, 1};
    setenv("TZ", "UTC0", 1);  // the time text is local time
    tzset();
    const std::tuple<const void *, uint32_t, uint32_t, const SMXGValueOptions *, int32_t, std::string> cases[] = {
        {&yes, 2, 0, nullptr, 0, "true"},
        {&two, 2, 0, nullptr, 0, "false"},
        {&i8, 1, 1, nullptr, 0, "-128"},
        {&u8, 1, 5, &binary, 0, "11111111"},
        {&i64, 8, 4, nullptr, 0, "-9223372036854775808"},
        {&d, 8, 9, nullptr, 0, "2.500"},
        {&locale, 4, 10, nullptr, 0, "en_GB"},
        {&epoch, 4, 11, nullptr, 0, "Thu Jan  1 00:00:00 1970"},
        {bytes, 2, 12, nullptr, 0, "01AB"},
        {bytes, 2, 12, &list, 0, "0x01,0xAB"},
        {"a&b", 0, 13, nullptr, 0, "a&b"},
        {"a&b", 2, 13, &once, 0, "a"},
        {&utf8Ptr, 0, 48, &once, 0, "x&amp;y"},
        {&utf8Ptr, 0, 50, nullptr, 0, "x&y"},
        {units, 0, 14, nullptr, 0, "p\xC3\xA9&"},
        {&unitsPtr, 0, 49, &once, 0, "p\xC3\xA9&amp;"},
        {&nullString, 0, 48, nullptr, 0x100, ""},
        {nullptr, 4, 3, nullptr, 0x100, ""},
        {&u32, 4, 15, nullptr, -1, ""},
        {&u32, 4, 36, nullptr, -1, ""},
        {&u32, 4, 51, nullptr, -1, ""},
        {&u32, 4, 33, nullptr, 2, ""},
        {bytes, 2, 12, &octal, 2, ""},
        {&u32, 2, 3, nullptr, 0x10F, ""},
    };
    for (const auto &[value, size, type, options, status, expected] : cases) {
        Buf b(SMXGBufAlloc(64, 0));
        EXPECT_EQ(SMXGBufCatNodeValue(b.get(), value, size, type, options), status) << type;
        EXPECT_EQ(text(b.get()), expected) << type;
    }
    EXPECT_EQ(SMXGBufCatNodeValue(nullptr, &u32, 4, 7, nullptr), 0x10F);
    Buf doc(SMXGBufAlloc(64, 0));
    EXPECT_EQ(SMXGBufCatNode(doc.get(), "A", nullptr, &u32, 4, 44, nullptr), -1);
    EXPECT_EQ(SMXGBufCatNode(doc.get(), "B", nullptr, &u32, 4, 7, nullptr), 0);
    EXPECT_EQ(text(doc.get()), "<A><B>1</B>") << "a failed value leaves its element open";
}

TEST(XmlWriter, EscapesAsManyTimesAsAsked)
{
    std::string sixteen = "&";
    for (int i = 0; i < 16; ++i)
        sixteen += "amp;";
    const std::tuple<const char *, uint32_t, std::string> cases[] = {
        {"a&b", 1, "a&amp;b"}, {"<'\">", 1, "&lt;&apos;&quot;&gt;"},    {"a&b", 2, "a&amp;amp;b"},
        {"&", 17, sixteen},    {"plain \xC3\xA9", 3, "plain \xC3\xA9"}, {"", 1, ""},
    };
    for (const auto &[in, count, expected] : cases) {
        uint32_t size = 1;
        std::unique_ptr<char, void (*)(char *)> out(SMXGEscapeXMLUTF8Str(in, &size, count), SMXGBufFreeContent);
        ASSERT_NE(out, nullptr) << in;
        EXPECT_EQ(std::string(out.get()), expected) << in << " x" << count;
        EXPECT_EQ(size, expected.size());
    }
    uint32_t size = 8;
    EXPECT_EQ(SMXGEscapeXMLUTF8Str("a", &size, 0), nullptr);
    EXPECT_EQ(SMXGEscapeXMLUTF8Str(nullptr, &size, 1), nullptr);
    EXPECT_EQ(SMXGEscapeXMLUTF8Str("a", nullptr, 1), nullptr);
    EXPECT_EQ(size, 8u);
    Buf b(SMXGBufAlloc(64, 0));
    const SMXGValueOptions twice{0, 2};
    EXPECT_EQ(SMXGBufCatNode(b.get(), "v", nullptr, "a&b", 0, 13, &twice), 0);
    EXPECT_EQ(text(b.get()), "<v>a&amp;amp;b</v>");
}

TEST(XmlWriter, GrowsByDoublingThenByAQuarter)
{
    Buf b(SMXGBufAlloc(64, 0));
    const std::string chunk(10, 'x'), large(3000, 'z'), big(1048575, 'y');
    for (int i = 0; i < 63; ++i)
        SMXGBufCatNodeValue(b.get(), chunk.c_str(), 11, 13, nullptr);
    EXPECT_EQ(b->capacity, 1024u) << "doubling from 64";
    SMXGBufCatNodeValue(b.get(), large.c_str(), 0, 13, nullptr);
    EXPECT_EQ(b->capacity, 3631u) << "the need when it is more than double";
    ASSERT_NE(SMXGBufReAllocContent(b.get(), 1048575, 0), nullptr);
    EXPECT_EQ(b->capacity, 1048575u);
    SMXGBufCatNodeValue(b.get(), big.c_str(), 0, 13, nullptr);
    EXPECT_EQ(b->capacity, 2097150u) << "doubled at 1,048,575";
    SMXGBufCatNodeValue(b.get(), big.c_str(), 0, 13, nullptr);
    EXPECT_EQ(b->capacity, 2097150u * 5 / 4) << "a quarter more above it";
    EXPECT_EQ(text(b.get()), big + big);
    ASSERT_NE(SMXGBufReAllocContent(b.get(), 10, 1), nullptr);
    EXPECT_EQ(text(b.get()), kDecl) << "the declaration grows past the exact capacity";
    char *kept = SMXGBufFreeGetContent(b.release());
    EXPECT_EQ(std::string(kept), kDecl);
    SMXGBufFreeContent(kept);
    SMXGBufFreeContent(nullptr);
    EXPECT_EQ(SMXGBufFree(nullptr), nullptr);
    EXPECT_EQ(SMXGBufReAllocContent(nullptr, 10, 0), nullptr);
}

}  // namespace
