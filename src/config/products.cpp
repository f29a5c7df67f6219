#include "config/products.h"

#include <strings.h>

#include <utility>

#include "text/utf8_string.h"

namespace zksupt::config {

std::optional<PathField> fieldOfKind(uint32_t kind) noexcept
{
    // 2 and 32 both mean the install path.
    static constexpr std::pair<uint32_t, PathField> kKinds[] = {
        {2, PathField::install},     {32, PathField::install}, {4, PathField::varData}, {8, PathField::log},
        {16, PathField::configTool}, {64, PathField::ini},     {128, PathField::bin},
    };
    for (const auto &[bit, field] : kKinds) {
        if (bit == kind)
            return field;
    }
    return std::nullopt;
}

const char *suffixOfField(PathField field) noexcept
{
    static constexpr const char *kSuffixes[kPathFieldCount] = {"installpath", "binpath", "inipath",
                                                               "vardatapath", "logpath", "configtool"};
    return kSuffixes[static_cast<std::size_t>(field)];
}

const char *shortNameOf(int32_t id) noexcept
{
    for (const Product &product : kProducts) {
        if (product.id == id)
            return product.shortName;
    }
    return nullptr;
}

int32_t productSidToId(const char *shortName) noexcept
{
    if (shortName == nullptr)
        return 0;
    for (const Product &product : kProducts) {
        if (strcasecmp(shortName, product.shortName) == 0)
            return product.id;
    }
    return 0;
}

char *productIdToSid(int32_t id) noexcept
{
    const char *shortName = shortNameOf(id);
    return shortName != nullptr ? text::utf8Duplicate(shortName) : nullptr;
}

}  // namespace zksupt::config
