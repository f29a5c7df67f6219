#include "support/system_log_socket.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <vector>

namespace zksupt::test {

bool enterPrivateDevLog(const std::string &socketPath)
{
    if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", "none", MS_REC | MS_PRIVATE, nullptr) != 0 ||
        mount("zksupt-test-dev", "/dev", "tmpfs", 0, "mode=0755") != 0)
        return false;
    const int placeholder = open("/dev/log", O_CREAT | O_WRONLY | O_CLOEXEC, 0666);
    if (placeholder < 0)
        return false;
    close(placeholder);
    return mount(socketPath.c_str(), "/dev/log", "none", MS_BIND, nullptr) == 0;
}

SystemLogSocket::SystemLogSocket(std::string path)
    : path_(std::move(path)), fd_(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0))
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path_.c_str(), sizeof address.sun_path - 1);
    bound_ = fd_ >= 0 && bind(fd_, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0;
    const timeval wait{30, 0};
    setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &wait, sizeof wait);
}

SystemLogSocket::~SystemLogSocket()
{
    if (fd_ >= 0)
        close(fd_);
    if (bound_)
        unlink(path_.c_str());
}

std::string SystemLogSocket::receive(int flags) const
{
    std::vector<char> buffer(8192);
    const ssize_t length = recv(fd_, buffer.data(), buffer.size(), flags);
    return std::string(buffer.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
}

}  // namespace zksupt::test
