// Messages to the operating-system log: the library's own two messages about
// System V semaphore sets, and callers' messages through the exported writer.
#pragma once

#include <cstdint>

namespace zksupt::frame {

// Logs "<source name> EventID: <id>  <message>" (at most 2047 bytes, carriage
// returns turned into spaces) under ident, at error priority for type 1,
// warning for 2, informational otherwise, facility daemon. Sources are 1 to 6;
// another source logs nothing and gives FAILURE, as does a failed allocation.
// A null message logs as empty text.
int32_t appendToSystemLog(int32_t type, int32_t source, uint32_t eventId, const char *ident,
                          const char *message) noexcept;

}  // namespace zksupt::frame
