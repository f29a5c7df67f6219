// Name-value parameters: vectors of "name=value" strings as a command line
// hands them to a management tool.
#pragma once

#include <cstdint>

#include <zksupt/xlt.h>

namespace zksupt::sdo {

// The enumeration result for unusable arguments.
inline constexpr uint32_t kEnumFailure = 0x80000000;

char *paramName(char *param) noexcept;
char *paramValue(char *param) noexcept;
int32_t isValidParam(const char *param) noexcept;

// A parameter matches when it has a name and begins with name (case-folded
// when ignoreCase is 1) followed by its "=" or its end; so a name that goes on
// with "=" and the parameter's own value matches too.
int32_t paramIndex(int32_t n, char *const *params, const char *name, int32_t ignoreCase) noexcept;
char *paramValueByName(int32_t n, char *const *params, const char *name, int32_t ignoreCase) noexcept;
int32_t paramToTypeValue(int32_t n, char *const *params, const char *name, int32_t ignoreCase, void *buffer,
                         uint32_t *size, uint32_t type) noexcept;
uint32_t paramEnumValue(int32_t n, char *const *params, const char *name, int32_t ignoreCase, const SMNVPEnumRow *table,
                        uint32_t rows, int32_t multiple) noexcept;

}  // namespace zksupt::sdo
