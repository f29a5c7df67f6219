#include "log/event_log.h"

#include <zksupt/status.h>

#include "frame/system_log.h"
#include "log/limits.h"
#include "log/paths.h"
#include "log/text_log.h"
#include "log/xml_log.h"

namespace zksupt::log {
namespace {

// The path of the log of one target and its limit.
struct TargetLog {
    char path[kLogPathSize];
    uint32_t limit;
};

int32_t findLog(uint32_t target, TargetLog &log) noexcept
{
    uint32_t size = sizeof log.path;
    if (const int32_t status = logPath(target, log.path, &size); status != SM_STATUS_SUCCESS)
        return status;
    return getLogMaxSize(log.path, &log.limit);
}

constexpr const char *kClearingUser = "Local System";

}  // namespace

int32_t appendToLog(uint32_t targets, const Event &event) noexcept
{
    if (targets == 0)
        return SM_STATUS_BAD_ARGUMENT;
    if ((targets & kTargetOs) != 0)
        frame::appendToSystemLog(static_cast<int32_t>(event.type), event.category, static_cast<uint32_t>(event.eventId),
                                 event.source, event.description);
    TargetLog log;
    if ((targets & kTargetText) != 0) {
        if (const int32_t status = findLog(kTargetText, log); status != SM_STATUS_SUCCESS)
            return status;
        writeTextRecord(log.path, event, log.limit);
    }
    if ((targets & kTargetXml) == 0)
        return SM_STATUS_SUCCESS;
    if (const int32_t status = findLog(kTargetXml, log); status != SM_STATUS_SUCCESS)
        return status;
    Event entry = event;
    entry.userInfo = nullptr;
    entry.link = nullptr;
    return appendToXmlLog(log.path, entry, log.limit);
}

int32_t clearLog(uint32_t targets, uint16_t category, const char *source) noexcept
{
    if (targets == 0)
        return SM_STATUS_BAD_ARGUMENT;
    if ((targets & kTargetOs) != 0)
        return SM_STATUS_NOT_SERVED;
    TargetLog log;
    if ((targets & kTargetText) != 0) {
        if (const int32_t status = findLog(kTargetText, log); status != SM_STATUS_SUCCESS)
            return status;
        if (const int32_t status = clearTextLog(log.path, category, source); status != SM_STATUS_SUCCESS)
            return status;
    }
    if ((targets & kTargetXml) == 0)
        return SM_STATUS_SUCCESS;
    if (const int32_t status = findLog(kTargetXml, log); status != SM_STATUS_SUCCESS)
        return status;
    return clearXmlLog(log.path, category, kClearingUser, source);
}

}  // namespace zksupt::log
