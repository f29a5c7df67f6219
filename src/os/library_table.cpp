#include "os/library_table.h"

#include <atomic>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include <zksupt/status.h>

#include "containers/typed_tree.h"
#include "sync/mutex.h"

namespace zksupt::os {
namespace {

// Unloads a library the table owns. Nothing else holds its record, so the
// record is freed even when the loader refuses to close the library.
int32_t closeOwnedLibrary(SMLibrary *library) noexcept
{
    const int32_t status = unloadLibrary(library);
    if (status != SM_STATUS_SUCCESS)
        std::free(library);
    return status;
}

struct LibraryCloser {
    void operator()(SMLibrary *library) const noexcept { closeOwnedLibrary(library); }
};
using OwnedLibrary = std::unique_ptr<SMLibrary, LibraryCloser>;

// Names order as strcmp orders them.
struct ByName {
    int operator()(std::string_view key, const std::string &name) const { return key.compare(name); }
};

struct Symbol {
    Symbol(std::string_view symbolName, void *symbolAddress) : name(symbolName), address(symbolAddress) {}
    std::string name;
    void *address;
};

struct BySymbolName {
    int operator()(std::string_view key, const Symbol &symbol) const { return key.compare(symbol.name); }
};

struct LibraryEntry {
    LibraryEntry(std::string_view name, OwnedLibrary loaded) : fileName(name), library(std::move(loaded)) {}
    std::string fileName;
    OwnedLibrary library;
    containers::Tree<std::string, std::string_view, ByName> users;
    // Not the number of listed users: letting go as a user that is not
    // listed counts too.
    int32_t userCount = 0;
    containers::Tree<Symbol, std::string_view, BySymbolName> symbols;
};

struct ByFileName {
    int operator()(std::string_view key, const LibraryEntry &entry) const { return key.compare(entry.fileName); }
};

struct LibraryTable {
    sync::Mutex mutex;
    int32_t useCount = 0;  // starts not yet matched by a stop
    containers::Tree<LibraryEntry, std::string_view, ByFileName> libraries;
};

// The table is never destroyed: at process exit the C++ destructors run
// before the library's unload destructor, whose module stop still needs the
// mutex and the tree. That stop unloads the libraries.
union LastingTable {
    constexpr LastingTable() : table() {}
    ~LastingTable() {}
    LibraryTable table;
};
constinit LastingTable lasting;
LibraryTable &table = lasting.table;
std::atomic<SymbolLookup> symbolLookup{&linkToExport};

// Loads file and adds its entry, with no users yet; null when either fails.
LibraryEntry *addLibrary(const char *file) noexcept
{
    OwnedLibrary library(loadLibrary(file));
    if (!library)
        return nullptr;
    const std::string_view name(file);
    return table.libraries.emplace(name, name, std::move(library)).item;
}

// Lists user once; false when memory runs out.
bool addUser(LibraryEntry &entry, std::string_view user) noexcept
{
    if (entry.users.find(user) != nullptr)
        return true;
    if (entry.users.emplace(user, user).item == nullptr)
        return false;
    ++entry.userCount;
    return true;
}

void *resolve(LibraryEntry &entry, const char *symbol) noexcept
{
    const std::string_view name(symbol);
    if (const Symbol *kept = entry.symbols.find(name))
        return kept->address;
    void *address = symbolLookup.load(std::memory_order_relaxed)(entry.library.get(), symbol);
    // A symbol that cannot be kept for want of memory is still good to hand out.
    if (address != nullptr)
        entry.symbols.emplace(name, name, address);
    return address;
}

}  // namespace

bool startLibraryTable() noexcept
{
    const sync::Guard hold(table.mutex);
    ++table.useCount;
    return true;
}

void stopLibraryTable() noexcept
{
    const sync::Guard hold(table.mutex);
    if (table.useCount > 0 && --table.useCount == 0)
        table.libraries.clear();
}

void *linkShared(const char *user, const char *file, const char *symbol) noexcept
{
    if (user == nullptr || file == nullptr)
        return nullptr;
    const sync::Guard hold(table.mutex);
    if (table.useCount < 1)
        return nullptr;
    LibraryEntry *entry = table.libraries.find(file);
    if (entry == nullptr && (entry = addLibrary(file)) == nullptr)
        return nullptr;
    if (!addUser(*entry, user)) {
        // A library just loaded for this user has nobody else to keep it.
        if (entry->userCount < 1)
            table.libraries.erase(file);
        return nullptr;
    }
    if (symbol == nullptr)
        return entry->library.get();
    return resolve(*entry, symbol);
}

int32_t unloadShared(const char *user, const char *file) noexcept
{
    if (user == nullptr || file == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    const sync::Guard hold(table.mutex);
    if (table.useCount < 1)
        return SM_STATUS_SUCCESS;
    LibraryEntry *entry = table.libraries.find(file);
    if (entry == nullptr)
        return SM_STATUS_SUCCESS;
    if (entry->users.find(user) != nullptr && entry->users.erase(user) != SM_STATUS_SUCCESS)
        return SM_STATUS_FAILURE;
    if (--entry->userCount >= 1)
        return SM_STATUS_SUCCESS;
    SMLibrary *library = entry->library.release();
    table.libraries.erase(file);
    return closeOwnedLibrary(library);
}

SymbolLookup replaceSymbolLookup(SymbolLookup lookup) noexcept
{
    return symbolLookup.exchange(lookup);
}

}  // namespace zksupt::os
