// The event logs' size limits (module 6 of the library): a process-wide
// table from a log path to its limit, kept in memory only, under one mutex.
#pragma once

#include <cstdint>

#include <zksupt/log.h>

namespace zksupt::log {

inline constexpr uint32_t kDefaultLimit = SM_LOG_DEFAULT_MAX_SIZE;
inline constexpr uint32_t kEsxDefaultLimit = SM_LOG_ESX_DEFAULT_MAX_SIZE;
inline constexpr uint32_t kLimitUpperBound = SM_LOG_MAX_SIZE_UPPER_BOUND;
// A path in the table takes at most this many bytes with its NUL.
inline constexpr uint32_t kLimitPathSize = 256;

// The default limit on a system of the given operating-system type: smaller
// on a VMware ESX service host, whose disk is small.
uint32_t defaultLimitFor(int32_t osType) noexcept;

// Module 6: an empty table and the default of the running system. The stop
// frees every entry; a start after it begins afresh.
bool startLogLimits() noexcept;
void stopLogLimits() noexcept;

// The process's default limit, which the backup and cleared records use.
uint32_t defaultLimit() noexcept;

// SMGetLogMaxSize: the path's limit, entering the default for a path that
// has none (under the same hold of the mutex). INVALID_PARAMETER for a null
// or empty path or a null out; NOT_READY while the module is stopped.
int32_t getLogMaxSize(const char *path, uint32_t *limit) noexcept;

// SMSetLogMaxSize: enters the path's limit unless it has one already (then
// the old entry stays and the result is still SUCCESS). lockFlag 1 takes the
// table's mutex; any other value leaves the locking to the caller.
int32_t setLogMaxSize(const char *path, uint32_t limit, int32_t lockFlag) noexcept;

}  // namespace zksupt::log
