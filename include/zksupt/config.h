/* Configuration: the product registry and install paths, the INI file engine, property files, string tables by ID
 * and the language of the process. */
#ifndef ZKSUPT_CONFIG_H
#define ZKSUPT_CONFIG_H

#include <zksupt/types.h>

ZKSUPT_BEGIN_DECLS

/* One row of an enumeration table: a word, its value, and a word the engine does not read. */
typedef struct SMEnumRow {
    const char *word;
    uint32_t value;
    uint32_t reserved;
} SMEnumRow;

/* Copies the directory of a path kind (2 install, 4 var-data, 8 log, 16 config tool, 32 install, 64 ini, 128 bin) of a
 * product; *size in/out. */
ZKSUPT_API int32_t SMGetPathByProductIDandType(int32_t productID, uint32_t kind, char *buffer,
                                               uint32_t *size) ZKSUPT_NOEXCEPT;
/* Copies the install path of product 35; *size in/out. */
ZKSUPT_API int32_t SMGetInstallPath(char *buffer, uint32_t *size) ZKSUPT_NOEXCEPT;
/* Copies the install path of a product; *size in/out. */
ZKSUPT_API int32_t SMGetInstallPathByProductID(int32_t productID, char *buffer, uint32_t *size) ZKSUPT_NOEXCEPT;
/* Copies input with its first "@qvinstallpath@" (any case) replaced by the suite's install path; *size in/out. */
ZKSUPT_API int32_t SMExpandQvInstallPathString(const char *input, char *buffer, uint32_t *size) ZKSUPT_NOEXCEPT;
/* The product ID of a short name compared without case; 0 when null or unknown. */
ZKSUPT_API int32_t SMProductSIDToID(const char *shortName) ZKSUPT_NOEXCEPT;
/* A new copy of the product's short name (free with SMFreeMem), or null for an unknown ID. */
ZKSUPT_API char *SMProductIDToSID(int32_t productID) ZKSUPT_NOEXCEPT;

/* Reads one value of a type (1-9) from the INI file at path; type 1 with a null section or key lists names. */
ZKSUPT_API int32_t SMReadINIPathFileValue(const char *section, const char *key, uint32_t type, void *value,
                                          uint32_t *size, const void *defaultValue, uint32_t defaultSize,
                                          const char *path, int16_t lockWait) ZKSUPT_NOEXCEPT;
/* Writes, replaces or deletes (null value, size 0) one value, or deletes a section (type 1, null key). */
ZKSUPT_API int32_t SMWriteINIPathFileValue(const char *section, const char *key, uint32_t type, const void *value,
                                           uint32_t size, const char *path, int16_t lockWait) ZKSUPT_NOEXCEPT;
/* As SMReadINIPathFileValue on a bare file name in the "ini" directory of product 35's ini path. */
ZKSUPT_API int32_t SMReadINIFileValue(const char *section, const char *key, uint32_t type, void *value, uint32_t *size,
                                      const void *defaultValue, uint32_t defaultSize, const char *fileName,
                                      int16_t lockWait) ZKSUPT_NOEXCEPT;
/* As SMWriteINIPathFileValue on a bare file name in the "ini" directory of product 35's ini path. */
ZKSUPT_API int32_t SMWriteINIFileValue(const char *section, const char *key, uint32_t type, const void *value,
                                       uint32_t size, const char *fileName, int16_t lockWait) ZKSUPT_NOEXCEPT;
/* A new copy of a text value (free with SMFreeMem), or of the default; null otherwise; *size (may be null) its size or
 * 0. */
ZKSUPT_API char *SMReadINISectionKeyUTF8Value(const char *section, const char *key, const char *defaultValue,
                                              uint32_t *size, const char *path, int16_t lockWait) ZKSUPT_NOEXCEPT;
/* The value of the table row a text value names (multi 1: comma-separated words OR-ed); 0x80000000 for bad arguments.
 */
ZKSUPT_API uint32_t SMReadINIEnums32Value(const char *section, const char *key, const SMEnumRow *rows, uint32_t count,
                                          int32_t multi, const char *path, int16_t lockWait) ZKSUPT_NOEXCEPT;

/* Reads the value of the first line whose key selects key (a line key selects every key it begins: "p" selects
 * "port") as an SDO type code gives it (as SMXLTUTF8ToTypeValue), into buffer; *size in/out. A null key with type 13
 * lists the keys instead: NUL-terminated, one more NUL at the end. Statuses: 0x10F null size or path, 3 the file lock
 * was busy (lockWait other than 1 tries once), 0x104 file unreadable, 0x107 no such key (*size 0), 0x10 too small,
 * or the parse's. On any failure a default of at most the capacity is copied (*size its size); the status stays.
 * Takes the file's cross-process lock shared; safe from any thread. */
ZKSUPT_API int32_t SMPropertyFileReadValue(const char *key, uint32_t type, void *buffer, uint32_t *size,
                                           const void *defaultValue, uint32_t defaultSize, const char *path,
                                           int16_t lockWait) ZKSUPT_NOEXCEPT;
/* Replaces the first line whose key selects key, with the old value's continuation lines, by "key=text" (the value
 * as SMXLTTypeValueToUTF8 writes it) through a copy that takes the file's place. A key the file does not hold is not
 * added: the file is then replaced by an empty one. Statuses: 0x10F null key, value or path, 0x104 file unreadable,
 * 7 no temporary file, 0x13 the copy could not be written (the file stays as it was), -1 no temporary name, 0x110,
 * or the text form's. Takes the file's cross-process lock exclusively; safe from any thread. */
ZKSUPT_API int32_t SMPropertyFileWriteValue(const char *key, uint32_t type, const void *value, uint32_t valueSize,
                                            const char *path, int16_t lockWait) ZKSUPT_NOEXCEPT;

/* Copies the first line of string ID's text from the string table at path: key "%X:%X" of language and ID in the
 * section "MISCELLANEOUS STRING ID SECTION", or with language 0 in "ASCII EN_US DEFAULT STRING ID SECTION". A null
 * *languageID or 0, 437 or 1033 mean English; a string missing in another language falls back to English and sets
 * *languageID to 0. Returns the bytes copied with the NUL, also stored in *size, or 0 when the string is missing or
 * does not fit (a size query too). A null path gives the text "Invalid Path File Name". Takes the table's file lock
 * shared; safe from any thread. */
ZKSUPT_API uint32_t SMGetUTF8StrFromIDPathFile(uint32_t stringID, uint32_t *languageID, const char *path, char *buffer,
                                               uint32_t *size) ZKSUPT_NOEXCEPT;
/* As SMGetUTF8StrFromIDPathFile on the suite's zksdst32.ini, as UCS-2, after IDs in the OEM range of zkisdy32.ini
 * (read once per process) are moved by its offset. Returns, and stores in *size: the bytes converted; the bytes
 * needed when *size is below twice the UTF-8 size; that UTF-8 size when buffer or size is null; or 0. */
ZKSUPT_API uint32_t SMGetUCS2StrFromID(uint32_t stringID, uint32_t *languageID, ucs2 *buffer,
                                       uint32_t *size) ZKSUPT_NOEXCEPT;
/* The language of the process from LANG, without codeset and modifier ("de_DE" of "de_DE.UTF-8"): its code (1031
 * German, 2057 en_GB, ...), else the code of its first two letters; 1033 when LANG is unset, empty, "C", "POSIX" or
 * unknown. Case-sensitive; LANG is read on every call, safely while no thread changes the environment. */
ZKSUPT_API uint32_t SMGetLocalLanguageID(void) ZKSUPT_NOEXCEPT;
/* Copies the first existing path of directory/ll_CC/fileName, directory/ll/fileName and directory/fileName, ll_CC and
 * ll being LANG without codeset and modifier and its first two letters (only the last path without a language; a
 * directory of that name does not count); *size in/out. Statuses: 0, 0x100 none exists, 0x10 with the needed size
 * (a null buffer too), 0x10F null directory, file name or size. */
ZKSUPT_API int32_t SMGetLocalizedPathFileName(const char *directory, const char *fileName, char *buffer,
                                              uint32_t *size) ZKSUPT_NOEXCEPT;

ZKSUPT_END_DECLS

#endif /* ZKSUPT_CONFIG_H */
