// The public constants are the numbers the library itself works with: each
// is tied to the internal constant of the same meaning where there is one
// (so the two cannot drift apart), and checked through the library where
// the meaning lives only in code.
#include <gtest/gtest.h>

#include "config/ini.h"
#include "config/products.h"
#include "lock/permission.h"
#include "sdo/config.h"
#include "sdo/layout.h"
#include "sdo/nvp.h"
#include "sdo/type_text.h"

#include <zksupt/zksupt.h>

#include <algorithm>
#include <cstring>

namespace {

using namespace zksupt;

static_assert(SM_TYPE_BOOLEAN == sdo::kTypeBoolean);
static_assert(SM_TYPE_INT64 == sdo::kTypeInt64);
static_assert(SM_TYPE_UINT16 == sdo::kTypeUint16);
static_assert(SM_TYPE_UINT32 == sdo::kTypeUint32);
static_assert(SM_TYPE_TIME == sdo::kTypeTime);
static_assert(SM_TYPE_BYTES == sdo::kTypeBytes);
static_assert(SM_TYPE_UTF8 == sdo::kTypeUtf8);
static_assert(SM_TYPE_UCS2 == sdo::kTypeUcs2);
static_assert(SM_TYPE_IPV4 == sdo::kTypeIpv4);
static_assert(SM_TYPE_HEX_BYTES == sdo::kTypeHexBytes && SM_TYPE_HEX_BYTES == sdo::kLastTypeCode);

static_assert(SM_SDO_TYPE_BASE_MASK == sdo::kBaseMask);
static_assert(SM_SDO_TYPE_ARRAY == sdo::kArrayFlag);
static_assert(SM_SDO_TYPE_BINARY == sdo::kBaseBlock);
static_assert(SM_SDO_TYPE_OBJECT == sdo::kBaseNested);
static_assert(SM_SDO_TYPE_OBJECT_ARRAY == 0x1D);
static_assert(((SM_SDO_TYPE_BASE_MASK | SM_SDO_TYPE_ARRAY | SM_SDO_TYPE_ATTRIBUTE | SM_SDO_TYPE_ATTRIBUTE_FIELD) ==
               0xFF) &&
              ((SM_SDO_TYPE_BASE_MASK & SM_SDO_TYPE_ARRAY & SM_SDO_TYPE_ATTRIBUTE & SM_SDO_TYPE_ATTRIBUTE_FIELD) == 0));
static_assert(SM_SDO_MAX_ENTRIES == sdo::kMaxEntries);

static_assert(SM_INI_TYPE_UTF8 == config::kIniText);
static_assert(SM_INI_TYPE_UCS2 == config::kIniUcs2);
static_assert(SM_INI_TYPE_BINARY == config::kIniBinary);
static_assert(SM_INI_TYPE_BOOLEAN == config::kIniBoolean);
static_assert(SM_INI_TYPE_UINT32 == config::kIniUint32);
static_assert(SM_INI_TYPE_INT32 == config::kIniInt32);
static_assert(SM_INI_TYPE_UINT64 == config::kIniUint64);
static_assert(SM_INI_TYPE_INT64 == config::kIniInt64);
static_assert(SM_INI_TYPE_DOUBLE == config::kIniDouble);
static_assert(SM_INI_ENUM_FAILURE == sdo::kEnumFailure);

static_assert(SM_PRODUCT_SUITE == config::kSuiteProduct);
static_assert(SM_PRODUCT_MERIDIAN == config::kMeridianProduct);
static_assert(SM_PATH_KIND_INSTALL == config::kInstallKind);
static_assert(SM_PATH_KIND_INI == config::kIniKind);

// The product's short name in the library's own table.
constexpr const char *shortName(int32_t id)
{
    for (const config::Product &product : config::kProducts) {
        if (product.id == id)
            return product.shortName;
    }
    return nullptr;
}

TEST(Constants, EveryProductMacroNamesTheProductOfTheLibrarysTable)
{
    const struct {
        int32_t id;
        const char *name;
    } products[] = {
        {SM_PRODUCT_SUITE, "tarn"},        {SM_PRODUCT_PELL, "pell"}, {SM_PRODUCT_LODESTAR, "Lodestar"},
        {SM_PRODUCT_FENX, "fenx"},         {SM_PRODUCT_MOX5, "mox5"}, {SM_PRODUCT_KEELLIB, "keellib"},
        {SM_PRODUCT_MERIDIAN, "Meridian"},
    };
    ASSERT_EQ(std::size(products), config::kProducts.size());
    for (const auto &product : products) {
        const char *name = shortName(product.id);
        ASSERT_NE(name, nullptr) << product.id;
        EXPECT_STREQ(name, product.name);
        EXPECT_EQ(SMProductSIDToID(product.name), product.id);
    }
}

TEST(Constants, EveryPathKindSelectsTheDirectoryItsNameSays)
{
    const struct {
        uint32_t kind;
        config::PathField field;
    } kinds[] = {
        {SM_PATH_KIND_INSTALL, config::PathField::install},
        {SM_PATH_KIND_VAR_DATA, config::PathField::varData},
        {SM_PATH_KIND_LOG, config::PathField::log},
        {SM_PATH_KIND_CONFIG_TOOL, config::PathField::configTool},
        {SM_PATH_KIND_INSTALL_ALIAS, config::PathField::install},
        {SM_PATH_KIND_INI, config::PathField::ini},
        {SM_PATH_KIND_BIN, config::PathField::bin},
    };
    for (const auto &kind : kinds) {
        const auto field = config::fieldOfKind(kind.kind);
        ASSERT_TRUE(field.has_value()) << kind.kind;
        EXPECT_EQ(*field, kind.field) << kind.kind;
    }
}

TEST(Constants, PermissionMacrosGiveTheModesTheirNamesPromise)
{
    EXPECT_EQ(lock::modeOfPermission(SM_PERMISSION_DEFAULT), 0664u);
    EXPECT_EQ(lock::modeOfPermission(SM_PERMISSION_OWNER_ONLY), 0600u);
}

TEST(Constants, TypeMacrosAreTheCodesTheTextTranslationReads)
{
    // Each code parses the text of a value of its documented width.
    const struct {
        uint32_t type;
        const char *text;
        uint32_t width;
    } types[] = {
        {SM_TYPE_BOOLEAN, "true", 2}, {SM_TYPE_INT8, "-5", 1},  {SM_TYPE_INT16, "-5", 2},
        {SM_TYPE_INT32, "-5", 4},     {SM_TYPE_INT64, "-5", 8}, {SM_TYPE_UINT8, "5", 1},
        {SM_TYPE_UINT16, "5", 2},     {SM_TYPE_UINT32, "5", 4}, {SM_TYPE_UINT64, "5", 8},
        {SM_TYPE_DOUBLE, "0.5", 8},   {SM_TYPE_UTF8, "abc", 4}, {SM_TYPE_IPV4, "10.0.0.1", 4},
    };
    for (const auto &type : types) {
        unsigned char buffer[16] = {};
        uint32_t size = sizeof buffer;
        ASSERT_EQ(SMXLTUTF8ToTypeValue(type.text, buffer, &size, type.type), SM_STATUS_SUCCESS) << type.type;
        EXPECT_EQ(size, type.width) << type.type;
    }
}

TEST(Constants, AnSdoTakesANestedObjectUnderTheObjectCode)
{
    SDOConfig *parent = SMSDOConfigAlloc();
    SDOConfig *child = SMSDOConfigAlloc();
    ASSERT_NE(parent, nullptr);
    ASSERT_NE(child, nullptr);
    const uint32_t value = 7;
    ASSERT_EQ(SMSDOConfigAddData(child, 1, SM_TYPE_UINT32 | SM_SDO_TYPE_ATTRIBUTE, &value, sizeof value, 0),
              SM_STATUS_SUCCESS);
    ASSERT_EQ(SMSDOConfigAddData(parent, 2, SM_SDO_TYPE_OBJECT, child, sizeof child, 0), SM_STATUS_SUCCESS);
    // The parent's binary size counts the child's entries: it read the handle as an object.
    EXPECT_EQ(SMSDOConfigGetBinarySize(parent), 8u + 8u + SMSDOConfigGetBinarySize(child));
    SMSDOConfigFree(parent);
}

}  // namespace
