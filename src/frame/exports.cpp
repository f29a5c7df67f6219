// Exported entries of the library frame.
#include <zksupt/frame.h>

#include "frame/info.h"
#include "frame/memory.h"

namespace fr = zksupt::frame;

// clang-format off
extern "C" {

void *SMAllocMem(uint32_t size) noexcept { return fr::allocate(size); }
void *SMReAllocMem(void *pointer, uint32_t size) noexcept { return fr::reallocate(pointer, size); }
void SMFreeMem(void *pointer) noexcept { fr::release(pointer); }
void SMFreeGeneric(void *pointer) noexcept { fr::release(pointer); }

uint32_t SUPTGetMajorVersion(void) noexcept { return fr::majorVersion(); }
uint32_t SUPTGetMinorVersion(void) noexcept { return fr::minorVersion(); }
uint32_t SUPTGetRevision(void) noexcept { return fr::revision(); }

void SMGetExportContext(void **context) noexcept { fr::getExportContext(context); }
void SMSetExportContext(void *context) noexcept { fr::ignoreExportContext(context); }
void SMResetExportContext(void *context) noexcept { fr::ignoreExportContext(context); }

int32_t SMOSShutdown(void) noexcept { return fr::shutdown(); }

}  // extern "C"
// clang-format on
