/**
 * @file
 * Configuration: the product registry and install paths, the INI file engine, property files, string tables by ID
 * and the language of the process.
 *
 * Paths of products come from the registry file the library chose when it was attached. Buffers with an in/out size
 * take the capacity in bytes and return the bytes written with the terminator, or the bytes needed with
 * #SM_STATUS_BUFFER_TOO_SMALL.
 *
 * INI and property files are shared between processes: every call holds the file's cross-process lock from its
 * first look at the file to its last, shared for reads and exclusive for writes, and a write replaces the file
 * through a copy, so a reader never sees half a change. A lockWait of 1 waits for the lock as long as it takes; any
 * other value tries once and gives #SM_STATUS_TIMEOUT when the lock is taken. Every function may be called from any
 * thread.
 *
 * INI value types: 1 UTF-8 text, 2 UCS-2 text (stored as its bytes), 3 bytes (stored as "0x01,0x0A"), 4 boolean
 * (uint16_t, "TRUE" or "FALSE"), 5 uint32_t, 6 int32_t, 7 uint64_t, 8 int64_t, 9 double.
 */
#ifndef ZKSUPT_CONFIG_H
#define ZKSUPT_CONFIG_H

#include <zksupt/types.h>

ZKSUPT_BEGIN_DECLS

/** One row of an enumeration table; row 0 is the answer for a word no other row names. */
typedef struct SMEnumRow {
    const char *word;  /**< the word, compared without case */
    uint32_t value;    /**< the value it stands for */
    uint32_t reserved; /**< not read */
} SMEnumRow;

/**
 * Copies the directory of a path kind of a product.
 * @param kind 2 install, 4 var-data, 8 log, 16 config tool, 32 install, 64 ini, 128 bin.
 * @param buffer null asks for the size.
 * @param size in: the capacity; out: the path's size with its terminator (0 after failures other than
 * #SM_STATUS_BUFFER_TOO_SMALL).
 * @return #SM_STATUS_SUCCESS, #SM_STATUS_BUFFER_TOO_SMALL, #SM_STATUS_NOT_FOUND when the registry has no such path,
 * #SM_STATUS_INVALID_PARAMETER for a null size, an unknown product or kind.
 */
ZKSUPT_API int32_t SMGetPathByProductIDandType(int32_t productID, uint32_t kind, char *buffer,
                                               uint32_t *size) ZKSUPT_NOEXCEPT;
/** Copies the install path of product 35, as SMGetPathByProductIDandType(). */
ZKSUPT_API int32_t SMGetInstallPath(char *buffer, uint32_t *size) ZKSUPT_NOEXCEPT;
/** Copies the install path of a product, as SMGetPathByProductIDandType(). */
ZKSUPT_API int32_t SMGetInstallPathByProductID(int32_t productID, char *buffer, uint32_t *size) ZKSUPT_NOEXCEPT;
/**
 * Copies input with its first "@qvinstallpath@" (any case) replaced by the suite's install path; *size in/out.
 * @return #SM_STATUS_SUCCESS, #SM_STATUS_BUFFER_TOO_SMALL, #SM_STATUS_INVALID_PARAMETER, or the path lookup's status.
 */
ZKSUPT_API int32_t SMExpandQvInstallPathString(const char *input, char *buffer, uint32_t *size) ZKSUPT_NOEXCEPT;
/** The product ID of a short name compared without case; 0 when null or unknown. */
ZKSUPT_API int32_t SMProductSIDToID(const char *shortName) ZKSUPT_NOEXCEPT;
/** A new copy of the product's short name (free with SMFreeMem()), or null for an unknown ID. */
ZKSUPT_API char *SMProductIDToSID(int32_t productID) ZKSUPT_NOEXCEPT;

/**
 * Reads one value of an INI type (1-9) from the INI file at path. Type 1 with a null section lists the sections,
 * with a null key the keys of the section: NUL-terminated names, one more NUL at the end.
 * @param value the buffer; *size its capacity in bytes on entry (at least the type's width), the bytes stored on
 * return.
 * @param defaultValue copied into value when the value cannot be read: text and bytes cut to the capacity, other
 * types only when defaultSize is at least their width; null or defaultSize 0 for none.
 * @return #SM_STATUS_SUCCESS; #SM_STATUS_BAD_ARGUMENT for a type outside 1-9, a null value or size, *size 0 or a
 * null or empty path; #SM_STATUS_TIMEOUT; #SM_STATUS_FILE_OPEN_FAILED; #SM_STATUS_SECTION_NOT_FOUND;
 * #SM_STATUS_KEY_NOT_FOUND; #SM_STATUS_BAD_SECTION_HEADER; #SM_STATUS_BUFFER_TOO_SMALL (no default is copied then);
 * #SM_STATUS_BAD_LENGTH or #SM_STATUS_FAILURE for a value that does not parse as its type.
 * @warning After any failure of the read itself but #SM_STATUS_BUFFER_TOO_SMALL (a missing file, section or key, a
 * busy lock, a value that does not parse) the default is copied into value, *size becomes its size, and the
 * failure's status is still returned: a nonzero status does not mean value is empty, and a missing key is not
 * reported as success even though the caller's default is in place.
 */
ZKSUPT_API int32_t SMReadINIPathFileValue(const char *section, const char *key, uint32_t type, void *value,
                                          uint32_t *size, const void *defaultValue, uint32_t defaultSize,
                                          const char *path, int16_t lockWait) ZKSUPT_NOEXCEPT;
/**
 * Writes or replaces one value, deletes it (null value, size 0), or deletes a section (type 1, null key); a missing
 * file or section is made.
 * @param size the value's bytes; for type 1 the text's length + 1 (at most 8193).
 * @return #SM_STATUS_SUCCESS; #SM_STATUS_BAD_ARGUMENT for a null section or path, a name above 255 bytes, a type
 * outside 1-9 or a path ending in '/'; #SM_STATUS_BAD_LENGTH for a size that does not fit the value;
 * #SM_STATUS_TIMEOUT; #SM_STATUS_FAILURE when the directory cannot be made; #SM_STATUS_NO_MEMORY; or a file error's
 * status.
 */
ZKSUPT_API int32_t SMWriteINIPathFileValue(const char *section, const char *key, uint32_t type, const void *value,
                                           uint32_t size, const char *path, int16_t lockWait) ZKSUPT_NOEXCEPT;
/** As SMReadINIPathFileValue() on a bare file name in the "ini" directory of product 35's ini path. */
ZKSUPT_API int32_t SMReadINIFileValue(const char *section, const char *key, uint32_t type, void *value, uint32_t *size,
                                      const void *defaultValue, uint32_t defaultSize, const char *fileName,
                                      int16_t lockWait) ZKSUPT_NOEXCEPT;
/** As SMWriteINIPathFileValue() on a bare file name in the "ini" directory of product 35's ini path. */
ZKSUPT_API int32_t SMWriteINIFileValue(const char *section, const char *key, uint32_t type, const void *value,
                                       uint32_t size, const char *fileName, int16_t lockWait) ZKSUPT_NOEXCEPT;
/**
 * Reads a text value of any length into a new copy (free with SMFreeMem()).
 * @param size receives the copy's size with its terminator, or 0; may be null.
 * @return the value; a copy of defaultValue when the value cannot be read; null when neither is there.
 */
ZKSUPT_API char *SMReadINISectionKeyUTF8Value(const char *section, const char *key, const char *defaultValue,
                                              uint32_t *size, const char *path, int16_t lockWait) ZKSUPT_NOEXCEPT;
/**
 * The value of the table row whose word a text value names, compared without case.
 * @param count rows in the table, at least 2.
 * @param multi 1: the value is comma-separated words whose rows' values are OR-ed.
 * @return the row's value; row 1's value when the value cannot be read, row 0's when no row names it; 0x80000000
 * for null arguments or count below 2.
 */
ZKSUPT_API uint32_t SMReadINIEnums32Value(const char *section, const char *key, const SMEnumRow *rows, uint32_t count,
                                          int32_t multi, const char *path, int16_t lockWait) ZKSUPT_NOEXCEPT;

/**
 * Reads the value of the first line whose key selects key (a line key selects every key it begins: "p" selects
 * "port"), as an SDO value type gives it (see SMXLTUTF8ToTypeValue()), into buffer; *size in/out. A null key with
 * type 13 lists the keys instead: NUL-terminated, one more NUL at the end.
 * @return #SM_STATUS_SUCCESS; #SM_STATUS_INVALID_PARAMETER for a null size or path; #SM_STATUS_TIMEOUT;
 * #SM_STATUS_FILE_OPEN_FAILED; #SM_STATUS_KEY_NOT_FOUND (*size 0); #SM_STATUS_BUFFER_TOO_SMALL; or the parse's
 * status.
 * @warning On any failure a default of at most the capacity is copied (*size its size), and the failure's status is
 * still returned.
 */
ZKSUPT_API int32_t SMPropertyFileReadValue(const char *key, uint32_t type, void *buffer, uint32_t *size,
                                           const void *defaultValue, uint32_t defaultSize, const char *path,
                                           int16_t lockWait) ZKSUPT_NOEXCEPT;
/**
 * Replaces the first line whose key selects key, with the old value's continuation lines, by "key=text" (the value
 * as SMXLTTypeValueToUTF8() writes it), through a copy that takes the file's place.
 * @warning A key the file does not hold is not added: the file is then replaced by an empty one.
 * @return #SM_STATUS_SUCCESS; #SM_STATUS_INVALID_PARAMETER for a null key, value or path; #SM_STATUS_TIMEOUT;
 * #SM_STATUS_FILE_OPEN_FAILED; #SM_STATUS_FILE_NOT_FOUND when no temporary file can be made;
 * #SM_STATUS_LIMIT_REACHED when the copy cannot be written (the file stays as it was); #SM_STATUS_FAILURE without a
 * temporary name; #SM_STATUS_NO_MEMORY; or the text form's status.
 */
ZKSUPT_API int32_t SMPropertyFileWriteValue(const char *key, uint32_t type, const void *value, uint32_t valueSize,
                                            const char *path, int16_t lockWait) ZKSUPT_NOEXCEPT;

/**
 * Copies the first line of string ID's text from the string table at path: key "%X:%X" of language and ID in the
 * section "MISCELLANEOUS STRING ID SECTION", or with language 0 in "ASCII EN_US DEFAULT STRING ID SECTION".
 * @param languageID null, or *languageID 0, 437 or 1033, mean English; a string missing in another language falls
 * back to English and sets *languageID to 0.
 * @param path null gives the text "Invalid Path File Name".
 * @return the bytes copied with the NUL, also stored in *size; 0 when the string is missing or does not fit (a size
 * query too).
 */
ZKSUPT_API uint32_t SMGetUTF8StrFromIDPathFile(uint32_t stringID, uint32_t *languageID, const char *path, char *buffer,
                                               uint32_t *size) ZKSUPT_NOEXCEPT;
/**
 * As SMGetUTF8StrFromIDPathFile() on the suite's zksdst32.ini, converted to UCS-2, after IDs in the OEM range of
 * zkisdy32.ini (read once per process) are moved by its offset.
 * @param size in: the capacity in bytes.
 * @return, also stored in *size: the bytes converted; the bytes needed when *size is below twice the UTF-8 size;
 * that UTF-8 size when buffer or size is null; or 0.
 */
ZKSUPT_API uint32_t SMGetUCS2StrFromID(uint32_t stringID, uint32_t *languageID, ucs2 *buffer,
                                       uint32_t *size) ZKSUPT_NOEXCEPT;
/**
 * The language of the process from LANG, without codeset and modifier ("de_DE" of "de_DE.UTF-8"): its code (1031
 * German, 2057 en_GB, ...), else the code of its first two letters; 1033 when LANG is unset, empty, "C", "POSIX" or
 * unknown. Case-sensitive.
 * @note LANG is read on every call: safe while no thread changes the environment.
 */
ZKSUPT_API uint32_t SMGetLocalLanguageID(void) ZKSUPT_NOEXCEPT;
/**
 * Copies the first existing path of directory/ll_CC/fileName, directory/ll/fileName and directory/fileName, ll_CC and
 * ll being LANG without codeset and modifier and its first two letters (only the last path without a language; a
 * directory of that name does not count); *size in/out.
 * @return #SM_STATUS_SUCCESS; #SM_STATUS_NOT_FOUND when none exists; #SM_STATUS_BUFFER_TOO_SMALL with the needed size
 * (a null buffer too); #SM_STATUS_INVALID_PARAMETER for a null directory, file name or size.
 */
ZKSUPT_API int32_t SMGetLocalizedPathFileName(const char *directory, const char *fileName, char *buffer,
                                              uint32_t *size) ZKSUPT_NOEXCEPT;

ZKSUPT_END_DECLS

#endif /* ZKSUPT_CONFIG_H */
