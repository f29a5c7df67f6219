// Name-value parameter vectors: names, lookups by name, typed values and
// enumeration words.
#include <string>
#include <tuple>
#include <vector>

#include "sdo/sdo_test_util.h"
#include "support/status_names.h"

namespace zksupt::test {
namespace {

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

TEST(Nvp, SplitsNameAndValue)
{
    const std::tuple<std::string, int32_t, const char *, const char *> cases[] = {
        {"size=10", 1, "size", "10"}, {"a=b=c", 1, "a", "b=c"},         {"x=", 1, "x", ""},
        {"=10", 0, "(null)", "10"},   {"plain", 0, "(null)", "(null)"}, {"", 0, "(null)", "(null)"},
    };
    for (auto [param, valid, name, value] : cases) {
        std::string copy = param;
        EXPECT_EQ(SMIsValidParam(param.c_str()), valid) << param;
        EXPECT_EQ(str(SMNVPGetUTF8ParamValue(copy.data())), value) << param;
        const char *got = SMNVPGetUTF8ParamName(copy.data());
        EXPECT_EQ(str(got), name) << param;
        EXPECT_TRUE(got == nullptr ? copy == param : got == copy.data()) << "cut in place, or left alone";
    }
    EXPECT_EQ(SMIsValidParam(nullptr) + !!SMNVPGetUTF8ParamName(nullptr) + !!SMNVPGetUTF8ParamValue(nullptr), 0);
}

TEST(Nvp, FindsTheFirstParameterOfAName)
{
    Params p({"=skip", "junk", "Size=1", "sizes=2", "size=3", "si=4", "size=5", "level=1=2"});
    const std::tuple<const char *, int32_t, int32_t> cases[] = {
        {"size", 0, 4}, {"size", 1, 2},  {"SIZE", 1, 2},   {"SIZE", 0, -1},  {"sizes", 0, 3},
        {"si", 0, 5},   {"s", 0, -1},    {"size=3", 0, 4}, {"size=", 0, -1}, {"level=1", 0, 7},
        {"", 0, -1},    {"junk", 0, -1}, {"skip", 0, -1},
    };
    for (const auto &[name, fold, index] : cases)
        EXPECT_EQ(SMNVPGetParamIndexByUTF8Name(p.n(), p.v(), name, fold), index) << name << " " << fold;
    EXPECT_EQ(SMNVPGetParamIndexByUTF8Name(0, p.v(), "size", 0), -1);
    EXPECT_EQ(SMNVPGetParamIndexByUTF8Name(4, p.v(), "size", 0), -1) << "only n parameters are read";
    EXPECT_EQ(SMNVPGetParamIndexByUTF8Name(p.n(), nullptr, "size", 0), -1);
    EXPECT_EQ(str(SMNVPGetUTF8ParamValueByUTF8Name(p.n(), p.v(), "level", 0)), "1=2");
    EXPECT_EQ(SMNVPGetUTF8ParamValueByUTF8Name(p.n(), p.v(), "depth", 0), nullptr);
}

TEST(Nvp, ParsesTheValueOfAParameter)
{
    Params p({"port=8080", "mask=0xff", "bad=12x"});
    const Bytes port = bytesOf<uint16_t>(8080);
    // {name, fold case, type, the value's bytes or the status, *size}
    const std::tuple<const char *, int32_t, uint32_t, std::string, uint32_t> cases[] = {
        {"PORT", 1, 6, std::string(port.begin(), port.end()), 2},
        {"mask", 0, 0x405, "\xFF", 1},
        {"bad", 0, 3, "INVALID_PARAMETER", 4},
        {"PORT", 0, 6, "NOT_FOUND", 8},
        {"port", 0, 5, "VALUE_TOO_LARGE", 1},
    };
    for (const auto &[name, fold, type, expected, size] : cases) {
        uint8_t buffer[8] = {};
        uint32_t cap = 8;
        const int32_t status = SMNVPUTF8ToTypeValue(p.n(), p.v(), name, fold, buffer, &cap, type);
        const std::string got = status == SM_STATUS_SUCCESS ? std::string(buffer, buffer + cap) : statusName(status);
        EXPECT_EQ(got, expected) << name;
        EXPECT_EQ(cap, size) << name;
    }
    uint32_t cap = 8;
    EXPECT_EQ(SMNVPUTF8ToTypeValue(p.n(), nullptr, "port", 0, &cap, &cap, 6), SM_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(SMNVPUTF8ToTypeValue(p.n(), p.v(), "port", 0, nullptr, &cap, 6), SM_STATUS_INVALID_PARAMETER);
}

TEST(Nvp, MapsEnumerationWords)
{
    const SMNVPEnumRow table[] = {{"unknown", 0xEE, 0}, {"none", 0, 0}, {"read", 1, 0},
                                  {"write", 2, 0},      {"exec", 4, 0}, {"READ", 8, 0}};
    Params p({"mode=read|WRITE", "list=exec,read,bogus", "one=Write", "odd=read,write|exec", "gap=exec||read",
              "bad=bogus", "pipe=|", "empty="});
    const std::tuple<const char *, int32_t, uint32_t, uint32_t> cases[] = {
        {"mode", 1, 6, 3},     {"mode", 0, 6, 0xEE}, {"list", 1, 6, 5}, {"one", 1, 6, 2},           {"one", 0, 6, 2},
        {"odd", 1, 6, 4},      {"gap", 1, 6, 5},     {"bad", 1, 6, 0},  {"bad", 0, 6, 0xEE},        {"pipe", 1, 6, 0},
        {"empty", 0, 6, 0xEE}, {"absent", 1, 6, 0},  {"mode", 1, 3, 1}, {"mode", 1, 1, 0x80000000},
    };
    for (const auto &[name, multiple, rows, value] : cases)
        EXPECT_EQ(SMNVPGetEnums32Value(p.n(), p.v(), name, 0, table, rows, multiple), value) << name << " " << multiple;
    const SMNVPEnumRow defaults[] = {{"", 7, 0}, {"", 9, 0}};
    EXPECT_EQ(SMNVPGetEnums32Value(p.n(), p.v(), "absent", 0, defaults, 2, 0), 9u) << "row 1 is the absent value";
    EXPECT_EQ(SMNVPGetEnums32Value(p.n(), p.v(), "MODE", 1, table, 6, 1), 3u);
    EXPECT_EQ(SMNVPGetEnums32Value(p.n(), nullptr, "mode", 0, table, 6, 1), 0x80000000);
    EXPECT_EQ(SMNVPGetEnums32Value(p.n(), p.v(), nullptr, 0, table, 6, 1), 0x80000000);
    EXPECT_EQ(SMNVPGetEnums32Value(p.n(), p.v(), "mode", 0, nullptr, 6, 1), 0x80000000);
}

}  // namespace
}  // namespace zksupt::test
