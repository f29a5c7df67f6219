// Where the event logs live: the log directory that the product registry
// names for Meridian, "log" under it, and the single backup beside each log.
#pragma once

#include <climits>
#include <cstdint>

#include <zksupt/log.h>

namespace zksupt::log {

inline constexpr uint32_t kTargetOs = SM_LOG_TARGET_OS;
inline constexpr uint32_t kTargetText = SM_LOG_TARGET_TEXT;
inline constexpr uint32_t kTargetXml = SM_LOG_TARGET_XML;

// A log path as the lookups hand it out; callers must give this much room.
inline constexpr uint32_t kLogPathSize = 256;

// A path the library forms itself (a backup, a generation): too long a name
// cannot be opened, so it is refused rather than cut.
struct FormedPath {
    char text[PATH_MAX];
};

// SMGetLogPathFileName: the text log's path with target 4, the XML log's
// with 8 (which wins when both are given). BAD_ARGUMENT for target 0,
// NOT_SERVED for any target with bit 2, BUFFER_TOO_SMALL (*size 256) for a
// null buffer or one under 256 bytes, the registry's status when the log
// directory is unknown; a target with neither bit leaves buffer and *size as
// they were.
int32_t logPath(uint32_t target, char *buffer, uint32_t *size) noexcept;

// SMGetBackupLogPathFileName: the backup name of that log. The result is the
// lookup's status only; a buffer too small still gives SUCCESS, with the
// needed size in *size.
int32_t backupLogPath(uint32_t target, char *buffer, uint32_t *size) noexcept;

// SMGetBackupXMLLogPathFileName: path with its last byte replaced by '_'.
// INVALID_PARAMETER for a path under 2 bytes or a null size;
// BUFFER_TOO_SMALL with the needed size.
int32_t backupPath(const char *path, char *buffer, uint32_t *size) noexcept;

// The backup name of a log into out; false when it cannot be formed.
bool backupNameOf(const char *path, FormedPath &out) noexcept;

// Makes the directory a log file sits in when it is missing (one level, mode
// 0755): SUCCESS, or FAILURE.
int32_t makeLogDirectory(const char *path) noexcept;

}  // namespace zksupt::log
