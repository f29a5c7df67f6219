#include "config/expand.h"

#include <cctype>
#include <cstring>

#include <zksupt/status.h>

#include "config/path_table.h"
#include "frame/size_out.h"

namespace zksupt::config {
namespace {

constexpr char kToken[] = "@qvinstallpath@";
constexpr std::size_t kTokenLength = sizeof kToken - 1;
// Inputs, terminator included, must stay below this size.
constexpr std::size_t kInputLimit = 255;
constexpr uint32_t kPathCapacity = 4096;

// Where the token starts in input, compared without case, or null.
const char *findToken(const char *input) noexcept
{
    for (const char *p = input; *p != '\0'; ++p) {
        std::size_t i = 0;
        while (i < kTokenLength && std::tolower(static_cast<unsigned char>(p[i])) == kToken[i])
            ++i;
        if (i == kTokenLength)
            return p;
    }
    return nullptr;
}

}  // namespace

int32_t expandInstallPath(const char *input, char *buffer, uint32_t *size) noexcept
{
    if (size == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    const std::size_t length = input != nullptr ? std::strlen(input) : 0;
    const int32_t refusal = input == nullptr            ? SM_STATUS_INVALID_PARAMETER
                            : length + 1 >= kInputLimit ? SM_STATUS_FAILURE
                            : buffer == nullptr         ? SM_STATUS_INVALID_PARAMETER
                                                        : SM_STATUS_SUCCESS;
    if (refusal != SM_STATUS_SUCCESS) {
        *size = 0;
        return refusal;
    }
    const char *token = findToken(input);
    if (token == nullptr)
        return frame::copyOutText(buffer, size, {input, length});
    char path[kPathCapacity];
    uint32_t pathSize = sizeof path;
    const int32_t status = pathByProductAndType(kSuiteProduct, kInstallKind, path, &pathSize);
    if (status != SM_STATUS_SUCCESS) {
        *size = 0;
        return status;
    }
    const std::size_t pathLength = pathSize - 1;
    const auto needed = static_cast<uint32_t>(length - kTokenLength + pathLength + 1);
    if (const int32_t fits = frame::reserveOut(buffer, size, needed); fits != SM_STATUS_SUCCESS)
        return fits;
    const std::size_t before = static_cast<std::size_t>(token - input);
    std::memcpy(buffer, input, before);
    std::memcpy(buffer + before, path, pathLength);
    std::strcpy(buffer + before + pathLength, token + kTokenLength);
    return SM_STATUS_SUCCESS;
}

}  // namespace zksupt::config
