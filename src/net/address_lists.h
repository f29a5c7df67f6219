// The lists of the host's own addresses.
#pragma once

#include <cstdint>
#include <string_view>

#include <zksupt/net.h>

#include "net/entry_list.h"
#include "net/interface_query.h"

namespace zksupt::net {

// The kernel's table of IPv6 addresses.
inline constexpr const char *kIfInet6Path = "/proc/net/if_inet6";

// One address of an if_inet6 table and the interface that holds it.
struct Inet6Address {
    unsigned char bytes[16];
    char interface[16];
};

// ipv6_list.cpp. One line of an if_inet6 table: 32 hex digits of address, four hex fields
// (index, prefix length, scope, flags) and the interface name, separated by
// blanks. False, with out undefined, for a line of any other shape.
bool parseIfInet6Line(std::string_view line, Inet6Address &out) noexcept;

// ipv4_list.cpp. Adds the IPv4 addresses of the interfaces that run and are
// neither loopback nor point-to-point: SUCCESS, FAILURE when the interfaces
// cannot be asked, NO_MEMORY.
int32_t appendIpv4(EntryList &list) noexcept;

// ipv6_list.cpp. Adds the addresses of the if_inet6 table at path, leaving out interfaces
// that flags calls loopback or no-ARP or cannot answer for: global ones
// first, then site-local (fec0::/10), then link-local (fe80::/10), each in
// the table's order. A table that cannot be opened adds nothing. SUCCESS or
// NO_MEMORY.
int32_t appendIpv6(EntryList &list, const char *path, const InterfaceFlags &flags) noexcept;

// address_lists.cpp. SMGetIPAddrStrList. flags has no settled meaning and is
// not used.
int32_t ipv4AddressList(SMInetAddrEntry *entries, uint32_t *count, uint32_t flags) noexcept;
// address_lists.cpp. SMGetInetAddrStrList.
int32_t inetAddressList(uint32_t selection, uint32_t *count, SMInetAddrEntry *entries) noexcept;

}  // namespace zksupt::net
