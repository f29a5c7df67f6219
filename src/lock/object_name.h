// Names of the library's cross-process objects. A caller's name of any
// length and case becomes a fixed-length object name: the MD5 digest of the
// name (its NUL included) in 32 upper-case hexadecimal digits behind the
// kind's tag. Mutexes and file locks are lock files in the IPC directory
// ("<dir>/.<tag><digest>"); the other kinds are key names ("<tag><digest>")
// that the key file turns into System V keys.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace zksupt::lock {

// The kind number every object record begins with.
enum ObjectKind : uint32_t {
    kMutexKind = 1,
    kSemaphoreKind = 2,
    kSharedMemoryKind = 3,
    kEventKind = 4,
    kRwLockKind = 5,
    kFileLockKind = 6,
};

// Longest object name, its NUL included.
inline constexpr std::size_t kObjectNameLimit = 256;
// The digest text without its NUL.
inline constexpr std::size_t kDigestLength = 32;

// The MD5 digest of name and its NUL as "%02X" per byte, NUL-terminated.
void nameDigest(const char *name, char (&digest)[kDigestLength + 1]) noexcept;

struct ObjectName {
    char text[kObjectNameLimit];
    std::size_t length;  // without the NUL
    std::string_view view() const noexcept { return {text, length}; }
};

// The name form of kind for a caller's name. Nothing for an empty name, a
// kind outside 1 to 6, a lock-file kind while no IPC directory is known, or
// a form longer than 256 bytes with its NUL.
std::optional<ObjectName> objectName(uint32_t kind, const char *name) noexcept;

// The IPC directory that holds the lock files and the key file: set by the
// name registry's start, cleared by its stop. Null while unknown.
const char *ipcDirectory() noexcept;
// False when the path does not fit; the directory is then unknown.
bool setIpcDirectory(std::string_view path) noexcept;
void clearIpcDirectory() noexcept;

}  // namespace zksupt::lock
