#include "text/escape.h"

#include <cstdlib>
#include <cstring>
#include <memory>

#include <zksupt/status.h>

#include "text/growth.h"

namespace zksupt::text {
namespace {

constexpr uint32_t kInitialCapacity = 6144;

// A heap byte buffer that grows as the library's sized strings do and always
// has room for a terminator after its text.
class WorkBuffer {
  public:
    bool start() noexcept
    {
        data_.reset(static_cast<char *>(std::malloc(kInitialCapacity)));
        capacity_ = data_ ? kInitialCapacity : 0;
        return data_ != nullptr;
    }

    bool append(const char *piece, uint32_t n) noexcept
    {
        const uint32_t needed = length_ + 1 + n;
        if (needed < length_)
            return false;  // beyond 4 GiB
        if (needed > capacity_) {
            const uint32_t capacity = grownCapacity(capacity_, needed);
            void *grown = std::realloc(data_.get(), capacity);
            if (grown == nullptr)
                return false;
            static_cast<void>(data_.release());
            data_.reset(static_cast<char *>(grown));
            capacity_ = capacity;
        }
        std::memcpy(data_.get() + length_, piece, n);
        length_ += n;
        return true;
    }

    const char *data() const noexcept { return data_.get(); }
    uint32_t length() const noexcept { return length_; }

  private:
    struct Free {
        void operator()(char *p) const noexcept { std::free(p); }
    };
    std::unique_ptr<char, Free> data_;
    uint32_t capacity_ = 0;
    uint32_t length_ = 0;
};

// The escaped form of one unit, written to out (room for 6 bytes); returns
// its length.
uint32_t escapeUnit(ucs2 unit, char *out) noexcept
{
    static constexpr char kHex[] = "0123456789abcdef";
    const char letter = unit == 0x09 ? 't' : unit == 0x0A ? 'n' : unit == 0x0D ? 'r' : unit == 0x5C ? '\\' : '\0';
    if (letter != '\0') {
        out[0] = '\\';
        out[1] = letter;
        return 2;
    }
    if (unit >= 0x20 && unit <= 0x7F) {
        out[0] = static_cast<char>(unit);
        return 1;
    }
    out[0] = '\\';
    out[1] = 'u';
    for (int i = 0; i < 4; ++i)
        out[2 + i] = kHex[(unit >> (12 - 4 * i)) & 0xF];
    return 6;
}

}  // namespace

int32_t escapeUcs2(char *dst, uint32_t *size, const ucs2 *src) noexcept
{
    if (src == nullptr)
        return SM_STATUS_BAD_ARGUMENT;
    WorkBuffer text;
    if (!text.start())
        return SM_STATUS_FAILURE;
    for (; *src != 0; ++src) {
        char piece[6];
        if (!text.append(piece, escapeUnit(*src, piece)))
            return SM_STATUS_FAILURE;
    }
    const uint32_t needed = text.length() + 1;
    if (size != nullptr) {
        const uint32_t capacity = *size;
        *size = needed;
        if (capacity < needed)
            return SM_STATUS_BUFFER_TOO_SMALL;
    }
    if (dst != nullptr) {
        std::memcpy(dst, text.data(), text.length());
        dst[text.length()] = '\0';
    }
    return SM_STATUS_SUCCESS;
}

}  // namespace zksupt::text
