// Replacing a data file without ever changing it in place: the new contents
// go to a temporary file in the same directory, the old file becomes the
// backup, the temporary file takes the old name, and the backup is deleted.
// A crash between the two renames leaves the backup, which the next call on
// the file moves back (recoverBackup). INI and property files share this.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <cstdio>
#include <string>

namespace zksupt::config {

// Permission bits a replaced file keeps: read and write for all, and sticky.
inline constexpr mode_t kKeptModeBits = 01666;
// Mode of a file made where none was.
inline constexpr mode_t kNewFileMode = 0644;

// The backup name of a path: everything after its last '.' (anywhere in the
// path) replaced by "bak"; for paths of 251 characters or more, the first
// 252 characters and "bak". A path without a '.' gets ".bak" appended.
std::string backupName(const std::string &path);

// Moves a left-over backup of path back onto path, finishing a replacement
// that was interrupted between its renames. 0, or 0x110 when there is no
// memory for the backup's name (a backup then stays where it is).
int32_t recoverBackup(const char *path) noexcept;

// What a rewrite reports: its status (0 to commit), and whether the
// temporary file stays for inspection when the rewrite fails or, after a
// status of 0, when the copy then cannot be written whole.
struct Rewrite {
    int32_t status;
    bool keepCopy;
};

// Writes the new contents of a file to out, reading the old ones from in.
// Both streams are fully buffered; write failures are noticed on close, and
// the copy is flushed to the disk before it replaces the old file.
class Rewriter {
  public:
    virtual Rewrite rewrite(std::FILE *in, std::FILE *out) noexcept = 0;

  protected:
    ~Rewriter() = default;
};

// Replaces the existing file at path with what rewriter writes. Statuses:
// 0; -1 no free temporary name, or the old file could not become the
// backup; 7 the temporary file could not be made; 0x104 the old file could
// not be opened; 0x13 a write or the flush to the disk failed (the old file
// is untouched; the copy is kept as the rewrite said); 0x102 the copy
// could not take the old name; 0x10E the backup could not be deleted; or
// the rewriter's own status.
int32_t replaceFile(const std::string &path, Rewriter &rewriter) noexcept;

// The directory part of path for temporary files: "." without a '/', "/"
// for a file in the root.
std::string directoryOf(const std::string &path);

}  // namespace zksupt::config
