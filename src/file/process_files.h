// Files of one device or one process: snapshots that tell whether a file
// changed, names that carry the process ID, and PCI configuration space.
#pragma once

#include <cstdint>

namespace zksupt::file {

// file_state.cpp. SMFilePropAlloc: a malloc'ed snapshot of the file at path
// (device, inode, size, modification time to the nanosecond, mode), or of
// its absence, holding a copy of the path. Null for a null path or no memory.
void *snapshotFile(const char *path) noexcept;
// SMFilePropIsModified: 1 when the file differs from the snapshot (it
// appeared, vanished, was replaced, written or had its mode changed), and
// the snapshot is renewed so that each change is told once; 0 when it is
// the same; 0x10F for null.
int32_t fileChanged(void *snapshot) noexcept;
// SMFilePropFree: frees the snapshot; null is ignored.
void freeSnapshot(void *snapshot) noexcept;

// pid_path.cpp. SMMakePathFileNameByPID: "directory/baseName.<pid>" under
// the in/out size rule; 0x10F for a null directory, base name or size.
int32_t pathByProcessId(const char *directory, const char *baseName, char *buffer, uint32_t *size) noexcept;

// pci_config.cpp. SMReadPCIDevFile: up to *size bytes of a PCI function's
// configuration space from offset, from
// "<root>/DDDD:BB:DD.F/config"; *size becomes the bytes read (fewer at the
// end of the space, 0 past it). 0x10F for a null buffer or size, a device
// above 31 or a function above 7; 0x100 for no such device; -1 when the
// file cannot be read.
inline constexpr const char *kPciDevices = "/sys/bus/pci/devices";
int32_t readPciConfig(const char *root, uint32_t domain, uint32_t bus, uint32_t device, uint32_t function,
                      uint32_t offset, void *buffer, uint32_t *size) noexcept;

}  // namespace zksupt::file
