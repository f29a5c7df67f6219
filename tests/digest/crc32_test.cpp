// CRC-32 against a bit-at-a-time reference, and the library's bitwise
// checksum against its own rule and against CRC-32 where the two must agree.
#include <gtest/gtest.h>

#include <cctype>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <zksupt/digest.h>

#include "digest/crc32.h"
#include "random_bytes.h"

namespace zksupt::digest {
namespace {

using test::randomBytes;

// CRC-32 one bit at a time, straight from the definition.
uint32_t referenceCrc32(const uint8_t *bytes, std::size_t length)
{
    uint32_t reg = 0xFFFFFFFF;
    for (std::size_t i = 0; i < length; ++i) {
        reg ^= bytes[i];
        for (int bit = 0; bit < 8; ++bit)
            reg = (reg & 1) ? (reg >> 1) ^ 0xEDB88320 : reg >> 1;
    }
    return ~reg;
}

// The whole-byte rule, written as its two cases: the polynomial goes in when
// the byte's bits above the lowest are set, or when the lowest differs from
// the register's.
uint32_t referenceWholeByte(const std::vector<uint8_t> &bytes, uint32_t total)
{
    uint32_t reg = 0xFFFFFFFF;
    for (uint32_t i = 0; i < total; ++i) {
        unsigned b = i < bytes.size() ? bytes[i] : 0;
        for (int round = 0; round < 8; ++round) {
            const unsigned low = reg & 1;
            const bool feed = (b >> 1) != 0 || (b & 1) != low;
            reg = (reg >> 1) ^ (feed ? 0xEDB88320 : 0);
            b = (b ^ low) >> 1;
        }
    }
    return reg;
}

TEST(Crc32, CheckValueEmptyInputAndStrings)
{
    EXPECT_EQ(SMCRC32Compute_str("123456789"), 0xCBF43926u);
    EXPECT_EQ(SMCRC32Compute_vn("123456789", 9), 0xCBF43926u);
    EXPECT_EQ(SMCRC32Compute_str(""), 0u);
    EXPECT_EQ(SMCRC32Compute_vn(nullptr, 0), 0u);
    const std::string text(1000, 'k');
    EXPECT_EQ(SMCRC32Compute_str(text.c_str()), referenceCrc32(reinterpret_cast<const uint8_t *>(text.data()), 1000));
}

TEST(Crc32, MatchesTheBitwiseDefinitionForEveryLengthAndAlignment)
{
    const auto bytes = randomBytes(4096 + 64, 1);
    for (std::size_t offset = 0; offset < 16; ++offset)
        for (std::size_t length = 0; length <= 600; ++length)
            ASSERT_EQ(SMCRC32Compute_vn(bytes.data() + offset, static_cast<uint32_t>(length)),
                      referenceCrc32(bytes.data() + offset, length))
                << "offset " << offset << ", length " << length;
    for (std::size_t length : {1023u, 1024u, 1025u, 4095u, 4096u})
        EXPECT_EQ(SMCRC32Compute_vn(bytes.data() + 3, static_cast<uint32_t>(length)),
                  referenceCrc32(bytes.data() + 3, length));
}

TEST(Crc32, FastAndPortablePathsAgreeAndChain)
{
    const auto bytes = randomBytes(1 << 16, 2);
    std::mt19937 random(3);
    for (int trial = 0; trial < 200; ++trial) {
        const std::size_t offset = random() % 64;
        const std::size_t length = random() % (bytes.size() - offset);
        const std::size_t split = length == 0 ? 0 : random() % length;
        const uint8_t *start = bytes.data() + offset;
        const uint32_t whole = crc32Update(0, start, length);
        ASSERT_EQ(whole, crc32UpdatePortable(0, start, length)) << "length " << length;
        ASSERT_EQ(whole, crc32Update(crc32Update(0, start, split), start + split, length - split));
    }
}

TEST(Crc32, NoCaseLowersEveryByteFirst)
{
    EXPECT_EQ(SMCRC32Compute_strncase("ABC"), SMCRC32Compute_str("abc"));
    EXPECT_EQ(SMCRC32Compute_strncase("Global\\IPC.Name-7"), SMCRC32Compute_str("global\\ipc.name-7"));
    EXPECT_NE(SMCRC32Compute_str("ABC"), SMCRC32Compute_str("abc"));

    // Long enough to be lowered in several pieces, and with every byte value.
    std::string mixed;
    for (int i = 0; i < 700; ++i)
        mixed += static_cast<char>(1 + (i * 37) % 255);
    std::string lowered = mixed;
    for (auto &c : lowered)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    EXPECT_EQ(SMCRC32Compute_strncase(mixed.c_str()), SMCRC32Compute_str(lowered.c_str()));
}

TEST(GenerateCrc32, FollowsTheWholeByteRule)
{
    std::mt19937 random(5);
    for (int trial = 0; trial < 300; ++trial) {
        auto bytes = randomBytes(random() % 100, random());
        const auto total = static_cast<uint32_t>(random() % 130);
        ASSERT_EQ(SMGenerateCRC32(bytes.data(), static_cast<uint32_t>(bytes.size()), total),
                  referenceWholeByte(bytes, total))
            << bytes.size() << " bytes, total " << total;
    }
}

TEST(GenerateCrc32, CountsBytesPastTheLengthAsZeros)
{
    EXPECT_EQ(SMGenerateCRC32(nullptr, 0, 0), 0xFFFFFFFFu);
    const uint8_t padded[] = {0x31, 0xC7, 0, 0};
    const uint8_t withTail[] = {0x31, 0xC7, 0x55, 0xAA};
    EXPECT_EQ(SMGenerateCRC32(withTail, 2, 4), SMGenerateCRC32(padded, 4, 4));
    // Bytes beyond total are never read into the sum.
    EXPECT_EQ(SMGenerateCRC32(withTail, 4, 2), SMGenerateCRC32(padded, 2, 2));
}

TEST(GenerateCrc32, DiffersFromCrc32ExactlyWhereAByteHasHighBits)
{
    // With bytes of 0 and 1 only, the whole byte and its low bit are the same
    // test, so the sum is the CRC-32 register before its final inversion.
    std::vector<uint8_t> bits(300);
    std::mt19937 random(6);
    for (auto &b : bits)
        b = static_cast<uint8_t>(random() & 1);
    const auto size = static_cast<uint32_t>(bits.size());
    EXPECT_EQ(SMGenerateCRC32(bits.data(), size, size), ~referenceCrc32(bits.data(), bits.size()));
    EXPECT_EQ(SMGenerateCRC32(nullptr, 0, 64), ~SMCRC32Compute_vn(std::vector<uint8_t>(64).data(), 64));

    const auto *digits = reinterpret_cast<const uint8_t *>("123456789");
    EXPECT_NE(SMGenerateCRC32(digits, 9, 9), ~0xCBF43926u);
    EXPECT_NE(SMGenerateCRC32(digits, 9, 9), 0xCBF43926u);
}

}  // namespace
}  // namespace zksupt::digest
