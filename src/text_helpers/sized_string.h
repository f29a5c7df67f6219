// Sized strings (sized_string.cpp): the caller's record {buf, capacity,
// length} and the one append rule both encodings share, and the owner of a
// sized string of the library's own work. The writers of text (XML writer,
// event logs, hex dumps, escaping) build their output here.
#pragma once

#include <cstdint>

#include <zksupt/text.h>

namespace zksupt::text_helpers {

// Sets rec->buf to null, then for bytes > 0 allocates them (UCS-2: at least
// 2, so that the terminator fits) with an empty text. Returns the buffer, or
// null for 0 bytes or no memory, leaving capacity and length as they were.
void *sizedAllocUtf8(SMSizedString *rec, uint32_t bytes) noexcept;
void *sizedAllocUcs2(SMSizedString *rec, uint32_t bytes) noexcept;

// The record's buffer, or null for a null record.
inline void *sizedBuffer(const SMSizedString *rec) noexcept
{
    return rec == nullptr ? nullptr : rec->buf;
}

// Frees the buffer; the record is left empty (null, 0, 0).
void sizedFree(SMSizedString *rec) noexcept;

// Appends exactly n characters of src (n = 0: up to its terminator; the copy
// does not stop at a terminator within n) and a terminator, growing the
// buffer by grownCapacity when needed. False when src is null, the record
// has no buffer, or growing fails; the record is then unchanged.
bool appendUtf8(SMSizedString *rec, const char *src, uint32_t n) noexcept;
bool appendUcs2(SMSizedString *rec, const ucs2 *src, uint32_t n) noexcept;

// The converting appenders keep their old, narrow rules (texts written by
// the suite depend on them). Both convert the whole of src, whatever n is.
//
// UCS-2 into UTF-8: n = 0 is the unit length of src. src converts into n + 1
// bytes or nothing is appended; then n bytes of the result are appended. In
// effect only ASCII text, and only as a whole, gets through.
bool appendUcs2AsUtf8(SMSizedString *rec, const ucs2 *src, uint32_t n) noexcept;

// UTF-8 into UCS-2: n = 0 is the byte length of src. src converts into
// n + 1 units or nothing is appended; then n units are appended, so text with
// multi-byte sequences brings zero units after its converted terminator.
bool appendUtf8AsUcs2(SMSizedString *rec, const char *src, uint32_t n) noexcept;

// A sized string of the library's own work: its buffer is freed at the end of
// the scope unless release() hands it on.
class OwnedSizedString {
  public:
    OwnedSizedString() noexcept = default;
    ~OwnedSizedString() { sizedFree(&record_); }
    OwnedSizedString(const OwnedSizedString &) = delete;
    OwnedSizedString &operator=(const OwnedSizedString &) = delete;

    SMSizedString *get() noexcept { return &record_; }
    const SMSizedString &operator*() const noexcept { return record_; }
    const SMSizedString *operator->() const noexcept { return &record_; }

    // The buffer, now the caller's (free it with free); the record is left
    // empty.
    void *release() noexcept
    {
        void *buffer = record_.buf;
        record_ = SMSizedString{nullptr, 0, 0};
        return buffer;
    }

  private:
    SMSizedString record_{nullptr, 0, 0};
};

}  // namespace zksupt::text_helpers
