// One LogEntry element of the XML event log, built with the library's XML
// writer.
#pragma once

#include <cstdint>
#include <memory>

#include <zksupt/xml.h>

#include "log/event.h"

namespace zksupt::log {

struct FreeXmlBuffer {
    void operator()(SMXGBuf *buffer) const noexcept;
};
using XmlBuffer = std::unique_ptr<SMXGBuf, FreeXmlBuffer>;

// Builds the entry of event at the present time on this host: every child
// element in its order, empty for an absent value. The link alone is
// escaped; the other texts go in as they are, so a description holding '<'
// makes the log ill-formed (callers of the suite write plain text there).
// FAILURE for a category outside 1-6, NO_MEMORY, or the writer's status.
int32_t buildEntry(const Event &event, XmlBuffer &entry) noexcept;

}  // namespace zksupt::log
