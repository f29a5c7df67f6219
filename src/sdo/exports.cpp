// Exported entries of the SDO: the configuration object and its binary forms.
#include <zksupt/sdo.h>
#include <zksupt/xlt.h>

#include "sdo/binary.h"
#include "sdo/config.h"
#include "sdo/nvp.h"
#include "sdo/type_text.h"

namespace sdo = zksupt::sdo;

// clang-format off
extern "C" {

SDOConfig *SMSDOConfigAlloc(void) noexcept { return sdo::allocConfig(); }
void SMSDOConfigFree(SDOConfig *config) noexcept { sdo::freeConfig(config); }
uint32_t SMSDOConfigGetCount(const SDOConfig *config) noexcept { return sdo::entryCount(config); }
uint32_t SMSDOConfigGetBinarySize(const SDOConfig *config) noexcept { return sdo::binarySizeOf(config); }
uint32_t SMSDOConfigReCalcBinarySize(SDOConfig *config) noexcept { return sdo::recalcBinarySize(config); }
int32_t SMSDOConfigAddData(SDOConfig *config, uint16_t id, uint8_t type, const void *value, uint32_t size, int32_t replace) noexcept { return sdo::addData(config, id, type, value, size, replace); }
int32_t SMSDOConfigGetDataByID(const SDOConfig *config, uint16_t id, uint8_t *type, void *buffer, uint32_t *size) noexcept { return sdo::getDataById(config, id, type, buffer, size); }
int32_t SMSDOConfigGetDataByIndex(const SDOConfig *config, uint32_t index, uint16_t *id, uint8_t *type, void *buffer, uint32_t *size) noexcept { return sdo::getDataByIndex(config, index, id, type, buffer, size); }
int32_t SMSDOConfigRemoveData(SDOConfig *config, uint16_t id, uint32_t index, int32_t removeAll) noexcept { return sdo::removeData(config, id, index, removeAll); }
SDOConfig *SMSDOConfigClone(const SDOConfig *config) noexcept { return sdo::cloneConfig(config); }
int32_t SMSDOConfigCompareByValue(const SDOConfig *a, const SDOConfig *b) noexcept { return sdo::compareByValue(a, b); }
int32_t SMSDOConfigToBinary(const SDOConfig *config, void *buffer, uint32_t *size) noexcept { return sdo::toBinary(config, buffer, size); }
SDOConfig *SMSDOBinaryToConfig(const void *binary) noexcept { return sdo::binaryToConfig(binary); }

uint32_t SMSDOBinaryGetCount(const void *binary, uint16_t *isArray) noexcept { return sdo::binaryCount(binary, isArray); }
uint32_t SMSDOBinaryGetSize(const void *binary, uint16_t *isArray) noexcept { return sdo::binarySize(binary, isArray); }
int32_t SMSDOBinaryGetDataByID(const void *binary, uint16_t id, uint8_t *type, void *buffer, uint32_t *size) noexcept { return sdo::binaryGetById(binary, id, type, buffer, size); }
int32_t SMSDOBinaryGetDataByIndex(const void *binary, uint32_t index, uint16_t *id, uint8_t *type, void *buffer, uint32_t *size) noexcept { return sdo::binaryGetByIndex(binary, index, id, type, buffer, size); }
int32_t SMSDOBinarySetData(void *binary, uint32_t *size, uint16_t id, uint8_t type, const void *value, uint32_t valueSize) noexcept { return sdo::binarySetData(binary, size, id, type, value, valueSize); }
int32_t SMSDOBinaryWalk(const void *binary, void *context, SDOBinaryWalkBegin begin, SDOBinaryWalkEntry entry, SDOBinaryWalkAfterEntry afterEntry, SDOBinaryWalkEnd end, int32_t recurse) noexcept { return sdo::binaryWalk(binary, context, begin, entry, afterEntry, end, recurse); }

int32_t SMSDOBinaryArrayInitHeader(void *buffer, uint32_t size) noexcept { return sdo::arrayInitHeader(buffer, size); }
int32_t SMSDOBinaryArrayAddData(void *array, uint32_t *capacity, const void *binary, uint32_t binarySize) noexcept { return sdo::arrayAddData(array, capacity, binary, binarySize); }
int32_t SMSDOBinaryArrayGetByIndex(const void *array, uint32_t /*arraySize*/, uint32_t index, void *out, uint32_t *size) noexcept { return sdo::arrayGetByIndex(array, index, out, size); }
int32_t SMSDOConfigArrayToBinaryArray(SDOConfig *const *configs, uint32_t n, void *out, uint32_t *size) noexcept { return sdo::configsToBinaryArray(configs, n, out, size); }
int32_t SMSDOBinaryArrayToConfigArray(const void *array, SDOConfig **configs, uint32_t *count) noexcept { return sdo::binaryArrayToConfigs(array, configs, count); }

int32_t SMXLTUTF8ToTypeValue(const char *text, void *buffer, uint32_t *size, uint32_t type) noexcept { return sdo::textToTypeValue(text, buffer, size, type); }
int32_t SMXLTTypeValueToUTF8(const void *value, uint32_t valueSize, char *text, uint32_t *size, uint32_t type) noexcept { return sdo::typeValueToText(value, valueSize, text, size, type); }

char *SMNVPGetUTF8ParamName(char *param) noexcept { return sdo::paramName(param); }
char *SMNVPGetUTF8ParamValue(char *param) noexcept { return sdo::paramValue(param); }
int32_t SMIsValidParam(const char *param) noexcept { return sdo::isValidParam(param); }
int32_t SMNVPGetParamIndexByUTF8Name(int32_t n, char **params, const char *name, int32_t ignoreCase) noexcept { return sdo::paramIndex(n, params, name, ignoreCase); }
char *SMNVPGetUTF8ParamValueByUTF8Name(int32_t n, char **params, const char *name, int32_t ignoreCase) noexcept { return sdo::paramValueByName(n, params, name, ignoreCase); }
int32_t SMNVPUTF8ToTypeValue(int32_t n, char **params, const char *name, int32_t ignoreCase, void *buffer, uint32_t *size, uint32_t type) noexcept { return sdo::paramToTypeValue(n, params, name, ignoreCase, buffer, size, type); }
uint32_t SMNVPGetEnums32Value(int32_t n, char **params, const char *name, int32_t ignoreCase, const SMNVPEnumRow *table, uint32_t rows, int32_t multiple) noexcept { return sdo::paramEnumValue(n, params, name, ignoreCase, table, rows, multiple); }

}  // extern "C"
// clang-format on
