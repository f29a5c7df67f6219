// What reaches the system log, proved without touching the machine's log: a
// child process in a mount namespace of its own sees a /dev/log that is the
// test's datagram socket.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <syslog.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <string>
#include <vector>

#include <zksupt/os.h>
#include <zksupt/status.h>

#include "support/child.h"
#include "support/sandbox.h"

namespace {

// Exit codes of a child that could not set up its namespace: the machine
// does not allow it, so the test is skipped.
constexpr int kNoNamespace = 70;

struct Logged {
    int priority;
    std::string ident;
    std::string text;
};

// Splits glibc's "<PRI>Mmm dd hh:mm:ss ident: text".
Logged parse(const std::string &datagram)
{
    Logged logged{-1, {}, {}};
    const std::size_t close = datagram.find('>');
    constexpr std::size_t kTimestamp = 16;  // "Mmm dd hh:mm:ss "
    if (datagram.empty() || datagram[0] != '<' || close == std::string::npos)
        return logged;
    logged.priority = std::stoi(datagram.substr(1, close - 1));
    const std::size_t identStart = close + 1 + kTimestamp;
    const std::size_t colon = datagram.find(": ", identStart);
    if (colon == std::string::npos)
        return logged;
    logged.ident = datagram.substr(identStart, colon - identStart);
    logged.text = datagram.substr(colon + 2);
    return logged;
}

// A datagram socket bound at a path in the sandbox, read with a bounded wait.
class LogSocket {
  public:
    explicit LogSocket(std::string path) : path_(std::move(path))
    {
        fd_ = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strncpy(address.sun_path, path_.c_str(), sizeof address.sun_path - 1);
        bound_ = fd_ >= 0 && bind(fd_, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0;
        timeval wait{30, 0};
        setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &wait, sizeof wait);
    }
    ~LogSocket()
    {
        close(fd_);
        unlink(path_.c_str());
    }
    bool bound() const { return bound_; }
    const std::string &path() const { return path_; }

    // The next datagram, or "" when none comes (flags: MSG_DONTWAIT to only look).
    std::string receive(int flags = 0)
    {
        std::vector<char> buffer(8192);
        const ssize_t length = recv(fd_, buffer.data(), buffer.size(), flags);
        return length > 0 ? std::string(buffer.data(), length) : std::string();
    }

  private:
    std::string path_;
    int fd_ = -1;
    bool bound_ = false;
};

// In the child: a private copy of the mount tree whose /dev holds only a
// log entry that leads to socketPath.
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

struct Message {
    int32_t type, source;
    uint32_t eventId;
    const char *ident;
    const char *message;
    int32_t status;
    int priority;  // -1: nothing logged
    std::string text;
};

TEST(SystemLog, TextPriorityFacilityAndIdentAsSent)
{
    const std::string longMessage(3000, 'x');
    const std::string longPrefix = "Quillon Connections Service EventID: 9  ";
    const std::vector<Message> messages = {
        {1, 1, 7, "zk-error", "disk full", 0, LOG_DAEMON | LOG_ERR, "Lodestar Engine EventID: 7  disk full"},
        {2, 6, 4294967295u, "zk-warning", "line one\r\nline two\r", 0, LOG_DAEMON | LOG_WARNING,
         "Varve Management EventID: 4294967295  line one \nline two "},
        {0, 7, 1, "zk-unknown", "never logged", -1, -1, ""},
        {4, 3, 0, "zk-info", nullptr, 0, LOG_DAEMON | LOG_INFO, "Pell Service EventID: 0  "},
        {1, 0, 1, "zk-unknown", "never logged", -1, -1, ""},
        {3, 4, 9, "zk-long", longMessage.c_str(), 0, LOG_DAEMON | LOG_INFO,
         longPrefix + longMessage.substr(0, 2047 - longPrefix.size())},
        {2, 5, 12, "zk-last", "done", 0, LOG_DAEMON | LOG_WARNING, "Tessel Framework EventID: 12  done"},
    };

    LogSocket socket(zksupt::test::sandbox().path("dev-log"));
    ASSERT_TRUE(socket.bound());
    const zksupt::test::ChildEnd end = zksupt::test::runInChildBounded(
        [&] {
            if (!enterPrivateDevLog(socket.path()))
                return kNoNamespace;
            for (std::size_t i = 0; i < messages.size(); ++i) {
                const Message &m = messages[i];
                if (SMAppendToOSSysLog(m.type, m.source, m.eventId, m.ident, m.message, nullptr, 0) != m.status)
                    return 1 + static_cast<int>(i);
            }
            return 0;
        },
        std::chrono::seconds(120));
    ASSERT_TRUE(end.finished);
    ASSERT_TRUE(WIFEXITED(end.status));
    if (WEXITSTATUS(end.status) == kNoNamespace)
        GTEST_SKIP() << "this machine allows no private mount namespace with its own /dev";
    ASSERT_EQ(WEXITSTATUS(end.status), 0) << "message " << WEXITSTATUS(end.status) - 1 << " gave another status";

    for (const Message &m : messages) {
        if (m.priority < 0)
            continue;
        const Logged logged = parse(socket.receive());
        SCOPED_TRACE(m.ident);
        EXPECT_EQ(logged.priority, m.priority);
        EXPECT_EQ(logged.ident, m.ident);
        EXPECT_EQ(logged.text, m.text);
    }
    EXPECT_EQ(socket.receive(MSG_DONTWAIT), "");
}

}  // namespace
