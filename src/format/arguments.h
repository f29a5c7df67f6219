// The arguments of one formatting call, read in order.
#pragma once

#include <cstdarg>
#include <cstdint>

#include "format/field.h"

namespace zksupt::format {

// A copy of the caller's va_list, so that the parser and the conversions can
// share it by reference.
class Arguments {
  public:
    explicit Arguments(va_list args) noexcept { va_copy(list_, args); }
    ~Arguments() { va_end(list_); }
    Arguments(const Arguments &) = delete;
    Arguments &operator=(const Arguments &) = delete;

    template <class T> T next() noexcept { return va_arg(list_, T); }

    // Integer arguments are 32 bits; 'h' (unless 'l' came too) keeps the low 16.
    int32_t nextSigned(const Directive &d) noexcept
    {
        const auto value = next<int32_t>();
        return d.shortInt && !d.longInt ? static_cast<int16_t>(value) : value;
    }
    uint32_t nextUnsigned(const Directive &d) noexcept
    {
        const auto value = next<uint32_t>();
        return d.shortInt && !d.longInt ? static_cast<uint16_t>(value) : value;
    }

  private:
    va_list list_;
};

}  // namespace zksupt::format
