// The suite's products, the kinds of directory each has, and the names that
// join them in the registry file.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

namespace zksupt::config {

// The products in the order the path table keeps them. The short name is the
// prefix of the product's registry keys; -1 is the suite as a whole.
struct Product {
    const char *shortName;
    int32_t id;
};
inline constexpr int32_t kSuiteProduct = -1;
inline constexpr int32_t kMeridianProduct = 35;
inline constexpr std::array<Product, 7> kProducts{{
    {"tarn", kSuiteProduct},
    {"pell", 33},
    {"Lodestar", 34},
    {"fenx", 44},
    {"mox5", 88},
    {"keellib", 45},
    {"Meridian", kMeridianProduct},
}};

// The six directories of a product, in the order the table is built.
enum class PathField { install, bin, ini, varData, log, configTool };
inline constexpr std::size_t kPathFieldCount = 6;

// The path kinds callers pass (bit values).
inline constexpr uint32_t kInstallKind = 2;
inline constexpr uint32_t kIniKind = 64;

// The field a kind selects: 2 and 32 both mean the install path.
std::optional<PathField> fieldOfKind(uint32_t kind) noexcept;
// The registry key suffix of a field ("installpath", "binpath", ...).
const char *suffixOfField(PathField field) noexcept;
// The short name of a product ID, or null for an ID no product has.
const char *shortNameOf(int32_t id) noexcept;

// The ID of a short name compared without case; 0 for null or no match.
int32_t productSidToId(const char *shortName) noexcept;
// A heap copy of the product's short name, or null for an unknown ID.
char *productIdToSid(int32_t id) noexcept;

}  // namespace zksupt::config
