// The hash-ID table: small integer IDs handed out from a bitmap in the
// caller's memory. Bit b of 32-bit word w (b from the least significant bit)
// is set while ID w * 32 + b is in use. ID 0 is never handed out, so that 0
// can mean "no ID". Only whole words count; nothing is allocated or locked.
#pragma once

#include <cstdint>

namespace zksupt::containers {

inline constexpr uint32_t kLowestFreeId = 0;
inline constexpr uint32_t kAfterHighestId = 1;

// Bytes of table for count IDs, always with room to spare; 0 for 0 or more than 0x3FFFFFFE.
uint32_t hashTableBytesNeeded(uint32_t count) noexcept;
int32_t clearHashTable(uint32_t *table, uint32_t bytes) noexcept;
// The ID taken, or 0 when none is free or the mode is unknown.
uint32_t acquireHashId(uint32_t *table, uint32_t bytes, uint32_t mode) noexcept;

// Statuses: 0x101 for an ID beyond the table, 0x10F for a null table.
int32_t acquireHashIdById(uint32_t *table, uint32_t bytes, uint32_t id) noexcept;
int32_t verifyHashId(const uint32_t *table, uint32_t bytes, uint32_t id) noexcept;
int32_t releaseHashId(uint32_t *table, uint32_t bytes, uint32_t id) noexcept;

// IDs in use, 0 for none.
uint32_t minInUseId(const uint32_t *table, uint32_t bytes) noexcept;
uint32_t maxInUseId(const uint32_t *table, uint32_t bytes) noexcept;
uint32_t findFirstHashId(const uint32_t *table, uint32_t bytes, uint32_t *word, uint32_t *bit) noexcept;
uint32_t findNextHashId(const uint32_t *table, uint32_t bytes, uint32_t *word, uint32_t *bit) noexcept;

}  // namespace zksupt::containers
