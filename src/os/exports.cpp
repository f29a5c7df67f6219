// Exported entries of the operating-system services.
#include <zksupt/os.h>

#include "frame/system_log.h"
#include "os/environment.h"
#include "os/library.h"
#include "os/library_table.h"
#include "os/system_info.h"
#include "os/threads.h"
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

SMThread *SMThreadStart(SMThreadRoutine routine, void *argument) noexcept { return os::startThread(routine, argument); }
int32_t SMThreadStartAndRelease(SMThreadRoutine routine, void *argument) noexcept { return os::startReleasedThread(routine, argument); }
int32_t SMThreadStop(SMThread *thread) noexcept { return os::stopThread(thread); }
int32_t SMThreadKill(SMThread *thread) noexcept { return os::killThread(thread); }
int32_t SMThreadYield(void) noexcept { return os::yieldThread(); }
pthread_t SMThreadGetID(void) noexcept { return os::currentThreadId(); }
int32_t SMThreadSetName(const char *name) noexcept { return os::nameCurrentThread(name); }

SMLibrary *SMLibLoad(const char *path) noexcept { return os::loadLibrary(path); }
int32_t SMLibUnLoad(SMLibrary *library) noexcept { return os::unloadLibrary(library); }
void *SMLibLinkToExportFN(SMLibrary *library, const char *symbol) noexcept { return os::linkToExport(library, symbol); }
int32_t SMLibUnLinkFromExportFN(SMLibrary *library, const void *address) noexcept { return os::unlinkFromExport(library, address); }
void *SMFLibLinkToExportFN(const char *user, const char *file, const char *symbol) noexcept { return os::linkShared(user, file, symbol); }
int32_t SMFLibUnLoad(const char *user, const char *file) noexcept { return os::unloadShared(user, file); }
char *SMEnvDup(const char *name, uint32_t *size) noexcept { return os::duplicateEnvironmentValue(name, size); }

}  // extern "C"
// clang-format on
