#include "os/library.h"

#include <dlfcn.h>

#include <cstring>

#include <zksupt/status.h>

#include "frame/owned.h"

namespace zksupt::os {

bool isLibrary(const SMLibrary *library) noexcept
{
    return library->kind == kLibraryKind && library->handle != nullptr;
}

SMLibrary *loadLibrary(const char *path) noexcept
{
    if (path == nullptr)
        return nullptr;
    const std::size_t length = std::strlen(path);
    frame::Owned<SMLibrary> record = frame::allocateOwned<SMLibrary>(sizeof(SMLibrary) + length + 1);
    if (!record)
        return nullptr;
    void *handle = ::dlopen(path, RTLD_NOW);
    if (handle == nullptr)
        return nullptr;
    char *text = reinterpret_cast<char *>(record.get() + 1);
    std::memcpy(text, path, length + 1);
    *record = SMLibrary{kLibraryKind, text, handle};
    return record.release();
}

int32_t unloadLibrary(SMLibrary *library) noexcept
{
    if (library == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    if (!isLibrary(library))
        return SM_STATUS_BAD_OBJECT;
    if (::dlclose(library->handle) != 0)
        return SM_STATUS_FAILURE;
    std::free(library);
    return SM_STATUS_SUCCESS;
}

void *linkToExport(SMLibrary *library, const char *symbol) noexcept
{
    if (library == nullptr || symbol == nullptr || !isLibrary(library))
        return nullptr;
    // A symbol may stand for null, so only the loader's error state tells
    // a failed lookup.
    ::dlerror();
    void *address = ::dlsym(library->handle, symbol);
    return ::dlerror() == nullptr ? address : nullptr;
}

int32_t unlinkFromExport(SMLibrary *library, const void *address) noexcept
{
    if (library == nullptr || address == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    return isLibrary(library) ? SM_STATUS_SUCCESS : SM_STATUS_BAD_OBJECT;
}

}  // namespace zksupt::os
