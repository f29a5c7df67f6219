// The process-wide table of every product's directories: built at attach
// (module 2), answered from by the path queries, rebuilt when a query misses.
#pragma once

#include <cstdint>
#include <string>

#include "config/products.h"
#include "config/registry_reader.h"

namespace zksupt::config {

// Module 2: builds the table from the chosen registry file. False only when
// memory runs out. The stop frees it.
bool startPathTable() noexcept;
void stopPathTable() noexcept;

// The directory of one kind of one product (SMGetPathByProductIDandType).
// buffer may be null to ask for the size; *size is the capacity on entry and
// the path's size with its terminator on return (0 after failures other
// than 0x10).
int32_t pathByProductAndType(int32_t id, uint32_t kind, char *buffer, uint32_t *size) noexcept;

// The registry's answer for one product and field, with the suite's fallback
// chain (product -1 falls back to the install paths of tarn, Lodestar and
// Meridian, the last two cut to their parent directory) and one trailing '/'
// removed: 0, 0x100 when missing, 0x10F for an unknown product.
int32_t registryPath(const Registry &registry, int32_t id, PathField field, std::string &path);

}  // namespace zksupt::config
