// What reaches the system log: a child in its own mount namespace finds the
// test's datagram socket at /dev/log.
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

#include "support/child.h"
#include "support/sandbox.h"
#include "support/system_log_socket.h"

namespace {

constexpr int kNoNamespace = 70;  // the child's exit code when the machine allows no namespace

// The next datagram with the 16-byte timestamp after "<PRI>" cut; "" if none.
std::string receive(const zksupt::test::SystemLogSocket &socket, int flags = 0)
{
    std::string datagram = socket.receive(flags);
    const std::size_t close = datagram.find('>');
    return close == std::string::npos ? datagram : datagram.erase(close + 1, 16);
}

struct Message {
    int32_t type, source;
    uint32_t eventId;
    const char *ident, *message;
    int32_t status;
    std::string logged;  // "" for nothing
};

TEST(SystemLog, TextPriorityFacilityAndIdentAsSent)
{
    const std::string longText(3000, 'x');
    const std::string longPrefix = "Quillon Connections Service EventID: 9  ";
    const auto as = [](int priority, const char *ident) {
        return "<" + std::to_string(LOG_DAEMON | priority) + ">" + ident + ": ";
    };
    const std::vector<Message> messages = {
        {1, 1, 7, "zk-error", "disk full", 0, as(LOG_ERR, "zk-error") + "Lodestar Engine EventID: 7  disk full"},
        {2, 6, 4294967295u, "zk-warning", "one\r\ntwo\r", 0,
         as(LOG_WARNING, "zk-warning") + "Varve Management EventID: 4294967295  one \ntwo "},
        {0, 7, 1, "zk-unknown", "never logged", -1, ""},
        {4, 3, 0, "zk-info", nullptr, 0, as(LOG_INFO, "zk-info") + "Pell Service EventID: 0  "},
        {1, 0, 1, "zk-unknown", "never logged", -1, ""},
        {3, 4, 9, "zk-long", longText.c_str(), 0,
         as(LOG_INFO, "zk-long") + longPrefix + longText.substr(0, 2047 - longPrefix.size())},
    };

    const zksupt::test::SystemLogSocket socket(zksupt::test::sandbox().path("dev-log"));
    ASSERT_TRUE(socket.bound());

    const zksupt::test::ChildEnd end = zksupt::test::runInChildBounded(
        [&] {
            if (!zksupt::test::enterPrivateDevLog(socket.path()))
                return kNoNamespace;
            for (std::size_t i = 0; i < messages.size(); ++i) {
                const Message &m = messages[i];
                if (SMAppendToOSSysLog(m.type, m.source, m.eventId, m.ident, m.message, nullptr, 0) != m.status)
                    return 1 + static_cast<int>(i);
            }
            return 0;
        },
        std::chrono::seconds(120));
    std::vector<std::string> received, expected;
    for (const Message &m : messages)
        if (!m.logged.empty()) {
            expected.push_back(m.logged);
            received.push_back(end.finished && WEXITSTATUS(end.status) == 0 ? receive(socket) : "");
        }
    expected.push_back("");
    received.push_back(receive(socket, MSG_DONTWAIT));  // nothing more
    ASSERT_TRUE(end.finished && WIFEXITED(end.status));
    if (WEXITSTATUS(end.status) == kNoNamespace)
        GTEST_SKIP() << "this machine allows no private mount namespace with a /dev of its own";
    ASSERT_EQ(WEXITSTATUS(end.status), 0) << "message " << WEXITSTATUS(end.status) - 1 << " gave another status";
    EXPECT_EQ(received, expected);
}

}  // namespace
