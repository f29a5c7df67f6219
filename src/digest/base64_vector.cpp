#include "digest/base64_vector.h"

#if defined(__x86_64__)

#include <immintrin.h>

#include <array>

#include "digest/base64.h"

namespace zksupt::digest {
namespace {

#define ZKSUPT_VBMI __attribute__((target("avx512f,avx512bw,avx512vbmi")))

bool vbmiAvailable() noexcept
{
    static const bool available = [] {
        __builtin_cpu_init();
        return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
               __builtin_cpu_supports("avx512vbmi");
    }();
    return available;
}

using Bytes64 = std::array<uint8_t, 64>;

// Encoding: lane k of 32 bits gathers input bytes 3k + 1, 3k, 3k + 2, 3k + 1,
// so that the multishift below finds each of the four sextets at a fixed
// bit offset of its 64-bit word.
constexpr Bytes64 kEncodeGather = [] {
    Bytes64 order{};
    for (int lane = 0; lane < 16; ++lane) {
        order[4 * lane] = static_cast<uint8_t>(3 * lane + 1);
        order[4 * lane + 1] = static_cast<uint8_t>(3 * lane);
        order[4 * lane + 2] = static_cast<uint8_t>(3 * lane + 2);
        order[4 * lane + 3] = static_cast<uint8_t>(3 * lane + 1);
    }
    return order;
}();
// The bit offsets of the sextets of two lanes within each 64-bit word.
constexpr uint64_t kSextetOffsets = 0x3036242a1016040a;

// Decoding: the sextet of each of the 128 seven-bit characters, 0x80 for
// characters outside the alphabet ('=' included).
constexpr std::array<uint8_t, 128> kSextets = [] {
    std::array<uint8_t, 128> sextets{};
    sextets.fill(0x80);
    for (uint8_t value = 0; value < 64; ++value)
        sextets[static_cast<unsigned char>(kBase64Alphabet[value])] = value;
    return sextets;
}();
// After the two merges, lane k of 32 bits holds its group's 24 bits with the
// first byte highest; this gathers them in output order.
constexpr Bytes64 kDecodeGather = [] {
    Bytes64 order{};
    for (int out = 0; out < 48; ++out)
        order[out] = static_cast<uint8_t>(4 * (out / 3) + 2 - out % 3);
    return order;
}();

ZKSUPT_VBMI inline __m512i load(const void *bytes)
{
    return _mm512_loadu_si512(bytes);
}

// The unmasked forms of these two start from an undefined vector, which GCC
// 12 reports as used uninitialised; the zero-masked forms with every lane
// selected are the same instructions.
constexpr __mmask64 kAllLanes = ~__mmask64{0};

ZKSUPT_VBMI inline __m512i permute(__m512i indices, __m512i table)
{
    return _mm512_maskz_permutexvar_epi8(kAllLanes, indices, table);
}

ZKSUPT_VBMI inline __m512i multishift(__m512i offsets, __m512i words)
{
    return _mm512_maskz_multishift_epi64_epi8(kAllLanes, offsets, words);
}

}  // namespace

ZKSUPT_VBMI void encodeVector(char *&dst, const uint8_t *&src, uint32_t &length, const char *digits) noexcept
{
    if (length < 64 || !vbmiAvailable())
        return;
    const __m512i gather = load(kEncodeGather.data());
    const __m512i offsets = _mm512_set1_epi64(static_cast<long long>(kSextetOffsets));
    const __m512i alphabet = load(digits);
    for (; length >= 64; src += 48, length -= 48, dst += 64) {
        const __m512i bytes = permute(gather, load(src));
        const __m512i sextets = multishift(offsets, bytes);
        _mm512_storeu_si512(dst, permute(sextets, alphabet));
    }
}

ZKSUPT_VBMI uint32_t decodeVector(uint8_t *&dst, const unsigned char *&text, uint32_t groups) noexcept
{
    if (groups < 16 || !vbmiAvailable())
        return groups;
    const __m512i lowSextets = load(kSextets.data());
    const __m512i highSextets = load(kSextets.data() + 64);
    const __m512i gather = load(kDecodeGather.data());
    const __m512i pairWeights = _mm512_set1_epi32(0x01400140);  // first sextet of a pair * 64
    const __m512i halfWeights = _mm512_set1_epi32(0x00011000);  // first pair of a group * 4096
    constexpr __mmask64 kOutput = (__mmask64{1} << 48) - 1;
    for (; groups >= 16; groups -= 16, text += 64, dst += 48) {
        const __m512i chars = load(text);
        const __m512i sextets = _mm512_permutex2var_epi8(lowSextets, chars, highSextets);
        // A character above 127 or outside the alphabet has its top bit set
        // in one of the two: the table-driven code takes this block.
        if (_mm512_movepi8_mask(_mm512_or_si512(chars, sextets)) != 0)
            break;
        const __m512i pairs = _mm512_maddubs_epi16(sextets, pairWeights);
        const __m512i merged = _mm512_madd_epi16(pairs, halfWeights);
        _mm512_mask_storeu_epi8(dst, kOutput, permute(gather, merged));
    }
    return groups;
}

}  // namespace zksupt::digest

#else

namespace zksupt::digest {

void encodeVector(char *&, const uint8_t *&, uint32_t &, const char *) noexcept {}

uint32_t decodeVector(uint8_t *&, const unsigned char *&, uint32_t groups) noexcept
{
    return groups;
}

}  // namespace zksupt::digest

#endif
