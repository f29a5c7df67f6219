// Exported entries of the network addressing functions.
#include <zksupt/net.h>

#include "net/address_lists.h"
#include "net/address_text.h"
#include "net/host_name.h"

namespace nt = zksupt::net;

// clang-format off
extern "C" {

int32_t SMGetIPHostName(char *buffer, uint32_t *size) noexcept { return nt::hostName(buffer, size); }
int32_t SMUCS2GetIPHostName(ucs2 *buffer, uint32_t *size) noexcept { return nt::hostNameUcs2(buffer, size); }
int32_t SMGetDNSSuffixNameName(char *buffer, uint32_t *size) noexcept { return nt::dnsSuffix(buffer, size); }
int32_t SMIPAddrASCIIToNetwork(const char *text, uint32_t *address) noexcept { return nt::ipv4FromText(text, address); }
int32_t SMIPAddrNetworkToASCII(uint32_t address, char *buffer, uint32_t *size) noexcept { return nt::ipv4ToText(address, buffer, size); }
int32_t SMInetAddrUTF8ToNetwork(uint32_t family, const char *text, void *buffer, uint32_t *size) noexcept { return nt::inetFromText(family, text, buffer, size); }
int32_t SMInetAddrNetworkToUTF8(uint32_t family, const void *address, uint32_t length, char *buffer, uint32_t *size) noexcept { return nt::inetToText(family, address, length, buffer, size); }
int32_t SMGetIPAddrStrList(SMInetAddrEntry *entries, uint32_t *count, uint32_t flags) noexcept { return nt::ipv4AddressList(entries, count, flags); }
int32_t SMGetInetAddrStrList(uint32_t selection, uint32_t *count, SMInetAddrEntry *entries) noexcept { return nt::inetAddressList(selection, count, entries); }

}  // extern "C"
// clang-format on
