// Plain-text logs kept in numbered generations ("<path>.1" the newest moved
// aside, up to "<path>.<count>"). They take no lock: each message goes in
// with one append, so messages never split, but two processes that rotate
// at once may drop a generation.
#pragma once

#include <cstdint>

#include <zksupt/log.h>

namespace zksupt::log {

inline constexpr uint32_t kPrefixTime = SM_ROTATED_LOG_TIME;
inline constexpr uint32_t kPrefixProcessThread = SM_ROTATED_LOG_PROCESS_THREAD;
inline constexpr uint32_t kSuffixNewline = SM_ROTATED_LOG_NEWLINE;

// SMFileRotateCheck: SUCCESS for a null path or a file of at most maxSize
// bytes; FAILURE when the file's size cannot be had; otherwise the result of
// the final move to "<path>.1" (or of the delete, for count 0).
int32_t rotateCheck(const char *path, uint32_t maxSize, uint32_t count) noexcept;

// SMFileLogMsgToRotatedLog: INVALID_PARAMETER for a null message or path,
// FAILURE when the log cannot be opened, LIMIT_REACHED for a message written
// in part.
int32_t logToRotated(const char *message, const char *path, uint32_t maxSize, uint32_t count, uint32_t flags) noexcept;

// SMFileDeleteRotated: INVALID_PARAMETER for a null path; else the delete of
// the file itself, FAILURE when it does not exist.
int32_t deleteRotated(const char *path, int32_t deleteGenerations, uint32_t count) noexcept;

}  // namespace zksupt::log
