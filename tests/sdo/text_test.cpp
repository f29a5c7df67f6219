// Typed values as text and back (the radix checks are the number-text
// helpers', tests/text_helpers), and name-value parameter vectors.
#include <gtest/gtest.h>

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <ctime>
#include <stdexcept>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include <zksupt/zksupt.h>

#include "support/status_names.h"
#include "support/values.h"

namespace zksupt::test {
namespace {
// A copy of bytes ending where a readable page does, before a PROT_NONE page:
// a read past its end faults in every build.
class PageEnd {
  public:
    explicit PageEnd(const Bytes &bytes)
        : page_(static_cast<std::size_t>(::sysconf(_SC_PAGESIZE))),
          length_((bytes.size() + page_ - 1) / page_ * page_ + page_)
    {
        void *map = ::mmap(nullptr, length_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (map == MAP_FAILED || ::mprotect(static_cast<uint8_t *>(map) + length_ - page_, page_, PROT_NONE) != 0)
            throw std::runtime_error("no page-end buffer");
        base_ = static_cast<uint8_t *>(map);
        data_ = base_ + length_ - page_ - bytes.size();
        std::memcpy(data_, bytes.data(), bytes.size());
    }
    ~PageEnd() { ::munmap(base_, length_); }
    PageEnd(const PageEnd &) = delete;
    PageEnd &operator=(const PageEnd &) = delete;
    uint8_t *data() const { return data_; }

  private:
    std::size_t page_, length_;
    uint8_t *base_ = nullptr, *data_ = nullptr;
};

// A UCS-2 string's bytes in host order, terminator included unless asked.
Bytes units(std::u16string_view s, bool terminated = true)
{
    Bytes b((s.size() + terminated) * 2, 0);
    std::memcpy(b.data(), s.data(), s.size() * 2);
    return b;
}

template <class T> std::string as(T value)
{
    const Bytes bytes = bytesOf(value);
    return {bytes.begin(), bytes.end()};
}

// The bytes parsed from text, or the status.
std::string parse(uint32_t type, const char *text)
{
    Bytes buffer(256, 0xEE);
    uint32_t size = 256;
    const int32_t status = SMXLTUTF8ToTypeValue(text, buffer.data(), &size, type);
    return status == SM_STATUS_SUCCESS ? std::string(buffer.begin(), buffer.begin() + size) : statusName(status);
}

// The text of a value that ends where readable memory does, or the status.
std::string format(uint32_t type, const Bytes &value)
{
    std::string text(512, '\x7f');
    uint32_t size = 512;
    const PageEnd atEnd(value);
    const int32_t status =
        SMXLTTypeValueToUTF8(atEnd.data(), static_cast<uint32_t>(value.size()), text.data(), &size, type);
    return status == SM_STATUS_SUCCESS ? text.substr(0, size - 1) : statusName(status);
}

TEST(TypeText, ParsesEveryCode)
{
    const std::tuple<uint32_t, const char *, std::string> cases[] = {
        {1, "128", "VALUE_TOO_LARGE"},
        {1, "-129", "VALUE_TOO_SMALL"},
        {0x401, "80", "VALUE_TOO_LARGE"},
        {0x201, "177", as<int8_t>(127)},
        {0x302, "+12", as<int16_t>(12)},
        {3, "2147483648", as<int32_t>(INT32_MAX)},
        {0x403, "FFFFFFFF", as<int32_t>(INT32_MAX)},
        {4, "-9223372036854775808", as<int64_t>(INT64_MIN)},
        {0x404, "0x7FFFFFFFFFFFFFFF", as<int64_t>(INT64_MAX)},
        {5, "256", "VALUE_TOO_LARGE"},
        {0x406, "0XfFfF", as<uint16_t>(65535)},
        {7, "-1", as<uint32_t>(UINT32_MAX)},
        {8, "-1", as<uint64_t>(UINT64_MAX)},
        {0x208, "1777777777777777777777", as<uint64_t>(UINT64_MAX)},
        {0, "TRUE", as<uint16_t>(1)},
        {0, "yes", "INVALID_PARAMETER"},
        {9, "9007199254740993", as(9007199254740993.0)},
        {10, "zh_TW", as<uint32_t>(1028)},
        {10, "EN_US", "FAILURE"},
        {11, "Thu Jan  1 00:00:00 1970", "BAD_ARGUMENT"},
        {12, "0aF", "\x0A\x0F"},
        {12, "g0", "FAILURE"},
        {0x40C, "0x1,2,0xff", "\x01\x02\xFF"},
        {0x40C, "0x100", "FAILURE"},
        {0x10C, "00", "BAD_ARGUMENT"},
        {0x410, "ff00", std::string("\xFF\0", 2)},
        {13, "h\xC3\xA9", std::string("h\xC3\xA9\0", 4)},
        {15, "10.1.2.254", "\x0A\x01\x02\xFE"},
        {15, "no address", "FAILURE"},
        {8, "+", "INVALID_PARAMETER"},
        {4, "1.5", "INVALID_PARAMETER"},
    };
    for (const auto &[type, text, expected] : cases)
        EXPECT_EQ(parse(type, text), expected) << std::hex << type << " " << text;
    const Bytes wide = units(u"a\u00E9");
    EXPECT_EQ(parse(14, "a\xC3\xA9"), std::string(wide.begin(), wide.end()));
}

TEST(TypeText, ParsingChecksArgumentsThenCapacity)
{
    uint8_t buffer[8] = {0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE, 0xEE};
    uint32_t size = 8;
    EXPECT_EQ(SMXLTUTF8ToTypeValue(nullptr, buffer, &size, 3), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMXLTUTF8ToTypeValue("1", buffer, nullptr, 3), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMXLTUTF8ToTypeValue("1", nullptr, &size, 3), SM_STATUS_INVALID_PARAMETER);
    size = 0;
    EXPECT_EQ(SMXLTUTF8ToTypeValue("junk", nullptr, &size, 4), SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(size, 8u) << "a capacity of 0 with no buffer asks for the size";
    // {type, text, capacity, the size it needs}
    const std::tuple<uint32_t, const char *, uint32_t, uint32_t> tooSmall[] = {
        {0, "true", 1, 2},  {4, "1", 7, 8},         {10, "de", 3, 4}, {13, "abc", 3, 4},
        {12, "0102", 1, 2}, {0x40C, "1,2,3", 2, 3}, {14, "ab", 5, 6}, {16, "abcdef", 2, 3},
    };
    for (const auto &[type, text, capacity, need] : tooSmall) {
        size = capacity;
        EXPECT_EQ(SMXLTUTF8ToTypeValue(text, buffer, &size, type), SM_STATUS_BUFFER_TOO_SMALL) << type;
        EXPECT_EQ(size, need) << type;
    }
    EXPECT_EQ(Bytes(buffer, buffer + 8), Bytes(8, 0xEE)) << "nothing written when it does not fit";
}

TEST(TypeText, FormatsEveryCode)
{
    setenv("TZ", "UTC0", 1);  // the time text is local time
    tzset();
    const std::tuple<uint32_t, Bytes, std::string> cases[] = {
        {1, bytesOf<int8_t>(-128), "-128"},
        {0x401, bytesOf<int8_t>(-1), "0xffffffff"},
        {0x101, bytesOf<int8_t>(-1), std::string(32, '1')},
        {3, bytesOf<int16_t>(1), "INVALID_PARAMETER"},  // a value shorter than its type

        {0x105, bytesOf<uint8_t>(255), "11111111"},
        {4, bytesOf<int64_t>(INT64_MIN), "-9223372036854775808"},
        {0x404, bytesOf<int64_t>(-1), "-1"},
        {0x408, bytesOf<uint64_t>(16), "16"},
        {9, bytesOf(-1.0006), "-1.001"},
        {9, bytesOf(1e40), "10000000000000000303786028427003666890752.000"},
        {11, bytesOf<int32_t>(0), "Thu Jan  1 00:00:00 1970"},
        {12, {0x01, 0xAB, 0x00}, "01AB00"},
        {0x40C, {0x01, 0xAB}, "0x01,0xAB"},
        {0x20C, {1}, "BAD_ARGUMENT"},
        {0x410, {0xFE, 0x0}, "FE00"},
        {16, Bytes(63, 0xAA), std::string(126, 'A')},
        {16, Bytes(64, 0), "FAILURE"},
        {13, {'h', 'i', 0, 'x'}, "hi"},
        {14, units(u"a\u20AC"), "a\xE2\x82\xAC"},
        {14, units(u"ab", false), "ab"},  // unterminated: ends at its size,
        {14, Bytes{'?'}, ""},             // a lone last byte dropped
        {15, {192, 168, 0, 1}, "192.168.0.1"},
    };
    for (const auto &[type, value, text] : cases)
        EXPECT_EQ(format(type, value), text) << std::hex << type;
    EXPECT_EQ(format(0x10C, Bytes{'A', 0x00, 0xFF}).rfind("0x00000000: 41", 0), 0u);
}

// A capacity below the type's minimum (or the variable forms' need) writes nothing.
TEST(TypeText, FormattingReportsTheCapacityItNeeds)
{
    // {type, value, capacity, the size it needs}
    const std::tuple<uint32_t, Bytes, uint32_t, uint32_t> cases[] = {
        {0, bytesOf<uint16_t>(1), 4, 5}, {0x101, bytesOf<int8_t>(0), 32, 33}, {0x107, bytesOf<uint32_t>(0), 17, 33},
        {9, bytesOf(1e40), 32, 46},      {11, bytesOf<int32_t>(0), 63, 64},   {0x40C, {1, 2}, 9, 10},
        {14, units(u"ab"), 2, 3},
    };
    for (const auto &[type, value, capacity, need] : cases) {
        std::string text(need + 1, '#');
        uint32_t size = capacity;
        const auto n = static_cast<uint32_t>(value.size());
        EXPECT_EQ(SMXLTTypeValueToUTF8(value.data(), n, text.data(), &size, type), SM_STATUS_BUFFER_TOO_SMALL)
            << std::hex << type;
        EXPECT_EQ(size, need) << std::hex << type;
        EXPECT_EQ(text, std::string(need + 1, '#')) << "nothing written";
        EXPECT_EQ(SMXLTTypeValueToUTF8(value.data(), n, text.data(), &size, type), SM_STATUS_SUCCESS);
    }
    uint32_t size = 64;
    char text[64];
    EXPECT_EQ(SMXLTTypeValueToUTF8(nullptr, 4, text, &size, 3), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMXLTTypeValueToUTF8(text, 4, text, nullptr, 3), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMXLTTypeValueToUTF8(text, 4, nullptr, &size, 3), SM_STATUS_INVALID_PARAMETER);
}

// A writable vector of parameters, since reading a name cuts its string.
struct Params {
    std::vector<std::string> text;
    std::vector<char *> ptrs;
    explicit Params(std::vector<std::string> t) : text(std::move(t))
    {
        for (auto &s : text)
            ptrs.push_back(s.data());
    }
    int32_t n() const { return static_cast<int32_t>(ptrs.size()); }
    char **v() { return ptrs.data(); }
};

std::string str(const char *s)
{
    return s == nullptr ? "(null)" : s;
}

TEST(Nvp, SplitsNamesAndFindsTheFirstOfAName)
{
    const std::tuple<std::string, int32_t, const char *, const char *> splits[] = {
        {"a=b=c", 1, "a", "b=c"}, {"x=", 1, "x", ""}, {"=10", 0, "(null)", "10"}, {"plain", 0, "(null)", "(null)"}};
    for (auto [param, valid, name, value] : splits) {
        std::string copy = param;
        EXPECT_EQ(SMIsValidParam(param.c_str()), valid) << param;
        EXPECT_EQ(str(SMNVPGetUTF8ParamValue(copy.data())), value) << param;
        const char *got = SMNVPGetUTF8ParamName(copy.data());
        EXPECT_EQ(str(got), name) << param;
        EXPECT_TRUE(got == nullptr ? copy == param : got == copy.data()) << "cut in place, or left alone";
    }
    EXPECT_EQ(SMIsValidParam(nullptr) + !!SMNVPGetUTF8ParamName(nullptr) + !!SMNVPGetUTF8ParamValue(nullptr), 0);

    Params p({"=skip", "junk", "Size=1", "sizes=2", "size=3", "si=4", "size=5", "level=1=2"});
    const std::tuple<const char *, int32_t, int32_t> finds[] = {
        {"size", 0, 4},   {"SIZE", 1, 2},    {"SIZE", 0, -1}, {"si", 0, 5},    {"s", 0, -1},
        {"size=3", 0, 4}, {"level=1", 0, 7}, {"", 0, -1},     {"junk", 0, -1}, {"skip", 0, -1},
    };
    for (const auto &[name, fold, index] : finds)
        EXPECT_EQ(SMNVPGetParamIndexByUTF8Name(p.n(), p.v(), name, fold), index) << name << " " << fold;
    EXPECT_EQ(SMNVPGetParamIndexByUTF8Name(4, p.v(), "size", 0), -1) << "only n parameters are read";
    EXPECT_EQ(SMNVPGetParamIndexByUTF8Name(p.n(), nullptr, "size", 0), -1);
    EXPECT_EQ(str(SMNVPGetUTF8ParamValueByUTF8Name(p.n(), p.v(), "level", 0)), "1=2");
}

TEST(Nvp, ParsesValuesAndEnumerationWords)
{
    Params p({"port=8080", "mask=0xff", "bad=12x"});
    const Bytes port = bytesOf<uint16_t>(8080);
    // {name, fold case, type, the value's bytes or the status, *size}
    const std::tuple<const char *, int32_t, uint32_t, std::string, uint32_t> values[] = {
        {"PORT", 1, 6, std::string(port.begin(), port.end()), 2},
        {"mask", 0, 0x405, "\xFF", 1},
        {"bad", 0, 3, "INVALID_PARAMETER", 4},
        {"PORT", 0, 6, "NOT_FOUND", 8},
        {"port", 0, 5, "VALUE_TOO_LARGE", 1},
    };
    for (const auto &[name, fold, type, expected, size] : values) {
        uint8_t buffer[8] = {};
        uint32_t cap = 8;
        const int32_t status = SMNVPUTF8ToTypeValue(p.n(), p.v(), name, fold, buffer, &cap, type);
        EXPECT_EQ(status == SM_STATUS_SUCCESS ? std::string(buffer, buffer + cap) : statusName(status), expected);
        EXPECT_EQ(cap, size) << name;
    }
    uint32_t cap = 8;
    EXPECT_EQ(SMNVPUTF8ToTypeValue(p.n(), p.v(), "port", 0, nullptr, &cap, 6), SM_STATUS_INVALID_PARAMETER);

    const SMNVPEnumRow table[] = {{"unknown", 0xEE, 0}, {"none", 0, 0}, {"read", 1, 0},
                                  {"write", 2, 0},      {"exec", 4, 0}, {"READ", 8, 0}};
    Params e({"mode=read|WRITE", "list=exec,read,bogus", "one=Write", "odd=read,write|exec", "gap=exec||read",
              "bad=bogus", "pipe=|", "empty="});
    const std::tuple<const char *, int32_t, uint32_t, uint32_t> words[] = {
        {"mode", 1, 6, 3},   {"mode", 0, 6, 0xEE}, {"list", 1, 6, 5},          {"one", 0, 6, 2},  {"odd", 1, 6, 4},
        {"gap", 1, 6, 5},    {"bad", 1, 6, 0},     {"bad", 0, 6, 0xEE},        {"pipe", 1, 6, 0}, {"empty", 0, 6, 0xEE},
        {"absent", 1, 6, 0}, {"mode", 1, 3, 1},    {"mode", 1, 1, 0x80000000},
    };
    for (const auto &[name, multiple, rows, value] : words)
        EXPECT_EQ(SMNVPGetEnums32Value(e.n(), e.v(), name, 0, table, rows, multiple), value) << name << " " << multiple;
    const SMNVPEnumRow defaults[] = {{"", 7, 0}, {"", 9, 0}};
    EXPECT_EQ(SMNVPGetEnums32Value(e.n(), e.v(), "absent", 0, defaults, 2, 0), 9u) << "row 1 is the absent value";
    EXPECT_EQ(SMNVPGetEnums32Value(e.n(), e.v(), "MODE", 1, table, 6, 1), 3u);
    EXPECT_EQ(SMNVPGetEnums32Value(e.n(), nullptr, "mode", 0, table, 6, 1), 0x80000000);
}

}  // namespace
}  // namespace zksupt::test
