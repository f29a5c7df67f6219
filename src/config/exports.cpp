// Exported entries of the product registry, install paths, INI engine,
// property files, string tables and localised files.
#include <zksupt/config.h>
#include <zksupt/file.h>

#include "config/expand.h"
#include "config/ini.h"
#include "config/localization.h"
#include "config/path_table.h"
#include "config/pid_path.h"
#include "config/products.h"
#include "config/property_file.h"
#include "config/string_table.h"

namespace cf = zksupt::config;

// clang-format off
extern "C" {

int32_t SMGetPathByProductIDandType(int32_t productID, uint32_t kind, char *buffer, uint32_t *size) noexcept { return cf::pathByProductAndType(productID, kind, buffer, size); }
int32_t SMGetInstallPath(char *buffer, uint32_t *size) noexcept { return cf::pathByProductAndType(cf::kMeridianProduct, cf::kInstallKind, buffer, size); }
int32_t SMGetInstallPathByProductID(int32_t productID, char *buffer, uint32_t *size) noexcept { return cf::pathByProductAndType(productID, cf::kInstallKind, buffer, size); }
int32_t SMExpandQvInstallPathString(const char *input, char *buffer, uint32_t *size) noexcept { return cf::expandInstallPath(input, buffer, size); }
int32_t SMProductSIDToID(const char *shortName) noexcept { return cf::productSidToId(shortName); }
char *SMProductIDToSID(int32_t productID) noexcept { return cf::productIdToSid(productID); }

int32_t SMReadINIPathFileValue(const char *section, const char *key, uint32_t type, void *value, uint32_t *size, const void *defaultValue, uint32_t defaultSize, const char *path, int16_t lockWait) noexcept { return cf::readValue(section, key, type, value, size, defaultValue, defaultSize, path, lockWait); }
int32_t SMWriteINIPathFileValue(const char *section, const char *key, uint32_t type, const void *value, uint32_t size, const char *path, int16_t lockWait) noexcept { return cf::writeValue(section, key, type, value, size, path, lockWait); }
int32_t SMReadINIFileValue(const char *section, const char *key, uint32_t type, void *value, uint32_t *size, const void *defaultValue, uint32_t defaultSize, const char *fileName, int16_t lockWait) noexcept { return cf::readNamedValue(section, key, type, value, size, defaultValue, defaultSize, fileName, lockWait); }
int32_t SMWriteINIFileValue(const char *section, const char *key, uint32_t type, const void *value, uint32_t size, const char *fileName, int16_t lockWait) noexcept { return cf::writeNamedValue(section, key, type, value, size, fileName, lockWait); }
char *SMReadINISectionKeyUTF8Value(const char *section, const char *key, const char *defaultValue, uint32_t *size, const char *path, int16_t lockWait) noexcept { return cf::readText(section, key, defaultValue, size, path, lockWait); }
uint32_t SMReadINIEnums32Value(const char *section, const char *key, const SMEnumRow *rows, uint32_t count, int32_t multi, const char *path, int16_t lockWait) noexcept { return cf::readEnum(section, key, rows, count, multi, path, lockWait); }

int32_t SMPropertyFileReadValue(const char *key, uint32_t type, void *buffer, uint32_t *size, const void *defaultValue, uint32_t defaultSize, const char *path, int16_t lockWait) noexcept { return cf::readProperty(key, type, buffer, size, defaultValue, defaultSize, path, lockWait); }
int32_t SMPropertyFileWriteValue(const char *key, uint32_t type, const void *value, uint32_t valueSize, const char *path, int16_t lockWait) noexcept { return cf::writeProperty(key, type, value, valueSize, path, lockWait); }

uint32_t SMGetUTF8StrFromIDPathFile(uint32_t stringID, uint32_t *languageID, const char *path, char *buffer, uint32_t *size) noexcept { return cf::stringFromIdPathFile(stringID, languageID, path, buffer, size); }
uint32_t SMGetUCS2StrFromID(uint32_t stringID, uint32_t *languageID, ucs2 *buffer, uint32_t *size) noexcept { return cf::ucs2StringFromId(stringID, languageID, buffer, size); }
uint32_t SMGetLocalLanguageID(void) noexcept { return cf::localLanguageId(); }
int32_t SMGetLocalizedPathFileName(const char *directory, const char *fileName, char *buffer, uint32_t *size) noexcept { return cf::localizedPathFileName(directory, fileName, buffer, size); }

int32_t SMMakePathFileNameByPIDAndType(uint32_t productID, uint32_t pathType, const char *baseName, char *buffer, uint32_t *size) noexcept { return cf::pathByProcessIdAndType(productID, pathType, baseName, buffer, size); }

}  // extern "C"
// clang-format on
