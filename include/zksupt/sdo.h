/**
 * @file
 * SDO: the typed property set, its flat binary object "SDOB" and the binary array "SDAB" of objects.
 *
 * An object holds entries in ascending order of their 16-bit ID (1 to 0xFFFD; 0, 0xFFFE and 0xFFFF are refused),
 * each with a type byte: the base type in bits 0-3, the array flag 0x10, and the attribute bits 0x20 and 0xC0,
 * which are stored and reported but never interpreted. The object copies every value it is given. Base type 13 is
 * a nested object: the value is one SDOConfig handle (four or eight bytes, the size of a pointer), or with the array
 * flag that many handles; the parent owns them from then on and frees them with itself or with the entry. Base type
 * 12 given to SMSDOConfigAddData() must be a binary object or array and becomes a nested entry; in the binary form a
 * nested entry is written as base type 12.
 *
 * @warning Inside an SDO, type 13 means a nested object. The type/value text of xlt.h uses the same code 13 for a
 * UTF-8 string: a string stored in an SDO under base type 13 would be taken for an object handle.
 *
 * Binary forms are in host byte order without padding; sizes and offsets in them are 16 bits, so an object or array
 * stays below 64 KiB (#SM_STATUS_LIMIT_REACHED beyond). Buffers with an in/out size take the capacity in bytes and
 * return the bytes written, or the bytes needed with #SM_STATUS_BUFFER_TOO_SMALL.
 *
 * Nothing here locks: callers serialise access to one object. Different objects may be used from different threads.
 */
#ifndef ZKSUPT_SDO_H
#define ZKSUPT_SDO_H

#include <zksupt/types.h>

ZKSUPT_BEGIN_DECLS

/** An SDO configuration object; created by SMSDOConfigAlloc() or SMSDOBinaryToConfig(), freed by SMSDOConfigFree(). */
typedef struct SDOConfig SDOConfig;

/**
 * Walk callback: once per object or array before its contents.
 * @param parentCookie the cookie of the entry holding it (0 at the top).
 * @param index -1 unless the object is an element of an array.
 * @return 0 to go on; any other value stops the walk, which returns it.
 */
typedef int32_t (*SDOBinaryWalkBegin)(void *context, uint32_t parentCookie, uint16_t isArray, uint32_t count,
                                      int32_t index, const void *block);
/**
 * Walk callback: once per entry, with its type byte split into its fields; the callback may store a value in the
 * entry's cookie cell (0 on entry), passed to the nested walk and to the after-entry callback. Nonzero stops the walk.
 */
typedef int32_t (*SDOBinaryWalkEntry)(void *context, uint32_t *cookie, uint16_t id, uint8_t bits76, uint8_t bit5,
                                      uint8_t bit4, uint8_t baseType, uint32_t length, const void *value);
/** Walk callback: after each entry and its nested walk, with the entry's cookie. Nonzero stops the walk. */
typedef int32_t (*SDOBinaryWalkAfterEntry)(void *context, uint32_t cookie);
/** Walk callback: once per object or array after its contents; what it returns is the walk's result there. */
typedef int32_t (*SDOBinaryWalkEnd)(void *context, uint32_t parentCookie, uint16_t isArray);

/** A new empty object (binary size 8), or null when memory is exhausted; free it with SMSDOConfigFree(). */
ZKSUPT_API SDOConfig *SMSDOConfigAlloc(void) ZKSUPT_NOEXCEPT;
/** Frees the object with every entry and nested object; null is ignored. */
ZKSUPT_API void SMSDOConfigFree(SDOConfig *config) ZKSUPT_NOEXCEPT;
/** Number of entries; 0xFFFFFFFF for null. */
ZKSUPT_API uint32_t SMSDOConfigGetCount(const SDOConfig *config) ZKSUPT_NOEXCEPT;
/** Bytes the binary form needs as the object accounts them (kept up to date by every change); 0 for null. */
ZKSUPT_API uint32_t SMSDOConfigGetBinarySize(const SDOConfig *config) ZKSUPT_NOEXCEPT;
/**
 * Recomputes the binary size by the older sum, which charges every value whole and leaves out nested arrays'
 * headers, stores it in the object and returns it; 0 for null.
 * @warning Afterwards the accounted size may differ from what SMSDOConfigToBinary() writes, which then fails.
 */
ZKSUPT_API uint32_t SMSDOConfigReCalcBinarySize(SDOConfig *config) ZKSUPT_NOEXCEPT;
/**
 * Adds a copy of a value under an ID.
 * @param type the type byte; 0 is refused. For base type 13 value holds the child handle(s), owned by the object
 * from then on; for base type 12 it must be a binary object or array, which is read into nested objects.
 * @param replace 1 replaces an entry of the same ID (freeing its nested objects); otherwise such an entry gives
 * #SM_STATUS_DUPLICATE.
 * @return #SM_STATUS_SUCCESS; #SM_STATUS_INVALID_PARAMETER for a null object or value, size 0, type 0, a refused ID
 * or an unreadable nested value; #SM_STATUS_LIMIT_REACHED at 65535 entries or when the binary form would reach 64
 * KiB; #SM_STATUS_DUPLICATE; #SM_STATUS_NO_MEMORY.
 */
ZKSUPT_API int32_t SMSDOConfigAddData(SDOConfig *config, uint16_t id, uint8_t type, const void *value, uint32_t size,
                                      int32_t replace) ZKSUPT_NOEXCEPT;
/**
 * Copies the value of an ID out (for a nested entry, the child handles, still owned by the object).
 * @param type receives the type byte; may be null.
 * @param size in: the capacity of buffer; out: the value's size, or the size needed.
 * @return #SM_STATUS_SUCCESS, #SM_STATUS_BUFFER_TOO_SMALL, #SM_STATUS_NOT_FOUND, or #SM_STATUS_INVALID_PARAMETER for
 * a null object or size or a refused ID.
 */
ZKSUPT_API int32_t SMSDOConfigGetDataByID(const SDOConfig *config, uint16_t id, uint8_t *type, void *buffer,
                                          uint32_t *size) ZKSUPT_NOEXCEPT;
/**
 * Copies out the value at an index in ID order, as SMSDOConfigGetDataByID(); id receives its ID.
 * @return as SMSDOConfigGetDataByID(), and #SM_STATUS_NOT_PRESENT for an index past the last entry.
 */
ZKSUPT_API int32_t SMSDOConfigGetDataByIndex(const SDOConfig *config, uint32_t index, uint16_t *id, uint8_t *type,
                                             void *buffer, uint32_t *size) ZKSUPT_NOEXCEPT;
/**
 * Removes and frees the entry of a valid id, else the one at index; a nonzero removeAll empties the object (binary size
 * 8) without freeing it.
 * @return #SM_STATUS_SUCCESS, #SM_STATUS_NOT_PRESENT (index), #SM_STATUS_NOT_FOUND (ID) or
 * #SM_STATUS_INVALID_PARAMETER.
 */
ZKSUPT_API int32_t SMSDOConfigRemoveData(SDOConfig *config, uint16_t id, uint32_t index,
                                         int32_t removeAll) ZKSUPT_NOEXCEPT;
/** A deep copy made through the binary form (free with SMSDOConfigFree()), or null. */
ZKSUPT_API SDOConfig *SMSDOConfigClone(const SDOConfig *config) ZKSUPT_NOEXCEPT;
/** 1 when both objects have the same binary form (or both are null), else 0. */
ZKSUPT_API int32_t SMSDOConfigCompareByValue(const SDOConfig *a, const SDOConfig *b) ZKSUPT_NOEXCEPT;
/**
 * Writes the binary object; nothing is written past the capacity.
 * @param size in: the capacity of buffer; out: the bytes written, or needed.
 * @return #SM_STATUS_SUCCESS, #SM_STATUS_BUFFER_TOO_SMALL, #SM_STATUS_INVALID_PARAMETER, or #SM_STATUS_FAILURE when
 * the bytes written differ from the accounted binary size (see SMSDOConfigReCalcBinarySize()).
 */
ZKSUPT_API int32_t SMSDOConfigToBinary(const SDOConfig *config, void *buffer, uint32_t *size) ZKSUPT_NOEXCEPT;
/** A new object read from a binary object (free with SMSDOConfigFree()), or null when it is not a valid one. */
ZKSUPT_API SDOConfig *SMSDOBinaryToConfig(const void *binary) ZKSUPT_NOEXCEPT;

/** Count from a binary object's or array's header; *isArray (may be null) gets 1 for an array; 0xFFFFFFFF when invalid.
 */
ZKSUPT_API uint32_t SMSDOBinaryGetCount(const void *binary, uint16_t *isArray) ZKSUPT_NOEXCEPT;
/** Total size from a binary object's or array's header; 0 when invalid. */
ZKSUPT_API uint32_t SMSDOBinaryGetSize(const void *binary, uint16_t *isArray) ZKSUPT_NOEXCEPT;
/**
 * Finds an ID in a binary object by binary search and copies its value out; a value kept inside its slot (four
 * bytes or fewer) is reported as its 4 slot bytes.
 * @return #SM_STATUS_SUCCESS, #SM_STATUS_BUFFER_TOO_SMALL (needed size in *size), #SM_STATUS_NOT_FOUND,
 * #SM_STATUS_BAD_OBJECT for a block that is not a valid binary object, #SM_STATUS_INVALID_PARAMETER.
 */
ZKSUPT_API int32_t SMSDOBinaryGetDataByID(const void *binary, uint16_t id, uint8_t *type, void *buffer,
                                          uint32_t *size) ZKSUPT_NOEXCEPT;
/**
 * Copies out the value at a slot index of a binary object.
 * @return #SM_STATUS_SUCCESS, #SM_STATUS_NOT_PRESENT, #SM_STATUS_BUFFER_TOO_SMALL, #SM_STATUS_BAD_OBJECT or
 * #SM_STATUS_INVALID_PARAMETER.
 */
ZKSUPT_API int32_t SMSDOBinaryGetDataByIndex(const void *binary, uint32_t index, uint16_t *id, uint8_t *type,
                                             void *buffer, uint32_t *size) ZKSUPT_NOEXCEPT;
/**
 * Updates an existing entry of the same type byte in a binary object: in place when the new value takes the old
 * one's room, else by rebuilding the object within the capacity.
 * @param size in: the capacity of binary; out: the object's size afterwards.
 * @return #SM_STATUS_SUCCESS; #SM_STATUS_NOT_FOUND when no entry has that ID and type; #SM_STATUS_BUFFER_TOO_SMALL;
 * #SM_STATUS_INVALID_PARAMETER for null arguments, type 0 or a malformed object; or SMSDOConfigAddData()'s status.
 */
ZKSUPT_API int32_t SMSDOBinarySetData(void *binary, uint32_t *size, uint16_t id, uint8_t type, const void *value,
                                      uint32_t valueSize) ZKSUPT_NOEXCEPT;
/**
 * Walks a binary object or array depth first, calling the callbacks (any may be null); recurse 1 also walks nested
 * objects and arrays.
 * @return #SM_STATUS_SUCCESS, the first nonzero callback result, or #SM_STATUS_INVALID_PARAMETER for a malformed
 * block.
 */
ZKSUPT_API int32_t SMSDOBinaryWalk(const void *binary, void *context, SDOBinaryWalkBegin begin,
                                   SDOBinaryWalkEntry entry, SDOBinaryWalkAfterEntry afterEntry, SDOBinaryWalkEnd end,
                                   int32_t recurse) ZKSUPT_NOEXCEPT;

/**
 * Writes an empty binary array header (8 bytes) into a buffer of size bytes.
 * @return #SM_STATUS_SUCCESS, #SM_STATUS_BUFFER_TOO_SMALL or #SM_STATUS_INVALID_PARAMETER.
 */
ZKSUPT_API int32_t SMSDOBinaryArrayInitHeader(void *buffer, uint32_t size) ZKSUPT_NOEXCEPT;
/**
 * Appends a binary object to a binary array held in a buffer of *capacity bytes.
 * @return #SM_STATUS_SUCCESS, #SM_STATUS_BUFFER_TOO_SMALL or #SM_STATUS_INVALID_PARAMETER.
 */
ZKSUPT_API int32_t SMSDOBinaryArrayAddData(void *array, uint32_t *capacity, const void *binary,
                                           uint32_t binarySize) ZKSUPT_NOEXCEPT;
/**
 * Copies out the binary object at an index of a binary array (arraySize is not read).
 * @return #SM_STATUS_SUCCESS, #SM_STATUS_BUFFER_TOO_SMALL, #SM_STATUS_NOT_FOUND for an index past the last,
 * #SM_STATUS_BAD_OBJECT or #SM_STATUS_INVALID_PARAMETER.
 */
ZKSUPT_API int32_t SMSDOBinaryArrayGetByIndex(const void *array, uint32_t arraySize, uint32_t index, void *out,
                                              uint32_t *size) ZKSUPT_NOEXCEPT;
/**
 * Writes the non-null objects of configs as a binary array.
 * @param out the buffer; null asks for the size.
 * @param size in: the capacity of out; out: the total size, 8 less (without the array header) for a null out.
 * @return #SM_STATUS_SUCCESS, #SM_STATUS_BUFFER_TOO_SMALL, #SM_STATUS_INVALID_PARAMETER for null configs or size, or
 * an object's serialisation status.
 */
ZKSUPT_API int32_t SMSDOConfigArrayToBinaryArray(SDOConfig *const *configs, uint32_t n, void *out,
                                                 uint32_t *size) ZKSUPT_NOEXCEPT;
/**
 * Reads each element of a binary array into a new object in configs; the caller frees each with SMSDOConfigFree().
 * @param count in: the slots of configs; out: the elements (also with #SM_STATUS_BUFFER_TOO_SMALL).
 * @return #SM_STATUS_SUCCESS; #SM_STATUS_BUFFER_TOO_SMALL; #SM_STATUS_BAD_OBJECT for a block that is no binary
 * array or an element that is no object; #SM_STATUS_FAILURE when an element cannot be read (the objects made are
 * then freed and their slots cleared); #SM_STATUS_INVALID_PARAMETER.
 */
ZKSUPT_API int32_t SMSDOBinaryArrayToConfigArray(const void *array, SDOConfig **configs,
                                                 uint32_t *count) ZKSUPT_NOEXCEPT;

ZKSUPT_END_DECLS

#endif /* ZKSUPT_SDO_H */
