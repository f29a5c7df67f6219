/**
 * @file
 * File utilities: copy, append, directories, sizes, deletion, temporary names, snapshots of a file's state, file names
 * by process ID and PCI configuration space.
 *
 * Paths are UTF-8 file names. Buffers with an in/out size take the capacity in bytes and return the bytes written with
 * the terminator, or the bytes needed with #SM_STATUS_BUFFER_TOO_SMALL. Every function may be called from any thread;
 * a file snapshot serves one thread at a time.
 */
#ifndef ZKSUPT_FILE_H
#define ZKSUPT_FILE_H

#include <zksupt/types.h>

ZKSUPT_BEGIN_DECLS

/** Copies source over destination; an existing destination needs overwrite != 0 (else #SM_STATUS_DESTINATION_EXISTS);
 * onto itself #SM_STATUS_INVALID_PARAMETER. */
ZKSUPT_API int32_t SMFileCopy(const char *source, const char *destination, int32_t overwrite) ZKSUPT_NOEXCEPT;
/** As SMFileCopy(), then flushes the destination to disk. */
ZKSUPT_API int32_t SMFileCopyAndSync(const char *source, const char *destination, int32_t overwrite) ZKSUPT_NOEXCEPT;
/** Appends source's bytes to destination; a missing destination needs create != 0 (else #SM_STATUS_FILE_NOT_FOUND);
 * onto itself #SM_STATUS_INVALID_PARAMETER. */
ZKSUPT_API int32_t SMFileAppend(const char *source, const char *destination, int32_t create) ZKSUPT_NOEXCEPT;
/** As SMFileAppend(), then flushes the destination to disk. */
ZKSUPT_API int32_t SMFileAppendAndSync(const char *source, const char *destination, int32_t create) ZKSUPT_NOEXCEPT;
/** Makes one directory level with mode 0755: #SM_STATUS_SUCCESS, also when the path already exists. */
ZKSUPT_API int32_t SMMkDir(const char *path) ZKSUPT_NOEXCEPT;
/** Removes an empty directory: #SM_STATUS_SUCCESS, #SM_STATUS_NOT_FOUND when missing, #SM_STATUS_BAD_OBJECT when not
 * empty, else #SM_STATUS_FAILURE. */
ZKSUPT_API int32_t SMRmDir(const char *path) ZKSUPT_NOEXCEPT;
/** Stores the file's size in *size (0 on failure); #SM_STATUS_FAILURE when it cannot be read. */
ZKSUPT_API int32_t SMGetSizeOfFile(const char *path, uint32_t *size) ZKSUPT_NOEXCEPT;
/** Deletes the file: #SM_STATUS_SUCCESS, or #SM_STATUS_FAILURE on any failure. */
ZKSUPT_API int32_t SMDeleteFile(const char *path) ZKSUPT_NOEXCEPT;
/** Writes a free 8-character file name of directory into name (*size >= 9, else #SM_STATUS_BUFFER_TOO_SMALL) and sets
 * *size to 9. */
ZKSUPT_API int32_t SMGetTmpFile(const char *directory, char *name, uint32_t *size) ZKSUPT_NOEXCEPT;
/** Separated values: a new copy of text with every `from` replaced by `to`, followed by one more
 * `to` and a NUL. With to = 0 the copy is the pieces of text between the separators as consecutive
 * NUL-terminated strings closed by an empty one ("a,b" gives "a\0b\0\0"); pieces are not trimmed.
 * *size (may be null) receives the copy's bytes, both closing characters included. Free the copy
 * with SMFreeMem; null when text is null or memory runs out. */
ZKSUPT_API char *SMUTF8ConvertXSVToYSV(const char *text, uint32_t *size, char from, char to) ZKSUPT_NOEXCEPT;

/** A snapshot of the file at path (device, inode, size, modification time, mode), or of its absence; free it with
 * SMFilePropFree. Null for a null path or no memory. One snapshot serves one thread at a time. */
ZKSUPT_API void *SMFilePropAlloc(const char *path) ZKSUPT_NOEXCEPT;
/** 1 when the file appeared, vanished, was replaced, written or had its mode changed since the snapshot, which is
 * then renewed (each change is told once); 0 when not; #SM_STATUS_INVALID_PARAMETER for null. */
ZKSUPT_API int32_t SMFilePropIsModified(void *prop) ZKSUPT_NOEXCEPT;
/** Frees a snapshot; null is ignored. */
ZKSUPT_API void SMFilePropFree(void *prop) ZKSUPT_NOEXCEPT;
/** Copies "directory/baseName.PID" (PID the process ID); *size in/out (length + 1 on success).
 * #SM_STATUS_BUFFER_TOO_SMALL with the needed size for a null or small buffer, #SM_STATUS_INVALID_PARAMETER for a null
 * directory, base name or size. */
ZKSUPT_API int32_t SMMakePathFileNameByPID(const char *directory, const char *baseName, char *buffer,
                                           uint32_t *size) ZKSUPT_NOEXCEPT;
/** As SMMakePathFileNameByPID() under the directory of a path kind of a product (as SMGetPathByProductIDandType(), the
 * whole suite being 0xFFFFFFFF); that query's status when it has none. */
ZKSUPT_API int32_t SMMakePathFileNameByPIDAndType(uint32_t productID, uint32_t pathType, const char *baseName,
                                                  char *buffer, uint32_t *size) ZKSUPT_NOEXCEPT;
/** Reads up to *size bytes of the PCI function's configuration space from offset, from
 * /sys/bus/pci/devices/DDDD:BB:DD.F/config; *size becomes the bytes read (fewer, or 0, at the end of the space).
 * Statuses: #SM_STATUS_SUCCESS, #SM_STATUS_NOT_FOUND no such device, #SM_STATUS_INVALID_PARAMETER null buffer or size,
 * device above 31 or function above 7, #SM_STATUS_FAILURE read failed. */
ZKSUPT_API int32_t SMReadPCIDevFile(uint32_t domain, uint32_t bus, uint32_t device, uint32_t function, uint32_t offset,
                                    void *buffer, uint32_t *size) ZKSUPT_NOEXCEPT;

ZKSUPT_END_DECLS

#endif /* ZKSUPT_FILE_H */
