/**
 * @file
 * Library frame: memory, version and export-context functions.
 *
 * Memory the library hands to callers comes from the C allocator, so SMFreeMem(), SMFreeGeneric() and free() are
 * interchangeable for it. Every function may be called from any thread.
 */
#ifndef ZKSUPT_FRAME_H
#define ZKSUPT_FRAME_H

#include <zksupt/types.h>

ZKSUPT_BEGIN_DECLS

/** Allocates size bytes with the C allocator (not zeroed); null on failure. */
ZKSUPT_API void *SMAllocMem(uint32_t size) ZKSUPT_NOEXCEPT;
/** Resizes a block obtained from the library or the C allocator; null on failure. */
ZKSUPT_API void *SMReAllocMem(void *pointer, uint32_t size) ZKSUPT_NOEXCEPT;
/** Frees a block; null is ignored. */
ZKSUPT_API void SMFreeMem(void *pointer) ZKSUPT_NOEXCEPT;
/** Frees memory that another library function allocated for the caller; null is ignored. */
ZKSUPT_API void SMFreeGeneric(void *pointer) ZKSUPT_NOEXCEPT;

/** Major version of the interface: 1 (the interface's own numbering, apart from the shared library's SONAME 9). */
ZKSUPT_API uint32_t SUPTGetMajorVersion(void) ZKSUPT_NOEXCEPT;
/** Minor version of the interface: 1. */
ZKSUPT_API uint32_t SUPTGetMinorVersion(void) ZKSUPT_NOEXCEPT;
/** Revision of the interface: 1. */
ZKSUPT_API uint32_t SUPTGetRevision(void) ZKSUPT_NOEXCEPT;

/** Stores a null context (there is no export context on this platform). */
ZKSUPT_API void SMGetExportContext(void **context) ZKSUPT_NOEXCEPT;
/** Does nothing on this platform; the context is ignored. */
ZKSUPT_API void SMSetExportContext(void *context) ZKSUPT_NOEXCEPT;
/** Does nothing on this platform; the context is ignored. */
ZKSUPT_API void SMResetExportContext(void *context) ZKSUPT_NOEXCEPT;

/** Does nothing and returns 0. */
ZKSUPT_API int32_t SMOSShutdown(void) ZKSUPT_NOEXCEPT;

ZKSUPT_END_DECLS

#endif /* ZKSUPT_FRAME_H */
