#include "text_helpers/sized_string.h"

#include <cstring>

#include <zksupt/status.h>

#include "frame/memory.h"
#include "frame/owned.h"
#include "text/convert.h"
#include "text/growth.h"
#include "text/units.h"

namespace zksupt::text_helpers {
namespace {

template <class Unit> void *allocateEmpty(SMSizedString *rec, uint32_t bytes) noexcept
{
    if (rec == nullptr)
        return nullptr;
    rec->buf = nullptr;
    if (bytes == 0)
        return nullptr;
    void *block = frame::allocate(bytes);
    if (block == nullptr)
        return nullptr;
    *static_cast<Unit *>(block) = 0;
    rec->buf = block;
    rec->capacity = bytes;
    rec->length = 0;
    return block;
}

// The append rule of both encodings.
template <class Unit> bool append(SMSizedString *rec, const Unit *src, uint32_t n) noexcept
{
    if (rec == nullptr || rec->buf == nullptr || src == nullptr)
        return false;
    if (n == 0)
        n = static_cast<uint32_t>(text::length(src));
    const uint64_t needed = (uint64_t{rec->length} + 1 + n) * sizeof(Unit);
    if (needed > UINT32_MAX)
        return false;
    if (needed > rec->capacity) {
        const uint32_t capacity = text::grownCapacity(rec->capacity, static_cast<uint32_t>(needed));
        void *grown = frame::reallocate(rec->buf, capacity);
        if (grown == nullptr)
            return false;
        rec->buf = grown;
        rec->capacity = capacity;
    }
    Unit *end = static_cast<Unit *>(rec->buf) + rec->length;
    std::memcpy(end, src, std::size_t{n} * sizeof(Unit));
    end[n] = 0;
    rec->length += n;
    return true;
}

// A zeroed temporary block of count units: what is appended past a
// conversion's terminator is then zeros, never stale memory.
template <class Unit> frame::Owned<Unit[]> zeroedBlock(uint64_t count) noexcept
{
    if (count * sizeof(Unit) > UINT32_MAX)
        return nullptr;
    return frame::allocateZeroed<Unit[]>(count);
}

// The converting appenders' one rule: all of src (n = 0: its length) is
// converted into n + 1 units of the record's encoding or nothing is
// appended; then n units of the result are appended.
template <class To, class From>
bool appendConverted(SMSizedString *rec, const From *src, uint32_t n,
                     int32_t (*convert)(To *, uint32_t *, const From *) noexcept) noexcept
{
    if (rec == nullptr || rec->buf == nullptr || src == nullptr)
        return false;
    if (n == 0)
        n = static_cast<uint32_t>(text::length(src));
    auto block = zeroedBlock<To>(uint64_t{n} + 1);
    uint32_t size = (n + 1) * static_cast<uint32_t>(sizeof(To));
    if (block == nullptr || convert(block.get(), &size, src) != SM_STATUS_SUCCESS)
        return false;
    return append(rec, block.get(), n);
}

}  // namespace

void *sizedAllocUtf8(SMSizedString *rec, uint32_t bytes) noexcept
{
    return allocateEmpty<char>(rec, bytes);
}

void *sizedAllocUcs2(SMSizedString *rec, uint32_t bytes) noexcept
{
    return allocateEmpty<ucs2>(rec, bytes == 1 ? 2 : bytes);
}

void sizedFree(SMSizedString *rec) noexcept
{
    if (rec == nullptr)
        return;
    frame::release(rec->buf);
    *rec = SMSizedString{nullptr, 0, 0};
}

bool appendUtf8(SMSizedString *rec, const char *src, uint32_t n) noexcept
{
    return append(rec, src, n);
}

bool appendUcs2(SMSizedString *rec, const ucs2 *src, uint32_t n) noexcept
{
    return append(rec, src, n);
}

bool appendUcs2AsUtf8(SMSizedString *rec, const ucs2 *src, uint32_t n) noexcept
{
    return appendConverted<char>(rec, src, n, text::ucs2ToUtf8);
}

bool appendUtf8AsUcs2(SMSizedString *rec, const char *src, uint32_t n) noexcept
{
    return appendConverted<ucs2>(rec, src, n, text::utf8ToUcs2);
}

}  // namespace zksupt::text_helpers
