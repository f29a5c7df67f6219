// File operations on POSIX paths (UTF-8 byte strings), each returning a
// library status. The INI engine and the event logs use them too.
#pragma once

#include <cstdint>

namespace zksupt::file {

enum class Sync { no, yes };

// transfer.cpp. Copies source over destination. An existing destination is replaced only
// when overwrite is non-zero (else 0x14, nothing touched); the destination
// ends with the source's permission bits. A destination that is the source
// itself (same device and inode, however spelled) is 0x10F, nothing opened.
int32_t copyFile(const char *source, const char *destination, int32_t overwrite, Sync sync) noexcept;
// Appends source's bytes to destination. A missing destination is made only
// when create is non-zero (else 7), and then gets the source's permission bits.
// Appending a file to itself is 0x10F, as for copyFile.
int32_t appendFile(const char *source, const char *destination, int32_t create, Sync sync) noexcept;

// directory.cpp. Makes one directory level, mode 0755. 0 also when the path exists already.
int32_t makeDirectory(const char *path) noexcept;
// Removes an empty directory: 0, 0x100 when missing, 0x101 when not empty.
int32_t removeDirectory(const char *path) noexcept;

// entry.cpp. The file's size as seen by seeking to its end; *size is 0 on
// failure.
int32_t sizeOfFile(const char *path, uint32_t *size) noexcept;
// unlink: 0, or -1 on any failure.
int32_t deleteFile(const char *path) noexcept;

// temp_name.cpp. A name of eight letters and digits that no entry of directory has at the
// moment of the test, into name (*size at least 9; *size becomes 9).
int32_t temporaryName(const char *directory, char *name, uint32_t *size) noexcept;

// entry.cpp. Whether a directory entry exists at path (a dangling link
// counts).
bool entryExists(const char *path) noexcept;

}  // namespace zksupt::file
