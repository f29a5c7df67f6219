// The binary forms as the rest of the SDO uses them: writing an object,
// reading one back, lookups and in-place updates, the walk, and arrays.
// Functions taking a limit read at most that many bytes of their input
// (nested blocks are bounded by the value that holds them).
#pragma once

#include <zksupt/sdo.h>

#include <cstdint>

#include "sdo/layout.h"

namespace zksupt::sdo {

// writer.cpp
int32_t toBinary(const SDOConfig *config, void *buffer, uint32_t *size) noexcept;

// reader.cpp
SDOConfig *binaryToConfig(const void *binary, uint32_t limit = kLargestBlock) noexcept;
uint32_t binaryCount(const void *binary, uint16_t *isArray) noexcept;
uint32_t binarySize(const void *binary, uint16_t *isArray) noexcept;
int32_t binaryGetById(const void *binary, uint16_t id, uint8_t *type, void *buffer, uint32_t *size) noexcept;
int32_t binaryGetByIndex(const void *binary, uint32_t index, uint16_t *id, uint8_t *type, void *buffer,
                         uint32_t *size) noexcept;
int32_t binarySetData(void *binary, uint32_t *size, uint16_t id, uint8_t type, const void *value,
                      uint32_t valueSize) noexcept;

// walk.cpp
int32_t binaryWalk(const void *binary, void *context, SDOBinaryWalkBegin begin, SDOBinaryWalkEntry entry,
                   SDOBinaryWalkAfterEntry afterEntry, SDOBinaryWalkEnd end, int32_t recurse) noexcept;

// arrays.cpp
int32_t arrayInitHeader(void *buffer, uint32_t size) noexcept;
int32_t arrayAddData(void *array, uint32_t *capacity, const void *binary, uint32_t binarySize) noexcept;
int32_t arrayGetByIndex(const void *array, uint32_t index, void *out, uint32_t *size) noexcept;
int32_t configsToBinaryArray(SDOConfig *const *configs, uint32_t n, void *out, uint32_t *size) noexcept;
int32_t binaryArrayToConfigs(const void *array, SDOConfig **configs, uint32_t *count,
                             uint32_t limit = kLargestBlock) noexcept;

}  // namespace zksupt::sdo
