// The suite's common entries to its event logs: one event to the system
// log, the text log and the XML log as the target bits ask, and the clearing
// of both file logs.
#pragma once

#include <cstdint>

#include "log/event.h"

namespace zksupt::log {

// SMAppendToLog. BAD_ARGUMENT for targets 0. The text log's own status is
// not passed back (it never was); the answer is the path lookup's status
// when that fails, the XML log's status with target 8, else SUCCESS.
int32_t appendToLog(uint32_t targets, const Event &event) noexcept;

// SMClearLog. BAD_ARGUMENT for targets 0, NOT_SERVED for any target with
// bit 2 (nothing is done). A text log that cannot be cleared ends the call
// with its status; with target 8 the answer is the XML log's.
int32_t clearLog(uint32_t targets, uint16_t category, const char *source) noexcept;

}  // namespace zksupt::log
