#include "support/status_names.h"

#include <zksupt/status.h>

namespace zksupt::test {

std::string statusName(int32_t status)
{
    const char *name = zksupt_status_name(status);
    return name != nullptr ? name : std::to_string(status);
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
