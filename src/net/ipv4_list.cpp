// The IPv4 list from the interface table that SIOCGIFCONF gives.
#include <net/if.h>
#include <sys/ioctl.h>

#include <cstddef>
#include <cstring>

#include <zksupt/status.h>

#include "frame/owned.h"
#include "net/address_lists.h"

namespace zksupt::net {
namespace {

// The table is asked for in a buffer that grows until the answer leaves room
// for one more record. Both steps are whole numbers of records on the target
// (32 bytes) and on 64-bit hosts (40 bytes). The bound keeps a runaway
// answer from taking memory without end; no host comes near it.
constexpr std::size_t kFirstTable = 960;
constexpr std::size_t kTableStep = 640;
constexpr std::size_t kLargestTable = 1024 * 1024;

}  // namespace

int32_t appendIpv4(EntryList &list) noexcept
{
    const InterfaceQuery query(InterfaceQuery::Kind::packetFirst);
    if (!query)
        return SM_STATUS_FAILURE;

    frame::Owned<char> table;
    std::size_t used = 0;
    for (std::size_t capacity = kFirstTable;; capacity += kTableStep) {
        if (!frame::reallocateOwned(table, capacity))
            return SM_STATUS_NO_MEMORY;
        ifconf conf{};
        conf.ifc_len = static_cast<int>(capacity);
        conf.ifc_buf = table.get();
        if (::ioctl(query.descriptor(), SIOCGIFCONF, &conf) < 0 || conf.ifc_len < 0)
            return SM_STATUS_FAILURE;
        used = static_cast<std::size_t>(conf.ifc_len);
        if (used + sizeof(ifreq) <= capacity || capacity + kTableStep > kLargestTable)
            break;
    }

    const char *records = table.get();
    for (std::size_t offset = 0; offset + sizeof(ifreq) <= used; offset += sizeof(ifreq)) {
        char name[IFNAMSIZ + 1] = {};
        std::memcpy(name, records + offset + offsetof(ifreq, ifr_name), IFNAMSIZ);
        uint32_t flags = 0;
        if (!query.flags(name, flags))
            continue;  // gone since the table was made
        if ((flags & (IFF_LOOPBACK | IFF_POINTOPOINT)) != 0 || (flags & IFF_RUNNING) == 0)
            continue;
        in_addr address{};
        if (query.ipv4Address(name, address))
            list.add(SM_ADDR_FAMILY_IPV4, &address);
    }
    return SM_STATUS_SUCCESS;
}

}  // namespace zksupt::net
