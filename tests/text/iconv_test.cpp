// Both converters against the C library's iconv over random BMP text
// without surrogates, where the library's conversions are the standard ones
// and must agree byte for byte.
#include <gtest/gtest.h>

#include <iconv.h>

#include <cerrno>
#include <random>
#include <string>
#include <vector>

#include <zksupt/text.h>

namespace {

// glibc's builtin "UCS-2" is in host byte order (no module to load, no
// byte-order mark); the test proves it below rather than trusting the name.
constexpr const char *kHostUcs2 = "UCS-2";

class Iconv {
  public:
    Iconv(const char *to, const char *from) : cd_(iconv_open(to, from)) {}
    ~Iconv()
    {
        if (ok())
            iconv_close(cd_);
    }
    Iconv(const Iconv &) = delete;
    Iconv &operator=(const Iconv &) = delete;
    bool ok() const { return cd_ != reinterpret_cast<iconv_t>(-1); }

    // The converted bytes, or "(failed)" with errno.
    std::string operator()(const void *in, std::size_t bytes)
    {
        std::string out(4 * bytes + 8, '\0');
        char *src = const_cast<char *>(static_cast<const char *>(in));
        char *dst = out.data();
        std::size_t left = bytes, room = out.size();
        if (iconv(cd_, &src, &left, &dst, &room) == static_cast<std::size_t>(-1))
            return "(failed " + std::to_string(errno) + ")";
        out.resize(out.size() - room);
        return out;
    }

  private:
    iconv_t cd_;
};

std::string bytesOf(const std::vector<ucs2> &units)
{
    return {reinterpret_cast<const char *>(units.data()), units.size() * sizeof(ucs2)};
}

// Random text of 0 to 300 units: ASCII, two-byte and three-byte characters
// in varying mixtures, never 0 or a surrogate.
std::vector<ucs2> randomBmpText(std::mt19937 &random)
{
    std::uniform_int_distribution<unsigned> length(0, 300), kind(0, 3), ascii(1, 0x7F), twoByte(0x80, 0x7FF),
        threeByte(0x800, 0xFFFF - 0x800);
    std::vector<ucs2> text(length(random));
    for (ucs2 &unit : text) {
        switch (kind(random)) {
        case 0:
        case 1:
            unit = static_cast<ucs2>(ascii(random));
            break;
        case 2:
            unit = static_cast<ucs2>(twoByte(random));
            break;
        default: {
            const unsigned cp = threeByte(random);
            unit = static_cast<ucs2>(cp < 0xD800 ? cp : cp + 0x800);  // skip the surrogates
        }
        }
    }
    return text;
}

TEST(IconvAgreement, BothDirectionsOverRandomBmpText)
{
    Iconv toUcs2(kHostUcs2, "UTF-8"), toUtf8("UTF-8", kHostUcs2);
    ASSERT_TRUE(toUcs2.ok() && toUtf8.ok()) << "iconv cannot convert between UTF-8 and " << kHostUcs2
                                            << "; the comparison needs glibc's builtin charsets";
    const ucs2 letterA = 'A';
    ASSERT_EQ(toUcs2("A", 1), std::string(reinterpret_cast<const char *>(&letterA), 2))
        << kHostUcs2 << " is not in host byte order here";

    std::mt19937 random(20261121);
    for (int round = 0; round < 2000; ++round) {
        std::vector<ucs2> text = randomBmpText(random);
        const std::string utf8 = toUtf8(text.data(), text.size() * sizeof(ucs2));
        text.push_back(0);

        std::string ours(utf8.size() + 1, '#');
        auto size = static_cast<uint32_t>(ours.size());
        ASSERT_EQ(SMUCS2StrToUTF8Str(ours.data(), &size, text.data()), SM_STATUS_SUCCESS);
        ASSERT_EQ(size, ours.size());
        ours.pop_back();
        ASSERT_EQ(ours, utf8) << "round " << round;

        std::vector<ucs2> back(text.size());
        size = static_cast<uint32_t>(back.size() * sizeof(ucs2));
        ASSERT_EQ(SMUTF8StrToUCS2Str(back.data(), &size, utf8.c_str()), SM_STATUS_SUCCESS);
        ASSERT_EQ(size, back.size() * sizeof(ucs2));
        ASSERT_EQ(bytesOf(back), toUcs2(utf8.data(), utf8.size()) + std::string(2, '\0')) << "round " << round;
    }
}

}  // namespace
