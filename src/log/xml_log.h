// The XML event log: one document, "<EventLog>" with a LogEntry per event,
// into which each entry is spliced before the closing root tag under the
// log's file lock, so the file is a whole document after every append.
#pragma once

#include <cstdint>

#include "log/event.h"

namespace zksupt::log {

// SMAppendToXMLLog. BAD_ARGUMENT for a null path, missing or oversized data,
// or user info, source (1-511 bytes) or description (1-8,191 bytes) of the
// wrong length; FAILURE for an unknown category or a log that cannot be
// opened; BAD_OBJECT for a log without its closing tag; LIMIT_REACHED for an
// entry written in part; NO_MEMORY.
int32_t appendToXmlLog(const char *path, const Event &event, uint32_t limit) noexcept;

// SMClearXMLLog: deletes the log (FAILURE when it cannot, a missing log
// included) and starts a new one with a "Log was cleared" entry.
int32_t clearXmlLog(const char *path, uint16_t category, const char *userInfo, const char *source) noexcept;

// SMForceXMLLogExists: asks for the size and ignores it; creates nothing.
int32_t forceXmlLogExists(const char *path) noexcept;

}  // namespace zksupt::log
