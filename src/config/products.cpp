#include "config/products.h"

#include <strings.h>

#include "text/utf8_string.h"

namespace zksupt::config {

std::optional<PathField> fieldOfKind(uint32_t kind) noexcept
{
    switch (kind) {
    case 2:
    case 32:
        return PathField::install;
    case 4:
        return PathField::varData;
    case 8:
        return PathField::log;
    case 16:
        return PathField::configTool;
    case 64:
        return PathField::ini;
    case 128:
        return PathField::bin;
    default:
        return std::nullopt;
    }
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
