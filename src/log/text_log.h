// The text event log: one record appended under the log's file lock, with
// the move to the single backup when the log would reach its limit, and the
// clearing of the log.
#pragma once

#include <cstdint>

#include "log/event.h"

namespace zksupt::log {

// Writes one record of event to the text log at path under the given limit.
// BAD_ARGUMENT for a null path or source, data that is missing or longer
// than 32,768 bytes, texts of the wrong length, or (only after a backup that
// the size called for) an unknown type; the converter's status for text it
// cannot convert; SUCCESS and nothing written for a category outside 1-6;
// FAILURE when the directory cannot be made or the log not opened;
// LIMIT_REACHED for a record written in part; NO_MEMORY.
int32_t writeTextRecord(const char *path, const Event &event, uint32_t limit) noexcept;

// Deletes the text log and starts a new one with a "Log was cleared" record
// of the category and source. FAILURE when the log cannot be deleted (a
// missing log included); else what writing the record answers.
int32_t clearTextLog(const char *path, uint16_t category, const char *source) noexcept;

}  // namespace zksupt::log
