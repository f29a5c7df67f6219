/**
 * @file
 * Network addressing: host name, DNS suffix, address text and the host's address lists.
 *
 * Every function answers #SM_STATUS_NOT_READY while the library's network module is not started and
 * #SM_STATUS_BAD_ARGUMENT for a missing pointer, and may be called from any thread. Sizes are in bytes: the capacity
 * on entry, the bytes written with the terminator (or needed, with #SM_STATUS_BUFFER_TOO_SMALL) on return.
 */
#ifndef ZKSUPT_NET_H
#define ZKSUPT_NET_H

#include <zksupt/types.h>

ZKSUPT_BEGIN_DECLS

/** Address family code of IPv4, in the arguments and the list entries. */
#define SM_ADDR_FAMILY_IPV4 1
/** Address family code of IPv6. */
#define SM_ADDR_FAMILY_IPV6 2

/** One entry of an address list (260 bytes): family code, a zero, the address text. */
typedef struct SMInetAddrEntry {
    uint16_t family;   /**< #SM_ADDR_FAMILY_IPV4 or #SM_ADDR_FAMILY_IPV6 */
    uint16_t reserved; /**< 0 */
    char address[256]; /**< the address text, terminated */
} SMInetAddrEntry;

/** The host name, cut to *size - 1 bytes; *size becomes its length + 1 (#SM_STATUS_BUFFER_TOO_SMALL and the full size
 * for *size 0). */
ZKSUPT_API int32_t SMGetIPHostName(char *buffer, uint32_t *size) ZKSUPT_NOEXCEPT;
/** The host name (at most 63 bytes) as UCS-2, *size in bytes; a null buffer asks for the size. */
ZKSUPT_API int32_t SMUCS2GetIPHostName(ucs2 *buffer, uint32_t *size) ZKSUPT_NOEXCEPT;
/** The official host name's text after its first "." (#SM_STATUS_BUFFER_TOO_SMALL when it does not fit,
 * #SM_STATUS_FAILURE when the lookup fails); *size always gets the size needed, so a null buffer asks for it. */
ZKSUPT_API int32_t SMGetDNSSuffixNameName(char *buffer, uint32_t *size) ZKSUPT_NOEXCEPT;
/** Dotted IPv4 text to the address in network order; octets with leading zeros read as decimal; #SM_STATUS_FAILURE for
 * bad text. */
ZKSUPT_API int32_t SMIPAddrASCIIToNetwork(const char *text, uint32_t *address) ZKSUPT_NOEXCEPT;
/** An IPv4 address in network order as dotted text; #SM_STATUS_BUFFER_TOO_SMALL and the size needed when it does not
 * fit. */
ZKSUPT_API int32_t SMIPAddrNetworkToASCII(uint32_t address, char *buffer, uint32_t *size) ZKSUPT_NOEXCEPT;
/** Address text of family 1 or 2 to its 4 or 16 bytes in *size; #SM_STATUS_INVALID_PARAMETER for a bad family or text,
 * #SM_STATUS_BUFFER_TOO_SMALL when they do not fit. */
ZKSUPT_API int32_t SMInetAddrUTF8ToNetwork(uint32_t family, const char *text, void *buffer,
                                           uint32_t *size) ZKSUPT_NOEXCEPT;
/** 4 (family 1) or 16 (family 2) address bytes to text; #SM_STATUS_INVALID_PARAMETER for a bad family or length,
 * #SM_STATUS_BUFFER_TOO_SMALL and the size needed when it does not fit. */
ZKSUPT_API int32_t SMInetAddrNetworkToUTF8(uint32_t family, const void *address, uint32_t length, char *buffer,
                                           uint32_t *size) ZKSUPT_NOEXCEPT;
/** The IPv4 addresses of the running interfaces (not loopback or point-to-point); *count in: capacity, out: addresses
 * found (#SM_STATUS_BUFFER_TOO_SMALL when more than fit). */
ZKSUPT_API int32_t SMGetIPAddrStrList(SMInetAddrEntry *entries, uint32_t *count, uint32_t flags) ZKSUPT_NOEXCEPT;
/** The IPv4 (selection 0 or 1) then IPv6 (0 or 2) addresses, IPv6 global, site-local, link-local; *count as for
 * SMGetIPAddrStrList(). */
ZKSUPT_API int32_t SMGetInetAddrStrList(uint32_t selection, uint32_t *count, SMInetAddrEntry *entries) ZKSUPT_NOEXCEPT;

ZKSUPT_END_DECLS

#endif /* ZKSUPT_NET_H */
