// Catching what the library sends to the system log: a datagram socket the
// test binds, which a child in a mount namespace of its own sees as /dev/log.
#pragma once

#include <string>

namespace zksupt::test {

// In a child: a private mount tree whose /dev holds only "log", bound to
// socketPath. False when the machine allows no such namespace.
bool enterPrivateDevLog(const std::string &socketPath);

// The test's end: a datagram socket bound at a path, received from with a
// bound wait; closed and unlinked on destruction.
class SystemLogSocket {
  public:
    explicit SystemLogSocket(std::string path);
    ~SystemLogSocket();
    SystemLogSocket(const SystemLogSocket &) = delete;
    SystemLogSocket &operator=(const SystemLogSocket &) = delete;

    bool bound() const { return bound_; }
    const std::string &path() const { return path_; }
    // The next datagram, waiting at most 30 s (or not at all with MSG_DONTWAIT
    // in flags); "" when none came.
    std::string receive(int flags = 0) const;

  private:
    std::string path_;
    int fd_;
    bool bound_ = false;
};

}  // namespace zksupt::test
