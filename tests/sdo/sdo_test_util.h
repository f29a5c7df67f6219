// Helpers of the SDO tests: expected binary forms written field by field in
// host byte order, owned objects, and serialising an object to bytes.
#pragma once

#include <gtest/gtest.h>

#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <memory>
#include <stdexcept>
#include <vector>

#include <zksupt/zksupt.h>

#include "support/values.h"

namespace zksupt::test {

inline constexpr uint32_t kHandle = sizeof(void *);

// Builds a binary form: Bin().header("SDOB", 1, 16).inlined(7, 6, {1, 2}).bytes
struct Bin {
    Bytes bytes;
    Bin &raw(const Bytes &values)
    {
        bytes.insert(bytes.end(), values.begin(), values.end());
        return *this;
    }
    Bin &u16(uint16_t v) { return raw({reinterpret_cast<uint8_t *>(&v)[0], reinterpret_cast<uint8_t *>(&v)[1]}); }
    Bin &header(const char *m, uint16_t n, uint16_t total) { return raw(Bytes(m, m + 4)).u16(n).u16(total); }
    // The value left-aligned in the slot's four bytes, flags its length - 1.
    Bin &inlined(uint16_t id, uint8_t type, const Bytes &value)
    {
        return u16(id).raw({type, static_cast<uint8_t>(value.size() - 1)}).raw(value).raw(Bytes(4 - value.size(), 0));
    }
    // A value of n bytes at the slot's start + at.
    Bin &outOfLine(uint16_t id, uint8_t type, uint16_t n, uint16_t at) { return u16(id).raw({type, 4}).u16(n).u16(at); }
};

// An object with one 2-byte entry, an empty one, and an array of both.
inline const Bytes kChild = Bin().header("SDOB", 1, 16).inlined(7, 6, {0xAB, 0xCD}).bytes;
inline const Bytes kEmpty = Bin().header("SDOB", 0, 8).bytes;
inline const Bytes kPair = Bin().header("SDAB", 2, 32).raw(kChild).raw(kEmpty).bytes;

struct ConfigFree {
    void operator()(SDOConfig *config) const { SMSDOConfigFree(config); }
};
// An owned object; Config config(SMSDOConfigAlloc()) makes an empty one.
using Config = std::unique_ptr<SDOConfig, ConfigFree>;

// The bytes written into a buffer with room to spare, and the status expected.
inline Bytes serialise(const SDOConfig *config, int32_t expected = SM_STATUS_SUCCESS)
{
    uint32_t size = SMSDOConfigGetBinarySize(config) + 64;
    Bytes out(size);
    EXPECT_EQ(SMSDOConfigToBinary(config, out.data(), &size), expected);
    out.resize(size);
    return out;
}

inline void add(SDOConfig *config, uint16_t id, uint8_t type, const Bytes &value, int32_t replace = 0)
{
    ASSERT_EQ(SMSDOConfigAddData(config, id, type, value.data(), static_cast<uint32_t>(value.size()), replace),
              SM_STATUS_SUCCESS);
}

// A copy of bytes that ends exactly where a readable page does, followed by
// a page that cannot be read: a read past the copy's end faults at once, in
// every build, not only under the address sanitizer.
class PageEnd {
  public:
    explicit PageEnd(const Bytes &bytes)
        : page_(static_cast<std::size_t>(::sysconf(_SC_PAGESIZE))),
          length_((bytes.size() + page_ - 1) / page_ * page_ + page_)
    {
        void *map = ::mmap(nullptr, length_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (map == MAP_FAILED)
            throw std::runtime_error("no pages for a page-end buffer");
        base_ = static_cast<uint8_t *>(map);
        if (::mprotect(base_ + length_ - page_, page_, PROT_NONE) != 0)
            throw std::runtime_error("the guard page cannot be protected");
        data_ = base_ + length_ - page_ - bytes.size();
        std::memcpy(data_, bytes.data(), bytes.size());
    }
    ~PageEnd() { ::munmap(base_, length_); }
    PageEnd(const PageEnd &) = delete;
    PageEnd &operator=(const PageEnd &) = delete;

    uint8_t *data() const { return data_; }

  private:
    std::size_t page_;
    std::size_t length_;
    uint8_t *base_ = nullptr;
    uint8_t *data_ = nullptr;
};

}  // namespace zksupt::test
