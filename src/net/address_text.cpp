#include "net/address_text.h"

#include <arpa/inet.h>
#include <netinet/in.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>

#include <zksupt/net.h>
#include <zksupt/status.h>

#include "frame/owned.h"
#include "frame/size_out.h"
#include "net/module.h"
#include "text/utf8_string.h"

namespace zksupt::net {
namespace {

// The broadcast address is the one text allowed to read as all ones, which
// inet_addr also answers for text it cannot read.
bool isBroadcastSpelling(const char *text) noexcept
{
    for (const char *spelling : {"255.255.255.255", "0xff.0xff.0xff.0xff"})
        if (text::utf8CompareFoldedN(text, spelling, static_cast<uint32_t>(std::strlen(spelling) + 1)) == 0)
            return true;
    return false;
}

struct Family {
    int af;
    uint32_t length;
};

std::optional<Family> familyOf(uint32_t code) noexcept
{
    if (code == SM_ADDR_FAMILY_IPV4)
        return Family{AF_INET, 4};
    if (code == SM_ADDR_FAMILY_IPV6)
        return Family{AF_INET6, 16};
    return std::nullopt;
}

}  // namespace

void rewriteDottedText(const char *text, char *out) noexcept
{
    std::size_t kept = 0;
    for (const char *p = text; *p != '\0'; ++p) {
        if (*p == 'x')
            continue;
        const bool opensOctet = kept == 0 || out[kept - 1] == '.';
        if (*p == '0' && opensOctet && p[1] != '.' && p[1] != '\0')
            continue;
        out[kept++] = *p;
    }
    out[kept] = '\0';
}

int32_t ipv4FromText(const char *text, uint32_t *address) noexcept
{
    if (const int32_t status = checkCall({text, address}); status != SM_STATUS_SUCCESS)
        return status;
    const frame::Owned<char> rewritten = frame::allocateOwned<char>(std::strlen(text) + 1);
    if (rewritten == nullptr)
        return SM_STATUS_NO_MEMORY;
    rewriteDottedText(text, rewritten.get());
    const in_addr_t value = ::inet_addr(rewritten.get());
    if (value == INADDR_NONE && !isBroadcastSpelling(text))
        return SM_STATUS_FAILURE;
    *address = value;
    return SM_STATUS_SUCCESS;
}

int32_t ipv4ToText(uint32_t address, char *buffer, uint32_t *size) noexcept
{
    if (const int32_t status = checkCall({buffer, size}); status != SM_STATUS_SUCCESS)
        return status;
    // inet_ntop writes the text inet_ntoa would, but into our own storage
    // rather than one static buffer shared by every thread.
    char dotted[INET_ADDRSTRLEN];
    if (::inet_ntop(AF_INET, &address, dotted, sizeof dotted) == nullptr)
        return SM_STATUS_FAILURE;
    return frame::copyOutText(buffer, size, dotted, frame::NullBuffer::sizeQuery);
}

int32_t inetFromText(uint32_t family, const char *text, void *buffer, uint32_t *size) noexcept
{
    if (const int32_t status = checkCall({text, buffer, size}); status != SM_STATUS_SUCCESS)
        return status;
    const auto kind = familyOf(family);
    if (!kind)
        return SM_STATUS_INVALID_PARAMETER;
    std::array<unsigned char, 16> bytes{};
    if (::inet_pton(kind->af, text, bytes.data()) <= 0)
        return SM_STATUS_INVALID_PARAMETER;
    return frame::copyOutBytes(buffer, size, bytes.data(), kind->length);
}

int32_t inetToText(uint32_t family, const void *address, uint32_t length, char *buffer, uint32_t *size) noexcept
{
    if (const int32_t status = checkCall({address, buffer, size}); status != SM_STATUS_SUCCESS)
        return status;
    const auto kind = familyOf(family);
    if (!kind || length != kind->length)
        return SM_STATUS_INVALID_PARAMETER;
    // Made in full first, so that a buffer too small learns the size it needs.
    char text[INET6_ADDRSTRLEN];
    if (::inet_ntop(kind->af, address, text, sizeof text) == nullptr)
        return errno == EAFNOSUPPORT ? SM_STATUS_INVALID_PARAMETER : SM_STATUS_FAILURE;
    return frame::copyOutText(buffer, size, text, frame::NullBuffer::sizeQuery);
}

}  // namespace zksupt::net
