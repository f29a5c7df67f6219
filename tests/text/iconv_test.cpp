// Both converters against the C library's iconv over random BMP text without
// surrogates, where the library's forms are the standard ones: the results
// must agree byte for byte.
#include <gtest/gtest.h>

#include <iconv.h>

#include <random>
#include <string>

#include <zksupt/text.h>

namespace {

// glibc's builtin "UCS-2": host byte order, no byte-order mark, no module to
// load (the PowerPC sysroot has none). The test checks the order itself.
constexpr const char *kHostUcs2 = "UCS-2";

std::string viaIconv(iconv_t cd, const void *in, std::size_t bytes)
{
    std::string out(4 * bytes, '\0');
    char *src = const_cast<char *>(static_cast<const char *>(in)), *dst = out.data();
    std::size_t left = bytes, room = out.size();
    if (iconv(cd, &src, &left, &dst, &room) == static_cast<std::size_t>(-1))
        return "(iconv failed)";
    out.resize(out.size() - room);
    return out;
}

TEST(IconvAgreement, BothDirectionsOverRandomBmpText)
{
    iconv_t toUcs2 = iconv_open(kHostUcs2, "UTF-8"), toUtf8 = iconv_open("UTF-8", kHostUcs2);
    const auto failed = reinterpret_cast<iconv_t>(-1);
    ASSERT_TRUE(toUcs2 != failed && toUtf8 != failed) << "iconv cannot convert between UTF-8 and " << kHostUcs2;
    const ucs2 letterA = 'A';
    ASSERT_EQ(viaIconv(toUcs2, "A", 1), std::string(reinterpret_cast<const char *>(&letterA), 2))
        << kHostUcs2 << " is not in host byte order";

    // Up to 300 units: half ASCII, a quarter each two- and three-byte forms.
    std::mt19937 random(20261121);
    std::uniform_int_distribution<unsigned> length(0, 300), kind(0, 3), ascii(1, 0x7F), twoBytes(0x80, 0x7FF),
        threeBytes(0x800, 0xF7FF);
    for (int round = 0; round < 2000; ++round) {
        std::vector<ucs2> text(length(random));
        for (ucs2 &unit : text) {
            const unsigned k = kind(random), threeByteForm = threeBytes(random);
            unit = static_cast<ucs2>(k < 2    ? ascii(random)
                                     : k == 2 ? twoBytes(random)
                                              : threeByteForm + (threeByteForm >= 0xD800 ? 0x800 : 0));
        }
        const std::string utf8 = viaIconv(toUtf8, text.data(), text.size() * sizeof(ucs2));
        text.push_back(0);

        std::string ours(utf8.size() + 1, '#');
        auto size = static_cast<uint32_t>(ours.size());
        ASSERT_EQ(SMUCS2StrToUTF8Str(ours.data(), &size, text.data()), SM_STATUS_SUCCESS);
        ASSERT_EQ(size, ours.size());
        ASSERT_EQ(ours, utf8 + '\0') << "round " << round;

        std::vector<ucs2> back(text.size());
        size = static_cast<uint32_t>(back.size() * sizeof(ucs2));
        ASSERT_EQ(SMUTF8StrToUCS2Str(back.data(), &size, utf8.c_str()), SM_STATUS_SUCCESS);
        ASSERT_EQ(size, back.size() * sizeof(ucs2));
        const std::string backBytes(reinterpret_cast<const char *>(back.data()), size);
        ASSERT_EQ(backBytes, viaIconv(toUcs2, utf8.data(), utf8.size()) + std::string(2, '\0')) << "round " << round;
    }
    iconv_close(toUcs2);
    iconv_close(toUtf8);
}

}  // namespace
