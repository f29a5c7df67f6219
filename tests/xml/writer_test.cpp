// The XML writer: documents built node by node and compared byte for byte,
// attributes, escaping, typed and missing values, and growth.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include <zksupt/zksupt.h>

#include "support/status_names.h"

namespace {

using zksupt::test::statusName;

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
    EXPECT_EQ(SMXGBufCatAttribute(attrs.get(), "id", &id, 4, 7, nullptr), SM_STATUS_SUCCESS);
    EXPECT_EQ(text(attrs.get()), "id=\"7\"") << "no blank before the first attribute";
    EXPECT_EQ(SMXGBufCatAttribute(attrs.get(), "name", "a<b", 0, 13, nullptr), SM_STATUS_SUCCESS);
    EXPECT_EQ(SMXGBufCatAttribute(attrs.get(), "mask", &id, 4, 7, &hex), SM_STATUS_SUCCESS);
    const std::vector<int32_t> built{SMXGBufCatBeginNode(doc.get(), "Event", attrs.get()),
                                     SMXGBufCatNode(doc.get(), "Level", nullptr, &level, 2, 2, nullptr),
                                     SMXGBufCatNode(doc.get(), "Missing", nullptr, nullptr, 0, 13, nullptr),
                                     SMXGBufCatEmptyNode(doc.get(), "Flag", attrs.get()),
                                     SMXGBufCatEmptyNode(doc.get(), "Bare", nullptr),
                                     SMXGBufCatBeginNode(doc.get(), "Body", noAttrs.get()),
                                     SMXGBufCatEndNode(doc.get(), "Body"),
                                     SMXGBufCatEndNode(doc.get(), "Event")};
    EXPECT_EQ(built, std::vector<int32_t>(8, SM_STATUS_SUCCESS));
    const std::vector<int32_t> refused{
        SMXGBufCatBeginNode(nullptr, "a", nullptr), SMXGBufCatEmptyNode(doc.get(), nullptr, nullptr),
        SMXGBufCatEndNode(doc.get(), nullptr), SMXGBufCatAttribute(nullptr, "a", &id, 4, 7, nullptr)};
    EXPECT_EQ(refused, std::vector<int32_t>(4, SM_STATUS_INVALID_PARAMETER));
    EXPECT_EQ(text(doc.get()), kDecl + "<Event id=\"7\" name=\"a<b\" mask=\"0x7\"><Level>-3</Level><Missing></Missing>"
                                       "<Flag id=\"7\" name=\"a<b\" mask=\"0x7\" /><Bare /><Body></Body></Event>");
}

TEST(XmlWriter, WritesEveryValueType)
{
    const ucs2 units[] = {'p', 0xE9, '&', 0};
    const ucs2 *unitsPtr = units;
    const char *utf8Ptr = "x&y", *nullString = nullptr;
    const uint16_t yes = 1;
    const uint8_t bytes[] = {0x01, 0xAB};
    const uint32_t u32 = 1;
    const SMXGValueOptions list{0x400, 0}, octal{0x200, 0}, once{0, 1};
    // The text forms are the typed values' (tests/sdo); here what the writer adds.
    const std::tuple<const void *, uint32_t, uint32_t, const SMXGValueOptions *, std::string> cases[] = {
        {&yes, 2, 0, nullptr, "true"},
        {bytes, 2, 12, &list, "0x01,0xAB"},
        {"a&b", 0, 13, nullptr, "a&b"},
        {"a&b", 2, 13, &once, "a"},
        {&utf8Ptr, 0, 48, &once, "x&amp;y"},
        {&utf8Ptr, 0, 50, nullptr, "x&y"},
        {units, 0, 14, nullptr, "p\xC3\xA9&"},
        {&unitsPtr, 0, 49, &once, "p\xC3\xA9&amp;"},
        {&nullString, 0, 48, nullptr, "NOT_FOUND"},
        {nullptr, 4, 3, nullptr, "NOT_FOUND"},
        {&u32, 4, 15, nullptr, "FAILURE"},
        {&u32, 4, 36, nullptr, "FAILURE"},
        {&u32, 4, 51, nullptr, "FAILURE"},
        {&u32, 4, 33, nullptr, "BAD_ARGUMENT"},
        {bytes, 2, 12, &octal, "BAD_ARGUMENT"},
        {&u32, 2, 3, nullptr, "INVALID_PARAMETER"},
    };
    // The text appended, or the status name and what was appended anyway.
    for (const auto &[value, size, type, options, expected] : cases) {
        Buf b(SMXGBufAlloc(64, 0));
        const int32_t status = SMXGBufCatNodeValue(b.get(), value, size, type, options);
        EXPECT_EQ(status == SM_STATUS_SUCCESS ? text(b.get()) : statusName(status) + text(b.get()), expected) << type;
    }
    EXPECT_EQ(SMXGBufCatNodeValue(nullptr, &u32, 4, 7, nullptr), SM_STATUS_INVALID_PARAMETER);
    Buf doc(SMXGBufAlloc(64, 0));
    EXPECT_EQ(SMXGBufCatNode(doc.get(), "A", nullptr, &u32, 4, 44, nullptr), SM_STATUS_FAILURE);
    EXPECT_EQ(SMXGBufCatNode(doc.get(), "B", nullptr, &u32, 4, 7, nullptr), SM_STATUS_SUCCESS);
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
    EXPECT_EQ(SMXGBufCatNode(b.get(), "v", nullptr, "a&b", 0, 13, &twice), SM_STATUS_SUCCESS);
    EXPECT_EQ(text(b.get()), "<v>a&amp;amp;b</v>");
}

// Growth is the sized strings' rule (tests/text_helpers); here what the
// buffer's own calls add: a first capacity of at least 64, reallocation,
// and handing the content over.
TEST(XmlWriter, ContentIsReallocatedAndHandedOver)
{
    Buf b(SMXGBufAlloc(64, 0));
    const std::string large(3000, 'z');
    SMXGBufCatNodeValue(b.get(), large.c_str(), 0, 13, nullptr);
    EXPECT_EQ(b->capacity, 3001u) << "the need when it is more than double";
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
