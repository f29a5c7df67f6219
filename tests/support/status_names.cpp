#include "support/status_names.h"

#include <utility>

#include <zksupt/status.h>

namespace zksupt::test {

std::string statusName(int32_t status)
{
#define ZKSUPT_STATUS_NAME(name)                                                                                       \
    std::pair<int32_t, const char *>                                                                                   \
    {                                                                                                                  \
        SM_STATUS_##name, #name                                                                                        \
    }
    static const std::pair<int32_t, const char *> kNames[] = {
        ZKSUPT_STATUS_NAME(SUCCESS),
        ZKSUPT_STATUS_NAME(FAILURE),
        ZKSUPT_STATUS_NAME(NOT_SERVED),
        ZKSUPT_STATUS_NAME(BAD_ARGUMENT),
        ZKSUPT_STATUS_NAME(TIMEOUT),
        ZKSUPT_STATUS_NAME(FILE_NOT_FOUND),
        ZKSUPT_STATUS_NAME(SOURCE_UNREADABLE),
        ZKSUPT_STATUS_NAME(NOT_PRESENT),
        ZKSUPT_STATUS_NAME(BUFFER_TOO_SMALL),
        ZKSUPT_STATUS_NAME(NOT_READY),
        ZKSUPT_STATUS_NAME(LIMIT_REACHED),
        ZKSUPT_STATUS_NAME(DESTINATION_EXISTS),
        ZKSUPT_STATUS_NAME(NOT_FOUND),
        ZKSUPT_STATUS_NAME(BAD_OBJECT),
        ZKSUPT_STATUS_NAME(DUPLICATE),
        ZKSUPT_STATUS_NAME(FILE_OPEN_FAILED),
        ZKSUPT_STATUS_NAME(BAD_SECTION_HEADER),
        ZKSUPT_STATUS_NAME(SECTION_NOT_FOUND),
        ZKSUPT_STATUS_NAME(KEY_NOT_FOUND),
        ZKSUPT_STATUS_NAME(BAD_LENGTH),
        ZKSUPT_STATUS_NAME(ACCESS_DENIED),
        ZKSUPT_STATUS_NAME(INVALID_PARAMETER),
        ZKSUPT_STATUS_NAME(NO_MEMORY),
        ZKSUPT_STATUS_NAME(VALUE_TOO_LARGE),
        ZKSUPT_STATUS_NAME(VALUE_TOO_SMALL),
    };
#undef ZKSUPT_STATUS_NAME
    for (const auto &[value, name] : kNames)
        if (value == status)
            return name;
    return std::to_string(status);
}

std::string textOut(uint32_t capacity, const std::function<int32_t(char *, uint32_t *)> &call)
{
    std::string buffer(capacity, '#');
    uint32_t size = capacity;
    const int32_t status = call(buffer.data(), &size);
    if (status != SM_STATUS_SUCCESS)
        return statusName(status) + " size " + std::to_string(size) +
               (buffer == std::string(capacity, '#') ? "" : " written");
    const std::size_t end = buffer.find('\0');
    if (end == std::string::npos || size != end + 1)
        return "unterminated or miscounted: size " + std::to_string(size);
    return buffer.substr(0, end);
}

}  // namespace zksupt::test
