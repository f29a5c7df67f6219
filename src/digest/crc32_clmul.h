// CRC-32 by carry-less multiplication on x86-64: the buffer is folded 64
// bytes a step (PCLMULQDQ), or 256 bytes a step in 512-bit registers where
// the processor has VPCLMULQDQ and AVX-512 (chosen at run time), and reduced
// to the 32-bit register at the end.
#pragma once

#include <cstddef>
#include <cstdint>

namespace zksupt::digest {

// Whether this processor can run foldCrcRegister; false off x86-64.
bool clmulAvailable() noexcept;

// Advances the CRC register (the inverted running CRC) over length bytes.
// length must be at least 64 and a multiple of 16; only call it when
// clmulAvailable() is true.
uint32_t foldCrcRegister(uint32_t reg, const uint8_t *data, std::size_t length) noexcept;

inline constexpr std::size_t kClmulMinimum = 64;
inline constexpr std::size_t kClmulGranule = 16;
// From this length on the 512-bit registers take over where they can.
inline constexpr std::size_t kWideMinimum = 256;

}  // namespace zksupt::digest
