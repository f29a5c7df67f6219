#include "digest/base64.h"

#include <array>
#include <bit>
#include <cstring>

#include "digest/base64_vector.h"
#include "frame/unaligned.h"

namespace zksupt::digest {
namespace {

constexpr char kPad = '=';
constexpr uint8_t kNotInAlphabet = 0xFF;

constexpr bool kLittleEndian = std::endian::native == std::endian::little;

// Two characters for every 12 bits of input, in memory order.
using PairTable = std::array<uint16_t, 4096>;

constexpr uint16_t pairOf(char first, char second)
{
    const auto high = static_cast<uint16_t>(static_cast<unsigned char>(kLittleEndian ? second : first));
    const auto low = static_cast<uint16_t>(static_cast<unsigned char>(kLittleEndian ? first : second));
    return static_cast<uint16_t>(high << 8 | low);
}

constexpr PairTable makePairs(const char *digits)
{
    PairTable pairs{};
    for (uint32_t twelve = 0; twelve < pairs.size(); ++twelve)
        pairs[twelve] = pairOf(digits[twelve >> 6], digits[twelve & 0x3F]);
    return pairs;
}

constexpr PairTable kStandardPairs = makePairs(kBase64Alphabet);

// From this many input bytes on, a caller's own alphabet gets a pair table
// of its own too; below it, building one costs more than it saves.
constexpr uint32_t kOwnPairsFrom = 3072;

// Each character's sextet in the place that its position in a group of four
// gives it within the group's three bytes, laid out so that a 32-bit store
// puts the bytes in memory order. A character outside the alphabet has the
// sextet 0xFF, whose bits reach the neighbouring fields just as the shifts
// of the group rule let them; the padding character also sets kPadSeen, in
// the fourth byte, which no group writes.
using GroupTable = std::array<uint32_t, 256>;
using GroupTables = std::array<GroupTable, 4>;

constexpr uint32_t kPadSeen = kLittleEndian ? 0x01000000u : 0x00000001u;

constexpr uint32_t atByte(uint32_t value, int index)
{
    return kLittleEndian ? value << (8 * index) : value << (24 - 8 * index);
}

constexpr GroupTables makeGroupTables()
{
    std::array<uint8_t, 256> sextets{};
    sextets.fill(kNotInAlphabet);
    for (uint8_t value = 0; value < 64; ++value)
        sextets[static_cast<unsigned char>(kBase64Alphabet[value])] = value;
    GroupTables tables{};
    for (uint32_t c = 0; c < 256; ++c) {
        const uint32_t d = sextets[c];
        tables[0][c] = atByte((d << 2) & 0xFF, 0);
        tables[1][c] = atByte((d >> 4) & 0x03, 0) | atByte((d << 4) & 0xFF, 1);
        tables[2][c] = atByte((d >> 2) & 0x0F, 1) | atByte((d << 6) & 0xFF, 2);
        tables[3][c] = atByte(d, 2);
        if (c == static_cast<unsigned char>(kPad))
            for (GroupTable &table : tables)
                table[c] |= kPadSeen;
    }
    return tables;
}

constexpr GroupTables kGroupTables = makeGroupTables();

// Whole groups while at least eight bytes can be read: each step loads six
// bytes of input with two more that it leaves for the next step, and stores
// eight characters.
void encodeWhole(char *&dst, const uint8_t *&src, uint32_t &length, const PairTable &pairs) noexcept
{
    for (; length >= 8; src += 6, length -= 6, dst += 8) {
        uint64_t bits = frame::loadAs<uint64_t>(src);
        if constexpr (kLittleEndian)
            bits = __builtin_bswap64(bits);
        const uint64_t p0 = pairs[bits >> 52], p1 = pairs[(bits >> 40) & 0xFFF];
        const uint64_t p2 = pairs[(bits >> 28) & 0xFFF], p3 = pairs[(bits >> 16) & 0xFFF];
        frame::storeAs<uint64_t>(dst, kLittleEndian ? p0 | p1 << 16 | p2 << 32 | p3 << 48
                                                    : p0 << 48 | p1 << 32 | p2 << 16 | p3);
    }
}

// Decodes count groups by the tables, advancing dst and text.
void decodeGroups(uint8_t *&dst, const unsigned char *&text, uint32_t count) noexcept
{
    for (; count > 0; --count, text += 4) {
        const uint32_t bytes =
            kGroupTables[0][text[0]] | kGroupTables[1][text[1]] | kGroupTables[2][text[2]] | kGroupTables[3][text[3]];
        if ((bytes & kPadSeen) == 0) {
            // All four bytes are stored; the fourth is overwritten by the
            // next output byte or, at the end, by the terminator.
            frame::storeAs<uint32_t>(dst, bytes);
            dst += 3;
            continue;
        }
        if (text[0] == kPad || text[1] == kPad)
            continue;
        const int produced = text[2] == kPad ? 1 : text[3] == kPad ? 2 : 3;
        for (int i = 0; i < produced; ++i)
            *dst++ = static_cast<uint8_t>(kLittleEndian ? bytes >> (8 * i) : bytes >> (24 - 8 * i));
    }
}

// Groups the table-driven decoder takes between two tries of the vectors.
constexpr uint32_t kGroupsPerStep = 16;

}  // namespace

void base64Encode(char *dst, const uint8_t *src, uint32_t length, const char *alphabet) noexcept
{
    const char *digits = alphabet != nullptr ? alphabet : kBase64Alphabet;
    encodeVector(dst, src, length, digits);
    if (alphabet == nullptr || std::memcmp(alphabet, kBase64Alphabet, 64) == 0) {
        encodeWhole(dst, src, length, kStandardPairs);
    } else if (length >= kOwnPairsFrom) {
        const PairTable own = makePairs(alphabet);
        encodeWhole(dst, src, length, own);
    }
    for (; length >= 3; src += 3, length -= 3) {
        *dst++ = digits[src[0] >> 2];
        *dst++ = digits[(src[1] >> 4) | ((src[0] << 4) & 0x30)];
        *dst++ = digits[(src[2] >> 6) | ((src[1] << 2) & 0x3C)];
        *dst++ = digits[src[2] & 0x3F];
    }
    if (length > 0) {
        // The byte after the input is read on purpose; see the header.
        const uint8_t b0 = src[0];
        const uint8_t b1 = src[1];
        const uint8_t b2 = length == 2 ? src[2] : 0;
        *dst++ = digits[b0 >> 2];
        *dst++ = digits[(b1 >> 4) | ((b0 << 4) & 0x30)];
        *dst++ = length == 2 ? digits[(b2 >> 6) | ((b1 << 2) & 0x3C)] : kPad;
        *dst++ = kPad;
    }
    *dst = '\0';
}

void base64Decode(uint8_t *dst, const char *src, uint32_t length) noexcept
{
    const auto *text = reinterpret_cast<const unsigned char *>(src);
    for (uint32_t groups = length / 4; groups > 0;) {
        // Vectors take the blocks they can; a block they leave (padding,
        // characters outside the alphabet) and the last few groups come here.
        groups = decodeVector(dst, text, groups);
        const uint32_t step = groups < kGroupsPerStep ? groups : kGroupsPerStep;
        decodeGroups(dst, text, step);
        groups -= step;
    }
    *dst = 0;
}

}  // namespace zksupt::digest
