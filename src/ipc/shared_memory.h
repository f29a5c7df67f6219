// Named shared-memory segments. A segment comes with a guard: a System V
// set of one semaphore that the creating process holds with undo for as
// long as its record lives, so the kernel itself gives the guard back when
// that process ends. A guard at 0 means a live creator, at 1 that none is
// left, and a later creator of the name then adopts the segment as it is.
#pragma once

#include <cstdint>

#include "lock/object_record.h"

namespace zksupt::ipc {

struct SharedMemoryRecord {
    lock::ObjectHeader header;  // kind 3; the key name
    void *address;              // where the segment is attached in this process
    int32_t guardId;            // the guard set, 0 when none
    int32_t segmentId;          // the System V segment, -1 once removed
    uint32_t creator;           // 1 when this record's create made the segment
};

// SMSharedMemCreate_s: a new segment of size bytes, or the one a creator
// that has ended left behind (contents and size as they are); null while a
// live creator holds the name, for a null name, or on any failure. A name
// without a key makes a private segment.
void *createSharedMemory(const char *name, uint32_t size, int32_t permission) noexcept;
// SMSharedMemOpen: the segment of a name whose creator is alive, else null.
void *openSharedMemory(const char *name) noexcept;
// SMSharedMemGetAddressPtr: null for a null record or another kind.
void *sharedMemoryAddress(void *sharedMemory) noexcept;
// SMSharedMemFree: detaches; the creator's record also removes the segment
// and its guard. Null and other kinds are ignored.
void freeSharedMemory(void *sharedMemory) noexcept;

}  // namespace zksupt::ipc
