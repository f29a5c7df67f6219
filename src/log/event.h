// One event as the logs receive it, and the names both logs write for its
// category and type.
#pragma once

#include <cstdint>
#include <string_view>

namespace zksupt::log {

// The arguments of one event. The XML log alone writes userInfo and link.
struct Event {
    uint32_t type = 0;
    uint16_t category = 0;
    int32_t eventId = 0;
    const char *userInfo = nullptr;
    const char *source = nullptr;
    const char *description = nullptr;
    const char *link = nullptr;
    const void *data = nullptr;
    uint32_t dataLength = 0;
};

// Data may take at most this many bytes in either log.
inline constexpr uint32_t kMaxDataLength = 32768;

// The records the logs write on their own, with their event IDs.
inline constexpr uint32_t kInformationType = 4;
inline constexpr uint16_t kBackupCategory = 1;
inline constexpr int32_t kBackupEventId = 1;
inline constexpr int32_t kClearedEventId = 0;
inline constexpr const char *kBackupDescription = "Log backup created";
inline constexpr const char *kClearedDescription = "Log was cleared";

// The component name of a category 1-6; empty for any other.
std::string_view categoryName(uint16_t category) noexcept;

// The text log's type line ("Type: Warning") of a type; empty for a type
// that is not one of 0, 1, 2, 4, 8 and 16.
std::string_view typeLine(uint32_t type) noexcept;

}  // namespace zksupt::log
