/* SDO: the typed property set (entries kept in ascending 16-bit ID order, each with a
 * type byte), its flat binary object "SDOB" and the binary array "SDAB" of objects.
 * Binary forms are in host byte order without padding. Nothing here locks: callers
 * serialise access to one object. */
#ifndef ZKSUPT_SDO_H
#define ZKSUPT_SDO_H

#include <zksupt/types.h>

ZKSUPT_BEGIN_DECLS

/* An SDO configuration object; created by SMSDOConfigAlloc, freed by SMSDOConfigFree. */
typedef struct SDOConfig SDOConfig;

/* Walk: once per object or array before its contents; index is -1 unless it is an array element. */
typedef int32_t (*SDOBinaryWalkBegin)(void *context, uint32_t parentCookie, uint16_t isArray, uint32_t count,
                                      int32_t index, const void *block);
/* Walk: once per entry; the callback may store a value in the entry's cookie cell (0 on entry). */
typedef int32_t (*SDOBinaryWalkEntry)(void *context, uint32_t *cookie, uint16_t id, uint8_t bits76, uint8_t bit5,
                                      uint8_t bit4, uint8_t baseType, uint32_t length, const void *value);
/* Walk: after each entry and its nested walk, with the entry's cookie. */
typedef int32_t (*SDOBinaryWalkAfterEntry)(void *context, uint32_t cookie);
/* Walk: once per object or array after its contents. */
typedef int32_t (*SDOBinaryWalkEnd)(void *context, uint32_t parentCookie, uint16_t isArray);

/* A new empty object (binary size 8), or null when memory is exhausted. */
ZKSUPT_API SDOConfig *SMSDOConfigAlloc(void) ZKSUPT_NOEXCEPT;
/* Frees the object with every entry and nested object; null is ignored. */
ZKSUPT_API void SMSDOConfigFree(SDOConfig *config) ZKSUPT_NOEXCEPT;
/* Number of entries; 0xFFFFFFFF for null. */
ZKSUPT_API uint32_t SMSDOConfigGetCount(const SDOConfig *config) ZKSUPT_NOEXCEPT;
/* Bytes the binary form needs as the object accounts them; 0 for null. */
ZKSUPT_API uint32_t SMSDOConfigGetBinarySize(const SDOConfig *config) ZKSUPT_NOEXCEPT;
/* Recomputes the binary size by the older sum (values charged whole, no array headers); 0 for null. */
ZKSUPT_API uint32_t SMSDOConfigReCalcBinarySize(SDOConfig *config) ZKSUPT_NOEXCEPT;
/* Adds a copy of the value (replace 1: replaces); for type 13 value is the child handle, owned from then on. */
ZKSUPT_API int32_t SMSDOConfigAddData(SDOConfig *config, uint16_t id, uint8_t type, const void *value, uint32_t size,
                                      int32_t replace) ZKSUPT_NOEXCEPT;
/* Copies the value of an ID out: 0, 0x10 (needed size in *size), 0x100 or 0x10F. */
ZKSUPT_API int32_t SMSDOConfigGetDataByID(const SDOConfig *config, uint16_t id, uint8_t *type, void *buffer,
                                          uint32_t *size) ZKSUPT_NOEXCEPT;
/* Copies the value at an index in ID order out: 0, 0x10, 0x0C, 0x100 or 0x10F. */
ZKSUPT_API int32_t SMSDOConfigGetDataByIndex(const SDOConfig *config, uint32_t index, uint16_t *id, uint8_t *type,
                                             void *buffer, uint32_t *size) ZKSUPT_NOEXCEPT;
/* Removes the entry of a valid id, else the one at index, or every entry: 0, 0x0C, 0x100 or 0x10F. */
ZKSUPT_API int32_t SMSDOConfigRemoveData(SDOConfig *config, uint16_t id, uint32_t index,
                                         int32_t removeAll) ZKSUPT_NOEXCEPT;
/* A deep copy made through the binary form, or null. */
ZKSUPT_API SDOConfig *SMSDOConfigClone(const SDOConfig *config) ZKSUPT_NOEXCEPT;
/* 1 when both objects have the same binary form (or both are null), else 0. */
ZKSUPT_API int32_t SMSDOConfigCompareByValue(const SDOConfig *a, const SDOConfig *b) ZKSUPT_NOEXCEPT;
/* Writes the binary object: 0, 0x10, 0x10F, or -1 when the bytes written differ from the binary size. */
ZKSUPT_API int32_t SMSDOConfigToBinary(const SDOConfig *config, void *buffer, uint32_t *size) ZKSUPT_NOEXCEPT;
/* A new object read from a binary object, or null. */
ZKSUPT_API SDOConfig *SMSDOBinaryToConfig(const void *binary) ZKSUPT_NOEXCEPT;

/* Count from a binary object's or array's header (*isArray 1 for an array); 0xFFFFFFFF when invalid. */
ZKSUPT_API uint32_t SMSDOBinaryGetCount(const void *binary, uint16_t *isArray) ZKSUPT_NOEXCEPT;
/* Total size from a binary object's or array's header; 0 when invalid. */
ZKSUPT_API uint32_t SMSDOBinaryGetSize(const void *binary, uint16_t *isArray) ZKSUPT_NOEXCEPT;
/* Binary search by ID; inline values are reported as their 4 slot bytes: 0, 0x10, 0x100, 0x101, 0x10F. */
ZKSUPT_API int32_t SMSDOBinaryGetDataByID(const void *binary, uint16_t id, uint8_t *type, void *buffer,
                                          uint32_t *size) ZKSUPT_NOEXCEPT;
/* The value at a slot index: 0, 0x0C, 0x10, 0x101 or 0x10F. */
ZKSUPT_API int32_t SMSDOBinaryGetDataByIndex(const void *binary, uint32_t index, uint16_t *id, uint8_t *type,
                                             void *buffer, uint32_t *size) ZKSUPT_NOEXCEPT;
/* Updates an existing entry of the same type, in place or by rebuilding within capacity *size. */
ZKSUPT_API int32_t SMSDOBinarySetData(void *binary, uint32_t *size, uint16_t id, uint8_t type, const void *value,
                                      uint32_t valueSize) ZKSUPT_NOEXCEPT;
/* Depth-first walk over a binary object or array; any callback may be null. */
ZKSUPT_API int32_t SMSDOBinaryWalk(const void *binary, void *context, SDOBinaryWalkBegin begin,
                                   SDOBinaryWalkEntry entry, SDOBinaryWalkAfterEntry afterEntry, SDOBinaryWalkEnd end,
                                   int32_t recurse) ZKSUPT_NOEXCEPT;

/* Writes an empty binary array header: 0, 0x10 or 0x10F. */
ZKSUPT_API int32_t SMSDOBinaryArrayInitHeader(void *buffer, uint32_t size) ZKSUPT_NOEXCEPT;
/* Appends a binary object to a binary array of capacity *capacity: 0, 0x10 or 0x10F. */
ZKSUPT_API int32_t SMSDOBinaryArrayAddData(void *array, uint32_t *capacity, const void *binary,
                                           uint32_t binarySize) ZKSUPT_NOEXCEPT;
/* Copies out the binary object at an index (arraySize is not read): 0, 0x10, 0x100, 0x101 or 0x10F. */
ZKSUPT_API int32_t SMSDOBinaryArrayGetByIndex(const void *array, uint32_t arraySize, uint32_t index, void *out,
                                              uint32_t *size) ZKSUPT_NOEXCEPT;
/* Writes the non-null objects as a binary array; *size gets the total (8 less for a null out). */
ZKSUPT_API int32_t SMSDOConfigArrayToBinaryArray(SDOConfig *const *configs, uint32_t n, void *out,
                                                 uint32_t *size) ZKSUPT_NOEXCEPT;
/* Converts each element of a binary array into a new object in configs (zeroed, *count slots). */
ZKSUPT_API int32_t SMSDOBinaryArrayToConfigArray(const void *array, SDOConfig **configs,
                                                 uint32_t *count) ZKSUPT_NOEXCEPT;

ZKSUPT_END_DECLS

#endif /* ZKSUPT_SDO_H */
