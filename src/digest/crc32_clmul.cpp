#include "digest/crc32_clmul.h"

#if defined(__x86_64__)

#include <immintrin.h>

namespace zksupt::digest {
namespace {

// The folding constants are powers of x modulo the CRC-32 polynomial
// P = 0x104C11DB7, bit-reflected (the register is reflected) and shifted left
// by one, as in Intel's "Fast CRC Computation Using PCLMULQDQ".
constexpr uint64_t kPolynomial = 0x104C11DB7;

constexpr uint64_t reflect(uint64_t value, int bits)
{
    uint64_t result = 0;
    for (int i = 0; i < bits; ++i)
        result |= ((value >> i) & 1) << (bits - 1 - i);
    return result;
}

constexpr uint64_t powerModP(int exponent)
{
    uint64_t remainder = 1;
    for (int i = 0; i < exponent; ++i) {
        remainder <<= 1;
        if (remainder & (uint64_t{1} << 32))
            remainder ^= kPolynomial;
    }
    return remainder;
}

constexpr uint64_t foldConstant(int exponent)
{
    return reflect(powerModP(exponent), 32) << 1;
}

// floor(x^64 / P), for the final Barrett reduction.
constexpr uint64_t barrettQuotient()
{
    uint64_t remainder = 0;
    uint64_t quotient = 0;
    for (int bit = 64; bit >= 0; --bit) {
        remainder = (remainder << 1) | (bit == 64 ? 1 : 0);
        quotient <<= 1;
        if (remainder & (uint64_t{1} << 32)) {
            remainder ^= kPolynomial;
            quotient |= 1;
        }
    }
    return quotient;
}

// Fold by sixteen 128-bit lanes (2,048 bits), by four (512 bits), by three,
// two and one lane, then 64 and 32 bits.
constexpr uint64_t kFold2048Low = foldConstant(16 * 128 + 32);
constexpr uint64_t kFold2048High = foldConstant(16 * 128 - 32);
constexpr uint64_t kFold512Low = foldConstant(4 * 128 + 32);
constexpr uint64_t kFold512High = foldConstant(4 * 128 - 32);
constexpr uint64_t kFold384Low = foldConstant(3 * 128 + 32);
constexpr uint64_t kFold384High = foldConstant(3 * 128 - 32);
constexpr uint64_t kFold256Low = foldConstant(2 * 128 + 32);
constexpr uint64_t kFold256High = foldConstant(2 * 128 - 32);
constexpr uint64_t kFold128Low = foldConstant(128 + 32);
constexpr uint64_t kFold128High = foldConstant(128 - 32);
constexpr uint64_t kFold64 = foldConstant(64);
constexpr uint64_t kReflectedPolynomial = reflect(kPolynomial, 33);
constexpr uint64_t kReflectedQuotient = reflect(barrettQuotient(), 33);

static_assert(kFold512Low == 0x154442BD4 && kFold512High == 0x1C6E41596);
static_assert(kFold128Low == 0x1751997D0 && kFold128High == 0x0CCAA009E);
static_assert(kFold64 == 0x163CD6124);
static_assert(kReflectedPolynomial == 0x1DB710641 && kReflectedQuotient == 0x1F7011641);

#define ZKSUPT_CLMUL __attribute__((target("pclmul")))
#define ZKSUPT_VPCLMUL __attribute__((target("pclmul,avx512f,vpclmulqdq")))

ZKSUPT_CLMUL inline __m128i constants(uint64_t low, uint64_t high)
{
    return _mm_set_epi64x(static_cast<long long>(high), static_cast<long long>(low));
}

ZKSUPT_CLMUL inline __m128i load(const uint8_t *bytes)
{
    return _mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes));
}

// One lane folded forward over the distance the constants encode, plus the
// data that lies there.
ZKSUPT_CLMUL inline __m128i fold(__m128i lane, __m128i k, __m128i next)
{
    const __m128i low = _mm_clmulepi64_si128(lane, k, 0x00);
    const __m128i high = _mm_clmulepi64_si128(lane, k, 0x11);
    return _mm_xor_si128(_mm_xor_si128(low, high), next);
}

// Folds the remaining 16-byte pieces into lane and reduces it to the 32-bit
// register.
ZKSUPT_CLMUL inline uint32_t finish(__m128i x1, const uint8_t *data, std::size_t length)
{
    const __m128i k128 = constants(kFold128Low, kFold128High);
    for (; length >= 16; data += 16, length -= 16)
        x1 = fold(x1, k128, load(data));

    // 128 bits to 64: the low half moves over 96 bits onto the high half.
    const __m128i low32Mask = _mm_setr_epi32(-1, 0, -1, 0);
    x1 = _mm_xor_si128(_mm_srli_si128(x1, 8), _mm_clmulepi64_si128(x1, k128, 0x10));
    // 64 bits to 32 plus the register's width.
    const __m128i k64 = constants(kFold64, 0);
    x1 = _mm_xor_si128(_mm_clmulepi64_si128(_mm_and_si128(x1, low32Mask), k64, 0x00), _mm_srli_si128(x1, 4));

    // Barrett reduction to the 32-bit register.
    const __m128i barrett = constants(kReflectedPolynomial, kReflectedQuotient);
    __m128i t = _mm_and_si128(_mm_clmulepi64_si128(_mm_and_si128(x1, low32Mask), barrett, 0x10), low32Mask);
    t = _mm_clmulepi64_si128(t, barrett, 0x00);
    x1 = _mm_xor_si128(x1, t);
    return static_cast<uint32_t>(_mm_cvtsi128_si32(_mm_srli_si128(x1, 4)));
}

// The same fold in 512-bit registers, four 128-bit lanes each.
ZKSUPT_VPCLMUL inline __m512i wideConstants(uint64_t low, uint64_t high)
{
    const auto l = static_cast<long long>(low), h = static_cast<long long>(high);
    return _mm512_set_epi64(h, l, h, l, h, l, h, l);
}

// Lane i of four. The unmasked form starts from an undefined vector, which
// GCC 12 reports as used uninitialised; with every element selected the
// zero-masked form is the same instruction.
template <int Lane> ZKSUPT_VPCLMUL inline __m128i laneOf(__m512i lanes)
{
    return _mm512_maskz_extracti32x4_epi32(0xF, lanes, Lane);
}

ZKSUPT_VPCLMUL inline __m512i wideLoad(const uint8_t *bytes)
{
    return _mm512_loadu_si512(bytes);
}

ZKSUPT_VPCLMUL inline __m512i wideFold(__m512i lanes, __m512i k, __m512i next)
{
    const __m512i low = _mm512_clmulepi64_epi128(lanes, k, 0x00);
    const __m512i high = _mm512_clmulepi64_epi128(lanes, k, 0x11);
    return _mm512_ternarylogic_epi64(low, high, next, 0x96);  // low ^ high ^ next
}

// Sixteen lanes in four registers, 256 bytes a step; then one register of
// four lanes, 64 bytes a step; then its lanes onto the last one.
ZKSUPT_VPCLMUL uint32_t foldWide(uint32_t reg, const uint8_t *data, std::size_t length) noexcept
{
    __m512i x0 = _mm512_xor_si512(wideLoad(data), _mm512_castsi128_si512(_mm_cvtsi32_si128(static_cast<int>(reg))));
    __m512i x1 = wideLoad(data + 64);
    __m512i x2 = wideLoad(data + 128);
    __m512i x3 = wideLoad(data + 192);
    data += 256;
    length -= 256;

    const __m512i k2048 = wideConstants(kFold2048Low, kFold2048High);
    for (; length >= 256; data += 256, length -= 256) {
        x0 = wideFold(x0, k2048, wideLoad(data));
        x1 = wideFold(x1, k2048, wideLoad(data + 64));
        x2 = wideFold(x2, k2048, wideLoad(data + 128));
        x3 = wideFold(x3, k2048, wideLoad(data + 192));
    }

    const __m512i k512 = wideConstants(kFold512Low, kFold512High);
    x0 = wideFold(x0, k512, x1);
    x0 = wideFold(x0, k512, x2);
    x0 = wideFold(x0, k512, x3);
    for (; length >= 64; data += 64, length -= 64)
        x0 = wideFold(x0, k512, wideLoad(data));

    __m128i lane = fold(laneOf<0>(x0), constants(kFold384Low, kFold384High), laneOf<3>(x0));
    lane = fold(laneOf<1>(x0), constants(kFold256Low, kFold256High), lane);
    lane = fold(laneOf<2>(x0), constants(kFold128Low, kFold128High), lane);
    return finish(lane, data, length);
}

bool wideAvailable() noexcept
{
    static const bool available = [] {
        __builtin_cpu_init();
        return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("vpclmulqdq");
    }();
    return available;
}

}  // namespace

bool clmulAvailable() noexcept
{
    static const bool available = [] {
        __builtin_cpu_init();
        return __builtin_cpu_supports("pclmul") != 0;
    }();
    return available;
}

ZKSUPT_CLMUL uint32_t foldCrcRegister(uint32_t reg, const uint8_t *data, std::size_t length) noexcept
{
    if (length >= kWideMinimum && wideAvailable())
        return foldWide(reg, data, length);

    __m128i x1 = _mm_xor_si128(load(data), _mm_cvtsi32_si128(static_cast<int>(reg)));
    __m128i x2 = load(data + 16);
    __m128i x3 = load(data + 32);
    __m128i x4 = load(data + 48);
    data += 64;
    length -= 64;

    const __m128i k512 = constants(kFold512Low, kFold512High);
    for (; length >= 64; data += 64, length -= 64) {
        x1 = fold(x1, k512, load(data));
        x2 = fold(x2, k512, load(data + 16));
        x3 = fold(x3, k512, load(data + 32));
        x4 = fold(x4, k512, load(data + 48));
    }

    const __m128i k128 = constants(kFold128Low, kFold128High);
    x1 = fold(x1, k128, x2);
    x1 = fold(x1, k128, x3);
    x1 = fold(x1, k128, x4);
    return finish(x1, data, length);
}

}  // namespace zksupt::digest

#else

namespace zksupt::digest {

bool clmulAvailable() noexcept
{
    return false;
}

uint32_t foldCrcRegister(uint32_t reg, const uint8_t *, std::size_t) noexcept
{
    return reg;  // never called where clmulAvailable() is false
}

}  // namespace zksupt::digest

#endif
