// File names that carry the process ID under a product's directory.
#pragma once

#include <cstdint>

namespace zksupt::config {

// SMMakePathFileNameByPIDAndType: "<directory>/baseName.<pid>" where the
// product registry gives the directory of productID (-1 is the whole suite)
// and pathType; the path query's status when it has none. 0x10F for a null
// base name or size; 0x10 with the needed size for a null or small buffer.
int32_t pathByProcessIdAndType(uint32_t productID, uint32_t pathType, const char *baseName, char *buffer,
                               uint32_t *size) noexcept;

}  // namespace zksupt::config
