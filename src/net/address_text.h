// Address text to network-order bytes and back.
#pragma once

#include <cstdint>

namespace zksupt::net {

// The dotted text as inet_addr is given it: every 'x' dropped, and a '0' that
// opens an octet dropped unless a '.' or the end follows it, so leading zeros
// never select octal. out holds at least strlen(text) + 1 bytes.
void rewriteDottedText(const char *text, char *out) noexcept;

// SMIPAddrASCIIToNetwork: the rewritten text through inet_addr. All ones is
// an answer only for the two spellings of the broadcast address.
int32_t ipv4FromText(const char *text, uint32_t *address) noexcept;

// SMIPAddrNetworkToASCII: dotted text of an address in network order.
int32_t ipv4ToText(uint32_t address, char *buffer, uint32_t *size) noexcept;

// SMInetAddrUTF8ToNetwork and SMInetAddrNetworkToUTF8 for family codes 1
// (IPv4, 4 bytes) and 2 (IPv6, 16 bytes).
int32_t inetFromText(uint32_t family, const char *text, void *buffer, uint32_t *size) noexcept;
int32_t inetToText(uint32_t family, const void *address, uint32_t length, char *buffer, uint32_t *size) noexcept;

}  // namespace zksupt::net
