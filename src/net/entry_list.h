// The caller's array of address entries as both lists fill it.
#pragma once

#include <cstdint>
#include <cstring>

#include <arpa/inet.h>

#include <zksupt/net.h>
#include <zksupt/status.h>

namespace zksupt::net {

static_assert(sizeof(SMInetAddrEntry) == 260, "callers keep entries of 260 bytes");

// Counts every address offered but writes only those that fit, so that the
// count handed back tells a caller how large an array to pass next time.
class EntryList {
  public:
    EntryList(SMInetAddrEntry *entries, uint32_t capacity) noexcept : entries_(entries), capacity_(capacity) {}

    // address is an in_addr (family 1) or in6_addr (family 2).
    void add(uint16_t family, const void *address) noexcept
    {
        if (count_ < capacity_) {
            SMInetAddrEntry &entry = entries_[count_];
            std::memset(&entry, 0, sizeof entry);
            entry.family = family;
            ::inet_ntop(family == SM_ADDR_FAMILY_IPV4 ? AF_INET : AF_INET6, address, entry.address,
                        sizeof entry.address);
        } else {
            status_ = SM_STATUS_BUFFER_TOO_SMALL;
        }
        ++count_;
    }

    uint32_t count() const noexcept { return count_; }
    // 0, or 0x10 once an address did not fit.
    int32_t status() const noexcept { return status_; }

  private:
    SMInetAddrEntry *entries_;
    uint32_t capacity_;
    uint32_t count_ = 0;
    int32_t status_ = SM_STATUS_SUCCESS;
};

}  // namespace zksupt::net
