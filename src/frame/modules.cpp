// The library's modules in their start order. This table is the one place
// that names every subsystem's start and stop; a subsystem joins the library
// by filling its slot with its two functions in place of notBuiltYet.
#include "config/path_table.h"
#include "config/registry_file.h"
#include "digest/crc32.h"
#include "format/engine_lock.h"
#include "frame/lifecycle.h"
#include "ipc/critical_section.h"
#include "ipc/registry.h"
#include "lock/file_lock.h"
#include "log/limits.h"
#include "net/module.h"
#include "os/library_table.h"

#include <array>

namespace zksupt::frame {
namespace {

// Module 1 picks the registry file, then makes the file-lock table ready.
// Without a registry file nothing else can start.
bool startRegistryAndFileLocks()
{
    return config::chooseRegistryFile() && lock::startFileLocks();
}

// Frees the file-lock table. The chosen registry file is kept; the next
// first attach chooses again.
void stopRegistryAndFileLocks()
{
    lock::stopFileLocks();
}

constexpr std::array<Module, 9> kModules{{
    {"registry file and file locks", startRegistryAndFileLocks, stopRegistryAndFileLocks},
    {"product install paths", config::startPathTable, config::stopPathTable},
    {"network", net::startNetwork, net::stopNetwork},
    {"IPC name registry", ipc::startRegistry, ipc::stopRegistry},
    {"critical sections", ipc::startCriticalSections, ipc::stopCriticalSections},
    {"event log", log::startLogLimits, log::stopLogLimits},
    {"format engine", format::startEngine, format::stopEngine},
    {"dynamic-library table", os::startLibraryTable, os::stopLibraryTable},
    {"CRC-32 table", digest::startCrcTable, digest::stopCrcTable},
}};

}  // namespace

Lifecycle &library()
{
    static Lifecycle lifecycle{kModules};
    return lifecycle;
}

int16_t unloading()
{
    return library().unloading();
}

}  // namespace zksupt::frame
