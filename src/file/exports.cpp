// Exported entries of the file operations, file snapshots, process file
// names and PCI configuration reads.
#include <zksupt/file.h>

#include "file/operations.h"
#include "file/process_files.h"
#include "file/separated_text.h"

namespace fi = zksupt::file;

// clang-format off
extern "C" {

int32_t SMFileCopy(const char *source, const char *destination, int32_t overwrite) noexcept { return fi::copyFile(source, destination, overwrite, fi::Sync::no); }
int32_t SMFileCopyAndSync(const char *source, const char *destination, int32_t overwrite) noexcept { return fi::copyFile(source, destination, overwrite, fi::Sync::yes); }
int32_t SMFileAppend(const char *source, const char *destination, int32_t create) noexcept { return fi::appendFile(source, destination, create, fi::Sync::no); }
int32_t SMFileAppendAndSync(const char *source, const char *destination, int32_t create) noexcept { return fi::appendFile(source, destination, create, fi::Sync::yes); }
int32_t SMMkDir(const char *path) noexcept { return fi::makeDirectory(path); }
int32_t SMRmDir(const char *path) noexcept { return fi::removeDirectory(path); }
int32_t SMGetSizeOfFile(const char *path, uint32_t *size) noexcept { return fi::sizeOfFile(path, size); }
int32_t SMDeleteFile(const char *path) noexcept { return fi::deleteFile(path); }
int32_t SMGetTmpFile(const char *directory, char *name, uint32_t *size) noexcept { return fi::temporaryName(directory, name, size); }
char *SMUTF8ConvertXSVToYSV(const char *text, uint32_t *size, char from, char to) noexcept { return fi::convertSeparators(text, size, from, to); }

void *SMFilePropAlloc(const char *path) noexcept { return fi::snapshotFile(path); }
int32_t SMFilePropIsModified(void *prop) noexcept { return fi::fileChanged(prop); }
void SMFilePropFree(void *prop) noexcept { fi::freeSnapshot(prop); }
int32_t SMMakePathFileNameByPID(const char *directory, const char *baseName, char *buffer, uint32_t *size) noexcept { return fi::pathByProcessId(directory, baseName, buffer, size); }
int32_t SMReadPCIDevFile(uint32_t domain, uint32_t bus, uint32_t device, uint32_t function, uint32_t offset, void *buffer, uint32_t *size) noexcept { return fi::readPciConfig(fi::kPciDevices, domain, bus, device, function, offset, buffer, size); }

}  // extern "C"
// clang-format on
