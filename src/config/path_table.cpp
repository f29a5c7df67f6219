#include "config/path_table.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <new>
#include <optional>

#include <zksupt/status.h>

#include "config/registry_file.h"
#include "frame/size_out.h"
#include "sync/mutex.h"

namespace zksupt::config {
namespace {

struct PathEntry {
    int32_t id = 0;
    std::array<std::optional<std::string>, kPathFieldCount> paths;
};
using PathTable = std::array<PathEntry, kProducts.size()>;

// Held while the table is read, freed or rebuilt.
sync::Mutex tableMutex;
// Guarded by tableMutex. Null while no table is loaded.
PathTable *table = nullptr;
// Guarded by tableMutex too: a library whose module did not start answers
// every query with "not found" and builds nothing.
bool started = false;

void removeTrailingSlash(std::string &path)
{
    if (!path.empty() && path.back() == '/')
        path.pop_back();
}

std::string_view lookup(const Registry &registry, const char *shortName, const char *suffix)
{
    std::string key = shortName;
    key += '.';
    key += suffix;
    return registry.find(key);
}

// An install path set in the environment: "<name>installpath" with the short
// name in lower case, then the whole variable name in upper case.
std::optional<std::string> installPathFromEnvironment(const char *shortName)
{
    std::string name = std::string(shortName) + "installpath";
    std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::tolower(c); });
    for (int attempt = 0; attempt < 2; ++attempt) {
        const char *value = std::getenv(name.c_str());
        if (value != nullptr && *value != '\0')
            return std::string(value);
        std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::toupper(c); });
    }
    return std::nullopt;
}

// Builds every product's entry. Allocation failure throws; the caller drops
// what was built.
void build(PathTable &entries)
{
    Registry registry;
    registry.load(registryFilePath());
    for (std::size_t row = 0; row < kProducts.size(); ++row) {
        const Product &product = kProducts[row];
        PathEntry &entry = entries[row];
        entry.id = product.id;
        std::string path;
        auto &install = entry.paths[static_cast<std::size_t>(PathField::install)];
        install = installPathFromEnvironment(product.shortName);
        if (!install && registryPath(registry, product.id, PathField::install, path) == SM_STATUS_SUCCESS)
            install = path;
        for (const PathField field :
             {PathField::bin, PathField::ini, PathField::varData, PathField::log, PathField::configTool}) {
            auto &slot = entry.paths[static_cast<std::size_t>(field)];
            if (registryPath(registry, product.id, field, path) == SM_STATUS_SUCCESS)
                slot = path;
            else
                slot = install;
        }
    }
}

void freeTable() noexcept
{
    delete table;
    table = nullptr;
}

// Loads a fresh table; on failure none stays loaded. Called under the lock.
bool loadTable() noexcept
{
    freeTable();
    auto *fresh = new (std::nothrow) PathTable;
    if (fresh == nullptr)
        return false;
    try {
        build(*fresh);
    } catch (const std::bad_alloc &) {
        delete fresh;
        return false;
    }
    table = fresh;
    return true;
}

// One lookup in the loaded table.
int32_t find(int32_t id, PathField field, char *buffer, uint32_t *size) noexcept
{
    const auto entry = std::find_if(table->begin(), table->end(), [id](const PathEntry &e) { return e.id == id; });
    if (entry == table->end())
        return SM_STATUS_NOT_FOUND;
    const auto &path = entry->paths[static_cast<std::size_t>(field)];
    if (!path)
        return SM_STATUS_NOT_FOUND;
    if (::access(path->c_str(), F_OK) != 0)
        return SM_STATUS_BAD_OBJECT;
    // A null buffer asks only for the size, when the capacity would hold it.
    return frame::copyOutText(buffer, size, *path, frame::NullBuffer::capacityOnly);
}

}  // namespace

int32_t registryPath(const Registry &registry, int32_t id, PathField field, std::string &path)
{
    const char *shortName = shortNameOf(id);
    if (shortName == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    std::string_view value = lookup(registry, shortName, suffixOfField(field));
    bool parentOfProduct = false;
    if (value.empty() && id == kSuiteProduct) {
        // The suite's own directories default to its install directory, or
        // failing that to the parent of a product's install directory,
        // whatever kind was asked for.
        const char *installPath = suffixOfField(PathField::install);
        value = lookup(registry, "tarn", installPath);
        for (const char *product : {"Lodestar", "Meridian"}) {
            if (!value.empty())
                break;
            value = lookup(registry, product, installPath);
            parentOfProduct = true;
        }
    }
    if (value.empty())
        return SM_STATUS_NOT_FOUND;
    path.assign(value);
    if (parentOfProduct) {
        removeTrailingSlash(path);
        const std::size_t slash = path.rfind('/');
        if (slash != std::string::npos && slash != 0)
            path.resize(slash);
    }
    removeTrailingSlash(path);
    return SM_STATUS_SUCCESS;
}

bool startPathTable() noexcept
{
    const sync::Guard lock(tableMutex);
    started = true;
    return table != nullptr || loadTable();
}

void stopPathTable() noexcept
{
    const sync::Guard lock(tableMutex);
    started = false;
    freeTable();
}

int32_t pathByProductAndType(int32_t id, uint32_t kind, char *buffer, uint32_t *size) noexcept
{
    if (size == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    if (buffer != nullptr)
        *buffer = '\0';
    const std::optional<PathField> field = fieldOfKind(kind);
    if (!field) {
        *size = 0;
        return SM_STATUS_INVALID_PARAMETER;
    }
    const uint32_t capacity = *size;
    const sync::Guard lock(tableMutex);
    int32_t status = table != nullptr ? find(id, *field, buffer, size) : SM_STATUS_NOT_FOUND;
    if (status == SM_STATUS_NOT_FOUND && started) {
        // A miss may mean the registry changed since the table was built.
        loadTable();
        if (buffer != nullptr)
            *buffer = '\0';
        *size = capacity;
        status = table != nullptr ? find(id, *field, buffer, size) : SM_STATUS_NOT_FOUND;
    }
    if (status != SM_STATUS_SUCCESS && status != SM_STATUS_BUFFER_TOO_SMALL)
        *size = 0;
    return status;
}

}  // namespace zksupt::config
