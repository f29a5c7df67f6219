#include "frame/system_log.h"

#include <syslog.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <mutex>

#include <zksupt/status.h>

#include "frame/owned.h"

namespace zksupt::frame {
namespace {

// The suite's components by source code 1 to 6 (the event log names them the
// same way).
constexpr std::array<const char *, 6> kSources{"Lodestar Engine",  "Meridian Service",
                                               "Pell Service",     "Quillon Connections Service",
                                               "Tessel Framework", "Varve Management"};
constexpr std::size_t kTextSize = 2048;

// openlog sets the ident for the whole process and closelog clears it, so the
// library's own messages and callers' are sent one at a time: each goes out
// under its own ident. (A plain standard mutex: the frame sits below the
// library's own locks.)
std::mutex systemLogMutex;

}  // namespace

int32_t appendToSystemLog(int32_t type, int32_t source, uint32_t eventId, const char *ident,
                          const char *message) noexcept
{
    const Owned<char> text = allocateOwned<char>(kTextSize);
    if (!text)
        return SM_STATUS_FAILURE;
    if (source < 1 || source > static_cast<int32_t>(kSources.size()))
        return SM_STATUS_FAILURE;
    const int written = std::snprintf(text.get(), kTextSize, "%s EventID: %u  %s", kSources[source - 1], eventId,
                                      message != nullptr ? message : "");
    const std::size_t length = written < 0 ? 0 : std::min<std::size_t>(written, kTextSize - 1);
    std::replace(text.get(), text.get() + length, '\r', ' ');
    const int priority = type == 1 ? LOG_ERR : type == 2 ? LOG_WARNING : LOG_INFO;
    const std::lock_guard<std::mutex> oneAtATime(systemLogMutex);
    ::openlog(ident, LOG_NDELAY, LOG_DAEMON);
    ::syslog(priority, "%s", text.get());
    ::closelog();
    return SM_STATUS_SUCCESS;
}

}  // namespace zksupt::frame
