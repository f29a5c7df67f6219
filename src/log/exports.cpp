// Exported entries of the event logs and the rotated logs.
#include <zksupt/log.h>

#include "log/event_log.h"
#include "log/limits.h"
#include "log/paths.h"
#include "log/rotated_log.h"
#include "log/xml_log.h"

namespace lg = zksupt::log;

// clang-format off
extern "C" {

int32_t SMAppendToLog(uint32_t targets, uint32_t type, uint16_t category, int32_t eventID, const char *source, const char *description, const void *data, uint32_t dataLength) noexcept { return lg::appendToLog(targets, {.type = type, .category = category, .eventId = eventID, .source = source, .description = description, .data = data, .dataLength = dataLength}); }
int32_t SMClearLog(uint32_t targets, uint16_t category, const char *source) noexcept { return lg::clearLog(targets, category, source); }
int32_t SMGetLogPathFileName(uint32_t target, char *buffer, uint32_t *size) noexcept { return lg::logPath(target, buffer, size); }
int32_t SMGetBackupLogPathFileName(uint32_t target, char *buffer, uint32_t *size) noexcept { return lg::backupLogPath(target, buffer, size); }
int32_t SMGetLogMaxSize(const char *path, uint32_t *maxSize) noexcept { return lg::getLogMaxSize(path, maxSize); }
int32_t SMSetLogMaxSize(const char *path, uint32_t maxSize, int32_t lockFlag) noexcept { return lg::setLogMaxSize(path, maxSize, lockFlag); }
int32_t SMFileRotateCheck(const char *path, uint32_t maxSize, uint32_t count) noexcept { return lg::rotateCheck(path, maxSize, count); }
int32_t SMFileLogMsgToRotatedLog(const char *message, const char *path, uint32_t maxSize, uint32_t count, uint32_t flags) noexcept { return lg::logToRotated(message, path, maxSize, count, flags); }
int32_t SMFileDeleteRotated(const char *path, int32_t deleteGenerations, uint32_t count) noexcept { return lg::deleteRotated(path, deleteGenerations, count); }

int32_t SMAppendToXMLLog(const char *path, uint16_t type, uint16_t category, int32_t eventID, const char *userInfo, const char *source, const char *description, const char *link, const void *data, uint32_t dataLength, uint32_t maxSize) noexcept { return lg::appendToXmlLog(path, {.type = type, .category = category, .eventId = eventID, .userInfo = userInfo, .source = source, .description = description, .link = link, .data = data, .dataLength = dataLength}, maxSize); }
int32_t SMClearXMLLog(const char *path, uint16_t category, const char *userInfo, const char *source) noexcept { return lg::clearXmlLog(path, category, userInfo, source); }
int32_t SMForceXMLLogExists(const char *path) noexcept { return lg::forceXmlLogExists(path); }
int32_t SMGetBackupXMLLogPathFileName(const char *path, char *buffer, uint32_t *size) noexcept { return lg::backupPath(path, buffer, size); }

}  // extern "C"
// clang-format on
