#include "config/localization.h"

#include <sys/stat.h>

#include <string>
#include <string_view>

#include <zksupt/status.h>

#include "frame/bounds_checked.h"
#include "frame/size_out.h"
#include "sdo/type_text.h"

namespace zksupt::config {
namespace {

constexpr uint32_t kEnglishUs = 1033;
constexpr std::size_t kLanguageLetters = 2;

// LANG without codeset and modifier; empty when it is unset or names no
// language ("C", "POSIX").
std::string localeOfEnvironment()
{
    uint32_t needed = 0;
    if (frame::getenvS(&needed, nullptr, 0, "LANG") != 0 || needed <= 1)
        return {};
    std::string value(needed, '\0');
    if (frame::getenvS(&needed, value.data(), static_cast<uint32_t>(value.size()), "LANG") != 0)
        return {};  // changed between the two looks
    value.resize(value.find_first_of(".@\0", 0, 3));
    if (value == "C" || value == "POSIX")
        return {};
    return value;
}

// A file, or a link to one; a directory of that name does not count.
bool exists(const std::string &path) noexcept
{
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && !S_ISDIR(status.st_mode);
}

}  // namespace

uint32_t localLanguageId() noexcept
{
    try {
        const std::string locale = localeOfEnvironment();
        uint32_t code = kEnglishUs;
        if (!locale.empty() && !sdo::localeCode(locale, code))
            sdo::localeCode(std::string_view(locale).substr(0, kLanguageLetters), code);
        return code;
    } catch (...) {
        return kEnglishUs;
    }
}

int32_t localizedPathFileName(const char *directory, const char *fileName, char *buffer, uint32_t *size) noexcept
{
    if (directory == nullptr || fileName == nullptr || size == nullptr)
        return SM_STATUS_INVALID_PARAMETER;
    try {
        const std::string locale = localeOfEnvironment();
        const std::string language = locale.substr(0, kLanguageLetters);
        const auto found = [&](const std::string &form, std::string &path) {
            path = std::string(directory).append("/").append(form).append(form.empty() ? "" : "/").append(fileName);
            return exists(path);
        };
        std::string path;
        if ((!locale.empty() && found(locale, path)) || (language != locale && found(language, path)) ||
            found({}, path))
            return frame::copyOutText(buffer, size, path);
        return SM_STATUS_NOT_FOUND;
    } catch (...) {
        return SM_STATUS_NO_MEMORY;
    }
}

}  // namespace zksupt::config
