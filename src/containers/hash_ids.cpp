// Allocation, reservation and scans of the hash-ID table.
#include "containers/hash_ids.h"

#include <zksupt/status.h>

#include <algorithm>
#include <bit>

namespace zksupt::containers {
namespace {

constexpr uint32_t kWordBits = 32;
// IDs are 32-bit, so at most 2^27 words can be addressed; memory past them is never touched.
constexpr uint32_t kMaxWords = 0x8000000;
constexpr uint32_t kMaxCount = 0x3FFFFFFE;

uint32_t wordCount(const uint32_t *table, uint32_t bytes) noexcept
{
    return table == nullptr ? 0 : std::min(bytes / 4, kMaxWords);
}

// The bits of a word that stand for IDs that can be handed out: all but ID 0's.
constexpr uint32_t idBits(uint32_t word) noexcept
{
    return word == 0 ? ~1u : ~0u;
}

constexpr uint32_t idOf(uint32_t word, uint32_t bit) noexcept
{
    return word * kWordBits + bit;
}

uint32_t acquireLowest(uint32_t *table, uint32_t words) noexcept
{
    for (uint32_t word = 0; word < words; ++word) {
        const uint32_t freeIds = ~table[word] & idBits(word);
        if (freeIds != 0) {
            const auto bit = static_cast<uint32_t>(std::countr_zero(freeIds));
            table[word] |= 1u << bit;
            return idOf(word, bit);
        }
    }
    return 0;
}

// The word to take from: the last partly used word, else the first empty one,
// so an earlier partly used word wins over later empty ones. words when every
// word is full.
uint32_t wordAfterHighest(const uint32_t *table, uint32_t words) noexcept
{
    uint32_t chosen = words;
    for (uint32_t word = 0; word < words; ++word) {
        const uint32_t used = table[word] & idBits(word);
        if (used != idBits(word) && (used != 0 || chosen == words))
            chosen = word;
    }
    return chosen;
}

// Scanning the chosen word down from bit 31, the first bit in use below a
// free one gets the free bit right above it; bits in use at the very top are
// passed over. When no bit in use lies below a free one, the lowest free bit
// is taken. So IDs rise while there is room above the highest one, then the
// word is filled from the bottom.
uint32_t acquireAfterHighest(uint32_t *table, uint32_t words) noexcept
{
    const uint32_t word = wordAfterHighest(table, words);
    if (word == words)
        return 0;
    const uint32_t lowest = word == 0 ? 1 : 0;
    uint32_t remembered = kWordBits;
    for (uint32_t bit = kWordBits; bit-- > lowest;) {
        if ((table[word] & 1u << bit) == 0)
            remembered = bit;
        else if (remembered != kWordBits)
            break;
    }
    table[word] |= 1u << remembered;
    return idOf(word, remembered);
}

// The word and bit of an ID, if the table reaches it.
struct Slot {
    uint32_t word;
    uint32_t mask;
    bool inside;
};

Slot slotOf(const uint32_t *table, uint32_t bytes, uint32_t id) noexcept
{
    return {id / kWordBits, 1u << id % kWordBits, id / kWordBits < wordCount(table, bytes)};
}

}  // namespace

uint32_t hashTableBytesNeeded(uint32_t count) noexcept
{
    if (count == 0 || count > kMaxCount)
        return 0;
    return (count / kWordBits * kWordBits + kWordBits) / 8;
}

int32_t clearHashTable(uint32_t *table, uint32_t bytes) noexcept
{
    if (table == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    std::fill_n(table, wordCount(table, bytes), 0u);
    return SM_STATUS_SUCCESS;
}

uint32_t acquireHashId(uint32_t *table, uint32_t bytes, uint32_t mode) noexcept
{
    const uint32_t words = wordCount(table, bytes);
    if (words == 0)
        return 0;
    switch (mode) {
    case kLowestFreeId:
        return acquireLowest(table, words);
    case kAfterHighestId:
        return acquireAfterHighest(table, words);
    default:
        return 0;
    }
}

// Unlike automatic allocation, reserving takes ID 0 like any other.
int32_t acquireHashIdById(uint32_t *table, uint32_t bytes, uint32_t id) noexcept
{
    if (table == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    const Slot slot = slotOf(table, bytes, id);
    if (!slot.inside)
        return SM_STATUS_BAD_OBJECT;
    if ((table[slot.word] & slot.mask) != 0)
        return SM_STATUS_DUPLICATE;
    table[slot.word] |= slot.mask;
    return SM_STATUS_SUCCESS;
}

int32_t verifyHashId(const uint32_t *table, uint32_t bytes, uint32_t id) noexcept
{
    if (table == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    const Slot slot = slotOf(table, bytes, id);
    if (!slot.inside)
        return SM_STATUS_BAD_OBJECT;
    return (table[slot.word] & slot.mask) != 0 ? SM_STATUS_SUCCESS : SM_STATUS_NOT_PRESENT;
}

int32_t releaseHashId(uint32_t *table, uint32_t bytes, uint32_t id) noexcept
{
    const int32_t status = verifyHashId(table, bytes, id);
    if (status == SM_STATUS_SUCCESS) {
        const Slot slot = slotOf(table, bytes, id);
        table[slot.word] &= ~slot.mask;
    }
    return status;
}

// Only the first non-empty word is looked at: when it holds nothing but ID 0
// (reserved by ID), the answer is 0 even if higher IDs are in use. Callers
// have come to rely on this, so it stays.
uint32_t minInUseId(const uint32_t *table, uint32_t bytes) noexcept
{
    const uint32_t words = wordCount(table, bytes);
    if (words == 0)
        return 0;
    const uint32_t *first = std::find_if(table, table + words, [](uint32_t value) { return value != 0; });
    const uint32_t word = first == table + words ? 0 : static_cast<uint32_t>(first - table);
    const uint32_t ids = table[word] & idBits(word);
    return ids == 0 ? 0 : idOf(word, static_cast<uint32_t>(std::countr_zero(ids)));
}

uint32_t maxInUseId(const uint32_t *table, uint32_t bytes) noexcept
{
    const uint32_t words = wordCount(table, bytes);
    if (words == 0)
        return 0;
    uint32_t word = words - 1;
    while (word > 0 && table[word] == 0)
        --word;
    const uint32_t ids = table[word] & idBits(word);
    return ids == 0 ? 0 : idOf(word, kWordBits - 1 - static_cast<uint32_t>(std::countl_zero(ids)));
}

uint32_t findFirstHashId(const uint32_t *table, uint32_t bytes, uint32_t *word, uint32_t *bit) noexcept
{
    if (word == nullptr || bit == nullptr)
        return 0;
    *word = 0;
    *bit = 0;
    return findNextHashId(table, bytes, word, bit);
}

// The cursor position itself is skipped; a bit cursor of 31 or more goes on
// with the next word. At the end the cursors keep their last found values.
uint32_t findNextHashId(const uint32_t *table, uint32_t bytes, uint32_t *word, uint32_t *bit) noexcept
{
    const uint32_t words = wordCount(table, bytes);
    if (words == 0 || word == nullptr || bit == nullptr)
        return 0;
    uint32_t after = *bit < kWordBits - 1 ? ~0u << (*bit + 1) : 0;
    for (uint32_t at = *word; at < words; ++at, after = ~0u) {
        const uint32_t ids = table[at] & after & idBits(at);
        if (ids != 0) {
            *word = at;
            *bit = static_cast<uint32_t>(std::countr_zero(ids));
            return idOf(at, *bit);
        }
    }
    return 0;
}

}  // namespace zksupt::containers
