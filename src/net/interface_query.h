// Questions about the host's network interfaces, asked through a socket.
#pragma once

#include <netinet/in.h>

#include <cstdint>

#include "file/descriptor.h"

namespace zksupt::net {

// The flags of an interface by name (IFF_*), or false when it cannot be asked.
// An interface so answered can be left out of a list by its flags.
class InterfaceFlags {
  public:
    virtual ~InterfaceFlags() = default;
    virtual bool flags(const char *name, uint32_t &out) const noexcept = 0;
};

// The kernel's answers through one socket, closed with the object.
class InterfaceQuery final : public InterfaceFlags {
  public:
    enum class Kind {
        // A packet socket when the caller may open one, else a datagram socket.
        packetFirst,
        datagram,
    };
    explicit InterfaceQuery(Kind kind) noexcept;

    explicit operator bool() const noexcept { return static_cast<bool>(socket_); }
    int descriptor() const noexcept { return socket_.get(); }

    bool flags(const char *name, uint32_t &out) const noexcept override;
    // SIOCGIFADDR of the named interface.
    bool ipv4Address(const char *name, in_addr &address) const noexcept;

  private:
    file::Descriptor socket_;
};

}  // namespace zksupt::net
