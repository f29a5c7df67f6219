// A list of names written for a caller: NUL-terminated names followed by
// one more NUL. Names are copied for as long as they all fit; the bytes
// needed go on being counted after the first that does not. INI listings
// and property-file key listings share it.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>

#include <zksupt/status.h>

namespace zksupt::config {

class NameListing {
  public:
    // A null buffer has no room at all.
    NameListing(char *buffer, uint32_t capacity) noexcept : buffer_(buffer), capacity_(buffer != nullptr ? capacity : 0)
    {
    }

    void add(std::string_view name) noexcept
    {
        const uint64_t at = needed_ - 1;
        needed_ += name.size() + 1;
        fits_ = fits_ && needed_ <= capacity_;
        if (fits_) {
            std::memcpy(buffer_ + at, name.data(), name.size());
            buffer_[at + name.size()] = '\0';
        }
        ++count_;
    }

    // No names: *size 0 and whenEmpty. Otherwise *size is the bytes needed,
    // and the list is closed only when it fit (SUCCESS, else
    // BUFFER_TOO_SMALL).
    int32_t finish(uint32_t *size, int32_t whenEmpty) const noexcept
    {
        if (count_ == 0) {
            *size = 0;
            return whenEmpty;
        }
        *size = needed_ > UINT32_MAX ? UINT32_MAX : static_cast<uint32_t>(needed_);
        if (!fits_)
            return SM_STATUS_BUFFER_TOO_SMALL;
        buffer_[needed_ - 1] = '\0';
        return SM_STATUS_SUCCESS;
    }

  private:
    char *buffer_;
    uint64_t capacity_;
    uint64_t needed_ = 1;
    uint64_t count_ = 0;
    bool fits_ = true;
};

}  // namespace zksupt::config
