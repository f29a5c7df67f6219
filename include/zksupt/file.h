/* File utilities: copy, append, directories, sizes, deletion and temporary names. */
#ifndef ZKSUPT_FILE_H
#define ZKSUPT_FILE_H

#include <zksupt/types.h>

ZKSUPT_BEGIN_DECLS

/* Copies source over destination; an existing destination needs overwrite != 0 (else 0x14); onto itself 0x10F. */
ZKSUPT_API int32_t SMFileCopy(const char *source, const char *destination, int32_t overwrite) ZKSUPT_NOEXCEPT;
/* As SMFileCopy, then flushes the destination to disk. */
ZKSUPT_API int32_t SMFileCopyAndSync(const char *source, const char *destination, int32_t overwrite) ZKSUPT_NOEXCEPT;
/* Appends source's bytes to destination; a missing destination needs create != 0 (else 7); onto itself 0x10F. */
ZKSUPT_API int32_t SMFileAppend(const char *source, const char *destination, int32_t create) ZKSUPT_NOEXCEPT;
/* As SMFileAppend, then flushes the destination to disk. */
ZKSUPT_API int32_t SMFileAppendAndSync(const char *source, const char *destination, int32_t create) ZKSUPT_NOEXCEPT;
/* Makes one directory level with mode 0755; 0 also when the path already exists. */
ZKSUPT_API int32_t SMMkDir(const char *path) ZKSUPT_NOEXCEPT;
/* Removes an empty directory: 0, 0x100 when missing, 0x101 when not empty, else -1. */
ZKSUPT_API int32_t SMRmDir(const char *path) ZKSUPT_NOEXCEPT;
/* Stores the file's size in *size (0 on failure); -1 when it cannot be read. */
ZKSUPT_API int32_t SMGetSizeOfFile(const char *path, uint32_t *size) ZKSUPT_NOEXCEPT;
/* Deletes the file: 0, or -1 on any failure. */
ZKSUPT_API int32_t SMDeleteFile(const char *path) ZKSUPT_NOEXCEPT;
/* Writes a free 8-character file name of directory into name (*size >= 9, else 0x10) and sets *size to 9. */
ZKSUPT_API int32_t SMGetTmpFile(const char *directory, char *name, uint32_t *size) ZKSUPT_NOEXCEPT;
/* Separated values: a new copy of text with every `from` replaced by `to`, followed by one more
 * `to` and a NUL. With to = 0 the copy is the pieces of text between the separators as consecutive
 * NUL-terminated strings closed by an empty one ("a,b" gives "a\0b\0\0"); pieces are not trimmed.
 * *size (may be null) receives the copy's bytes, both closing characters included. Free the copy
 * with SMFreeMem; null when text is null or memory runs out. */
ZKSUPT_API char *SMUTF8ConvertXSVToYSV(const char *text, uint32_t *size, char from, char to) ZKSUPT_NOEXCEPT;

ZKSUPT_END_DECLS

#endif /* ZKSUPT_FILE_H */
