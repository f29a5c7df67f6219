// The two exported lists over the IPv4 and IPv6 builders.
#include <zksupt/status.h>

#include "net/address_lists.h"
#include "net/module.h"

namespace zksupt::net {
namespace {

enum Selection : uint32_t { kBoth = 0, kIpv4Only = 1, kIpv6Only = 2 };

// The array may be missing only when the caller gives it no room.
int32_t checkArguments(const SMInetAddrEntry *entries, const uint32_t *count) noexcept
{
    if (const int32_t status = checkCall({count}); status != SM_STATUS_SUCCESS)
        return status;
    return entries == nullptr && *count != 0 ? SM_STATUS_BAD_ARGUMENT : SM_STATUS_SUCCESS;
}

// The count goes back with a full or overfull list, never after a failure.
int32_t finish(const EntryList &list, uint32_t *count) noexcept
{
    *count = list.count();
    return list.status();
}

}  // namespace

int32_t ipv4AddressList(SMInetAddrEntry *entries, uint32_t *count, [[maybe_unused]] uint32_t flags) noexcept
{
    if (const int32_t status = checkArguments(entries, count); status != SM_STATUS_SUCCESS)
        return status;
    EntryList list(entries, *count);
    if (const int32_t status = appendIpv4(list); status != SM_STATUS_SUCCESS)
        return status;
    return finish(list, count);
}

int32_t inetAddressList(uint32_t selection, uint32_t *count, SMInetAddrEntry *entries) noexcept
{
    if (const int32_t status = checkArguments(entries, count); status != SM_STATUS_SUCCESS)
        return status;
    if (selection > kIpv6Only)
        return SM_STATUS_INVALID_PARAMETER;
    EntryList list(entries, *count);
    if (selection != kIpv6Only)
        if (const int32_t status = appendIpv4(list); status != SM_STATUS_SUCCESS)
            return status;
    if (selection != kIpv4Only) {
        // Flags by name need no privilege, so an ordinary datagram socket.
        const InterfaceQuery query(InterfaceQuery::Kind::datagram);
        if (!query)
            return SM_STATUS_FAILURE;
        if (const int32_t status = appendIpv6(list, kIfInet6Path, query); status != SM_STATUS_SUCCESS)
            return status;
    }
    return finish(list, count);
}

}  // namespace zksupt::net
