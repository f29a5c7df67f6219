// Registry lines and the fallback chain over registry texts; path queries,
// reloads and environment overrides over the sandbox installation.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <tuple>

#include <zksupt/config.h>
#include <zksupt/status.h>

#include "config/path_table.h"
#include "config/registry_reader.h"
#include "support/child.h"
#include "support/sandbox.h"
#include "support/status_names.h"

namespace {

namespace cf = zksupt::config;
namespace fs = std::filesystem;
using cf::PathField;
using zksupt::test::sandbox;
using zksupt::test::statusName;

// The registry's answer for one product and field, or the status instead.
std::string answer(const std::string &registryText, int32_t id, PathField field)
{
    cf::Registry registry;
    registry.parse(registryText);
    std::string path;
    const int32_t status = cf::registryPath(registry, id, field, path);
    return status == SM_STATUS_SUCCESS ? path : statusName(status);
}

TEST(Registry, LinesTrimmingAndTheSuiteFallbackChain)
{
    const std::string wide(8450, 'x');
    const std::tuple<std::string, int32_t, PathField, std::string> rows[] = {
        {"Meridian.installpath=/opt/suite/m/ \n", 35, PathField::install, "/opt/suite/m"},
        {"Meridian.installpath=/opt/suite/m/ \n", -1, PathField::install, "/opt/suite"},
        {"Meridian.installpath=/opt/suite/m/ \n", -1, PathField::log, "/opt/suite"},
        {"Meridian.installpath=/opt/suite/m/ \n", 35, PathField::log, "NOT_FOUND"},
        {"Lodestar.installpath=/opt/l/\nMeridian.installpath=/m/x\n", -1, PathField::bin, "/opt"},
        {"tarn.installpath=/t//\nLodestar.installpath=/opt/l\n", -1, PathField::ini, "/t/"},
        {"tarn.logpath=/var/log/\ntarn.installpath=/t\n", -1, PathField::log, "/var/log"},
        {"Meridian.installpath = /x\n", 35, PathField::install, "NOT_FOUND"},
        {"  # Meridian.logpath=/c\n\t;Meridian.logpath=/c\nMeridian.logpath /c\n", 35, PathField::log, "NOT_FOUND"},
        {" \tMeridian.logpath= \t/a b\t \n", 35, PathField::log, "/a b"},
        {"Meridian.logpath=/a\r\n", 35, PathField::log, "/a\r"},
        {"Meridian.logpath=/a\nMeridian.logpath=/b\n", 35, PathField::log, "/a"},
        {"Meridian.logpath=\nMeridian.logpath=/b\n", 35, PathField::log, "NOT_FOUND"},
        {"meridian.logpath=/a\n", 35, PathField::log, "NOT_FOUND"},
        {"keellib.vardatapath=/v\nkeellib.binpath=/b\nkeellib.configtool=/c\nkeellib.inipath=/i", 45,
         PathField::configTool, "/c"},
        {wide + "Meridian.logpath=/p\n", 35, PathField::log, "/p"},
        {wide.substr(1) + "Meridian.logpath=/p\n", 35, PathField::log, "NOT_FOUND"},
        {"pell.installpath=/p\n", 7, PathField::install, "INVALID_PARAMETER"},
    };
    for (const auto &[text, id, field, expected] : rows)
        EXPECT_EQ(answer(text, id, field), expected) << text.substr(0, 60) << " product " << id;
}

// Queries through the table; the sandbox's registry is put back after each.
class PathQuery : public ::testing::Test {
  protected:
    ~PathQuery() override { useRegistry(sandbox().defaultRegistry()); }

    static void useRegistry(const std::string &text)
    {
        sandbox().writeRegistry(text);
        cf::stopPathTable();
        EXPECT_TRUE(cf::startPathTable());
    }

    // The path, or the status and size of a failure (an empty text left).
    static std::string query(int32_t id, uint32_t kind, uint32_t capacity = 512)
    {
        return zksupt::test::textOut(capacity, [&](char *buffer, uint32_t *size) {
            const int32_t status = SMGetPathByProductIDandType(id, kind, buffer, size);
            if (status != SM_STATUS_SUCCESS && buffer != nullptr)
                *buffer = *buffer == '\0' ? '#' : 'X';  // anything but the empty text shows as written
            return status;
        });
    }
};

TEST_F(PathQuery, EveryKindOfTheSandboxProducts)
{
    const auto &s = sandbox();
    const std::tuple<int32_t, uint32_t, std::string> rows[] = {
        {35, 2, s.installDir()},
        {35, 32, s.installDir()},
        {35, 64, s.iniDir()},
        {35, 8, s.logDir()},
        {35, 4, s.varDataDir()},
        {35, 128, s.installDir()},
        {35, 16, s.installDir()},
        {-1, 2, s.suiteDir()},
        {-1, 8, s.logDir()},
        {-1, 64, s.suiteDir()},
        {45, 4, s.varDataDir()},
        {45, 2, "NOT_FOUND size 0"},
        {7, 2, "NOT_FOUND size 0"},
        {35, 3, "INVALID_PARAMETER size 0"},
        {35, 1, "INVALID_PARAMETER size 0"},
    };
    for (const auto &[id, kind, expected] : rows)
        EXPECT_EQ(query(id, kind), expected) << "product " << id << " kind " << kind;

    const std::string install = s.installDir();
    const auto needed = static_cast<uint32_t>(install.size() + 1);
    EXPECT_EQ(query(35, 2, needed), install);
    EXPECT_EQ(query(35, 2, needed - 1), "BUFFER_TOO_SMALL size " + std::to_string(needed));
    uint32_t size = 0;
    EXPECT_EQ(SMGetInstallPath(nullptr, &size), SM_STATUS_BUFFER_TOO_SMALL);
    EXPECT_EQ(size, needed);
}

TEST_F(PathQuery, MissingDirectoriesRegistryEditsAndFallbacks)
{
    const std::string gone = sandbox().path("gone");
    fs::create_directories(gone);
    useRegistry(sandbox().defaultRegistry() + "Meridian.binpath=" + gone + "/\n");
    EXPECT_EQ(query(35, 128), gone);
    fs::remove(gone);
    EXPECT_EQ(query(35, 128), "BAD_OBJECT size 0");

    // A miss rebuilds the table from the edited registry.
    EXPECT_EQ(query(33, 2), "NOT_FOUND size 0");
    sandbox().writeRegistry(sandbox().defaultRegistry() + "pell.installpath=" + sandbox().suiteDir() + "\n");
    EXPECT_EQ(query(33, 2), sandbox().suiteDir());

    fs::remove(sandbox().registryFile());
    cf::stopPathTable();
    EXPECT_TRUE(cf::startPathTable());
    EXPECT_EQ(query(35, 2), "NOT_FOUND size 0");
}

TEST_F(PathQuery, EnvironmentOverridesTheInstallPath)
{
    const int result = zksupt::test::runInChild([] {
        const std::string log = sandbox().logDir();
        setenv("meridianinstallpath", log.c_str(), 1);
        setenv("MERIDIANINSTALLPATH", "/nowhere", 1);
        setenv("FENXINSTALLPATH", log.c_str(), 1);
        setenv("pellinstallpath", "", 1);
        cf::stopPathTable();
        if (!cf::startPathTable())
            return 1;
        const bool ok = query(35, 2) == log && query(35, 128) == log && query(35, 64) == sandbox().iniDir() &&
                        query(44, 2) == log && query(44, 4) == sandbox().varDataDir() &&
                        query(33, 2) == "NOT_FOUND size 0";
        return ok ? 0 : 2;
    });
    EXPECT_EQ(result, 0);
}

}  // namespace
