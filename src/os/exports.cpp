// Exported entries of the operating-system services.
#include <zksupt/os.h>

#include "frame/system_log.h"
#include "os/system_info.h"
#include "os/time.h"

namespace os = zksupt::os;
namespace fr = zksupt::frame;

// clang-format off
extern "C" {

int64_t SMRefTicksGet(void) noexcept { return os::refTicks(); }
int32_t SMRefTicksDiffCheckTimer(int64_t start, int64_t now, int64_t timeout, int64_t *difference, uint16_t *passed, uint16_t *expired) noexcept { return os::checkTimer(start, now, timeout, difference, passed, expired); }
int32_t SMOSTypeGet(void) noexcept { return os::osType(); }
int32_t SMkbhit(void) noexcept { return os::keyWaiting(); }
int32_t SMAppendToOSSysLog(int32_t type, int32_t source, uint32_t eventID, const char *ident, const char *message, const void * /*unused1*/, uint32_t /*unused2*/) noexcept { return fr::appendToSystemLog(type, source, eventID, ident, message); }
int32_t SMLongFileNamesEnable(void) noexcept { return os::switchLongFileNames(); }
int32_t SMLongFileNamesDisable(void) noexcept { return os::switchLongFileNames(); }

}  // extern "C"
// clang-format on
