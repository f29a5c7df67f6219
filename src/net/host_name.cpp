#include "net/host_name.h"

#include <netdb.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <string_view>

#include <zksupt/status.h>

#include "frame/owned.h"
#include "frame/size_out.h"
#include "net/module.h"
#include "text/convert.h"

namespace zksupt::net {
namespace {

// The UCS-2 name and the lookup of the official name start from 64 bytes.
constexpr uint32_t kShortName = 64;
// The resolver's work area grows until the answer fits, up to this bound.
constexpr std::size_t kFirstLookupArea = 1024;
constexpr std::size_t kLargestLookupArea = 64 * 1024;

// The whole host name. gethostname may leave a name that filled its buffer
// unterminated, so one byte more than it is allowed to use stays zero.
std::string_view wholeHostName(char (&name)[HOST_NAME_MAX + 2]) noexcept
{
    std::memset(name, 0, sizeof name);
    ::gethostname(name, sizeof name - 1);  // a failure is not reported: the name is then empty or cut
    return name;
}

// The name as callers with 64-byte records were given it: cut to 63 bytes.
const char *shortHostName(char (&name)[kShortName]) noexcept
{
    char whole[HOST_NAME_MAX + 2];
    uint32_t size = kShortName;
    frame::copyOutText(name, &size, wholeHostName(whole).substr(0, kShortName - 1));
    return name;
}

}  // namespace

int32_t hostName(char *buffer, uint32_t *size) noexcept
{
    if (const int32_t status = checkCall({buffer, size}); status != SM_STATUS_SUCCESS)
        return status;
    char whole[HOST_NAME_MAX + 2];
    const std::string_view name = wholeHostName(whole);
    if (*size == 0)
        return frame::copyOutText(nullptr, size, name);
    return frame::copyOutText(buffer, size, name.substr(0, *size - 1), frame::NullBuffer::sizeQuery);
}

int32_t hostNameUcs2(ucs2 *buffer, uint32_t *size) noexcept
{
    if (const int32_t status = checkCall({size}); status != SM_STATUS_SUCCESS)
        return status;
    char name[kShortName];
    return text::utf8ToUcs2(buffer, size, shortHostName(name));
}

int32_t dnsSuffixOf(const char *officialName, char *buffer, uint32_t *size) noexcept
{
    const char *dot = std::strchr(officialName, '.');
    return frame::copyOutText(buffer, size, dot != nullptr ? dot + 1 : "", frame::NullBuffer::sizeQuery);
}

int32_t dnsSuffix(char *buffer, uint32_t *size) noexcept
{
    if (const int32_t status = checkCall({size}); status != SM_STATUS_SUCCESS)
        return status;
    char name[kShortName];
    shortHostName(name);

    // The reentrant lookup: the classic one returns static storage that any
    // other thread's lookup overwrites.
    for (std::size_t area = kFirstLookupArea; area <= kLargestLookupArea; area *= 2) {
        const frame::Owned<char> work = frame::allocateOwned<char>(area);
        if (work == nullptr)
            return SM_STATUS_NO_MEMORY;
        hostent entry{};
        hostent *found = nullptr;
        int lookupError = 0;
        const int result = ::gethostbyname_r(name, &entry, work.get(), area, &found, &lookupError);
        if (result == ERANGE)
            continue;
        if (result != 0 || found == nullptr || found->h_name == nullptr)
            return SM_STATUS_FAILURE;
        return dnsSuffixOf(found->h_name, buffer, size);
    }
    return SM_STATUS_FAILURE;
}

}  // namespace zksupt::net
