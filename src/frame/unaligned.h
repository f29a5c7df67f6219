// Values read from and written to bytes that may sit at any address (binary
// forms, caller buffers), in host byte order.
#pragma once

#include <cstring>
#include <type_traits>

namespace zksupt::frame {

template <class T> T loadAs(const void *bytes) noexcept
{
    static_assert(std::is_trivially_copyable_v<T>);
    T value;
    std::memcpy(&value, bytes, sizeof value);
    return value;
}

template <class T> void storeAs(void *bytes, T value) noexcept
{
    static_assert(std::is_trivially_copyable_v<T>);
    std::memcpy(bytes, &value, sizeof value);
}

}  // namespace zksupt::frame
