// Version and export-context queries, and the shutdown hook.
#pragma once

#include <cstdint>

namespace zksupt::frame {

inline constexpr uint32_t kMajorVersion = 1;
inline constexpr uint32_t kMinorVersion = 1;
inline constexpr uint32_t kRevision = 1;

inline uint32_t majorVersion() noexcept
{
    return kMajorVersion;
}
inline uint32_t minorVersion() noexcept
{
    return kMinorVersion;
}
inline uint32_t revision() noexcept
{
    return kRevision;
}

// There is no export context on this platform: the getter yields null, the
// setters ignore what they are given.
void getExportContext(void **context) noexcept;
void ignoreExportContext(void *context) noexcept;

// Nothing to shut down on this platform.
int32_t shutdown() noexcept;

}  // namespace zksupt::frame
