// Name-value parameters.
#include "sdo/nvp.h"

#include <cctype>
#include <cstring>
#include <memory>
#include <strings.h>

#include <zksupt/status.h>

#include "file/separated_text.h"
#include "frame/owned.h"
#include "sdo/type_text.h"

namespace zksupt::sdo {
namespace {

// Does param begin with name, compared byte for byte or case-folded?
bool beginsWith(const char *param, const char *name, bool ignoreCase, std::size_t length) noexcept
{
    if (!ignoreCase)
        return std::strncmp(param, name, length) == 0;
    for (std::size_t i = 0; i < length; ++i) {
        if (std::tolower(static_cast<unsigned char>(param[i])) != std::tolower(static_cast<unsigned char>(name[i])))
            return false;
    }
    return true;
}

// The value of the first row from 1 whose word is the piece, any case.
const SMNVPEnumRow *findRow(const SMNVPEnumRow *table, uint32_t rows, const char *piece) noexcept
{
    for (uint32_t i = 1; i < rows; ++i) {
        if (table[i].word != nullptr && strcasecmp(table[i].word, piece) == 0)
            return &table[i];
    }
    return nullptr;
}

}  // namespace

char *paramName(char *param) noexcept
{
    if (isValidParam(param) == 0)
        return nullptr;
    *std::strchr(param, '=') = '\0';
    return param;
}

char *paramValue(char *param) noexcept
{
    char *equals = param == nullptr ? nullptr : std::strchr(param, '=');
    return equals == nullptr ? nullptr : equals + 1;
}

int32_t isValidParam(const char *param) noexcept
{
    return param != nullptr && param[0] != '=' && std::strchr(param, '=') != nullptr ? 1 : 0;
}

int32_t paramIndex(int32_t n, char *const *params, const char *name, int32_t ignoreCase) noexcept
{
    if (n <= 0 || params == nullptr || name == nullptr)
        return -1;
    const std::size_t length = std::strlen(name);
    for (int32_t i = 0; i < n; ++i) {
        const char *param = params[i];
        if (isValidParam(param) == 0)
            continue;
        if (beginsWith(param, name, ignoreCase == 1, length) && (param[length] == '=' || param[length] == '\0'))
            return i;
    }
    return -1;
}

char *paramValueByName(int32_t n, char *const *params, const char *name, int32_t ignoreCase) noexcept
{
    const int32_t index = paramIndex(n, params, name, ignoreCase);
    return index < 0 ? nullptr : paramValue(params[index]);
}

int32_t paramToTypeValue(int32_t n, char *const *params, const char *name, int32_t ignoreCase, void *buffer,
                         uint32_t *size, uint32_t type) noexcept
{
    if (params == nullptr || buffer == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    const char *value = paramValueByName(n, params, name, ignoreCase);
    if (value == nullptr)
        return SM_STATUS_NOT_FOUND;
    return textToTypeValue(value, buffer, size, type);
}

uint32_t paramEnumValue(int32_t n, char *const *params, const char *name, int32_t ignoreCase, const SMNVPEnumRow *table,
                        uint32_t rows, int32_t multiple) noexcept
{
    if (params == nullptr || name == nullptr || table == nullptr || rows < 2)
        return kEnumFailure;
    const char *value = paramValueByName(n, params, name, ignoreCase);
    if (value == nullptr)
        return table[1].value;
    if (multiple != 1) {
        const SMNVPEnumRow *row = findRow(table, rows, value);
        return row == nullptr ? table[0].value : row->value;
    }
    const char separator = std::strchr(value, '|') != nullptr ? '|' : ',';
    const frame::Owned<char> pieces{file::convertSeparators(value, nullptr, separator, '\0')};
    if (pieces == nullptr)
        return kEnumFailure;
    // The pieces end at an empty one, but an empty piece inside the list
    // ("a,,b") must not stop the walk: it ends at the copy's length instead.
    const char *const end = pieces.get() + std::strlen(value) + 1;
    uint32_t combined = 0;
    for (const char *piece = pieces.get(); piece < end; piece += std::strlen(piece) + 1) {
        if (const SMNVPEnumRow *row = findRow(table, rows, piece))
            combined |= row->value;
    }
    return combined;
}

}  // namespace zksupt::sdo
