#include "net/interface_query.h"

#include <linux/if_ether.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <cstring>

#include "frame/unaligned.h"

namespace zksupt::net {
namespace {

int openSocket(InterfaceQuery::Kind kind) noexcept
{
    if (kind == InterfaceQuery::Kind::packetFirst) {
        // The suite has always asked through a packet socket (its protocol
        // ETH_P_ALL in network order, 3 on the big-endian target). Opening
        // one needs CAP_NET_RAW, which an ordinary user lacks; a datagram
        // socket answers the same interface ioctls, so we fall back to it
        // instead of failing the list.
        const int fd = ::socket(AF_PACKET, SOCK_PACKET | SOCK_CLOEXEC, htons(ETH_P_ALL));
        if (fd >= 0)
            return fd;
    }
    return ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
}

// A request for the named interface; names longer than the kernel's are cut.
ifreq requestFor(const char *name) noexcept
{
    ifreq request{};
    std::strncpy(request.ifr_name, name, IFNAMSIZ - 1);
    return request;
}

}  // namespace

InterfaceQuery::InterfaceQuery(Kind kind) noexcept : socket_(openSocket(kind)) {}

bool InterfaceQuery::flags(const char *name, uint32_t &out) const noexcept
{
    ifreq request = requestFor(name);
    if (::ioctl(socket_.get(), SIOCGIFFLAGS, &request) < 0)
        return false;
    out = static_cast<unsigned short>(request.ifr_flags);
    return true;
}

bool InterfaceQuery::ipv4Address(const char *name, in_addr &address) const noexcept
{
    ifreq request = requestFor(name);
    if (::ioctl(socket_.get(), SIOCGIFADDR, &request) < 0 || request.ifr_addr.sa_family != AF_INET)
        return false;
    // The address comes as a generic sockaddr: read it as the IPv4 form it is.
    address = frame::loadAs<sockaddr_in>(&request.ifr_addr).sin_addr;
    return true;
}

}  // namespace zksupt::net
