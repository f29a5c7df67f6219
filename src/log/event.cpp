#include "log/event.h"

#include <array>

namespace zksupt::log {

std::string_view categoryName(uint16_t category) noexcept
{
    static constexpr std::array<std::string_view, 6> kNames{
        "Lodestar Engine",  "Meridian Service", "Pell Service", "Quillon Connections Service",
        "Tessel Framework", "Varve Management",
    };
    return category >= 1 && category <= kNames.size() ? kNames[category - 1] : std::string_view{};
}

std::string_view typeLine(uint32_t type) noexcept
{
    switch (type) {
    case 0:
        return "Type: None";
    case 1:
        return "Type: Error";
    case 2:
        return "Type: Warning";
    case 4:
        return "Type: Information";
    case 8:
        return "Type: Audit Success";
    case 16:
        return "Type: Audit Failure";
    default:
        return {};
    }
}

}  // namespace zksupt::log
