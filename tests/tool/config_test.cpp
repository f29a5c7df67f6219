// prop, paths, expand and strings against the sandbox installation.
#include <gtest/gtest.h>

#include "run_tool.h"
#include "support/sandbox.h"

#include <unistd.h>

#include <cstdlib>

namespace zksupt::test {
namespace {

TEST(ToolProp, ValuesAreReadAndReplacedButNeverAdded)
{
    const std::string file = sandbox().writeFile("tool-prop/agent.prop", "port=80\nname=box\n");
    EXPECT_EQ(runTool({"prop", "list", file}).out, "port=80\nname=box\n");
    ASSERT_EQ(runTool({"prop", "set", file, "port", "8080", "--type", "uint32"}).exitCode, 0);
    EXPECT_EQ(runTool({"prop", "get", file, "port", "--type", "uint32"}).out, "8080\n");
    EXPECT_EQ(runTool({"prop", "get", file, "name"}).out, "box\n");

    // The library would empty the file for a key it does not hold; the tool refuses first.
    const ToolRun added = runTool({"prop", "set", file, "colour", "red"});
    EXPECT_EQ(added.exitCode, 5);
    EXPECT_EQ(added.err, "zksupt: " + file + " colour: key not found (0x107)\n");
    EXPECT_EQ(readFile(file), "port=8080\nname=box\n");

    EXPECT_EQ(runTool({"prop", "set", file, "port", "eighty", "--type", "uint32"}).exitCode, 4);
    EXPECT_EQ(runTool({"prop", "get", file, "port", "--type", "colour"}).exitCode, 2);
    unlink(file.c_str());
}

TEST(ToolRegistry, NamesTheFileTheLibraryOpens)
{
    const ToolRun chosen = runTool({"registry"});
    EXPECT_EQ(chosen.exitCode, 0) << chosen.err;
    EXPECT_EQ(chosen.out, sandbox().registryFile() + "\n");

    // A variable naming no file leaves the library without a registry file:
    // the system's own files are not read in its place.
    const std::string missing = sandbox().path("no-such-registry.cfg");
    setenv("ZKSUPT_REGISTRY", missing.c_str(), 1);
    const ToolRun none = runTool({"registry"});
    setenv("ZKSUPT_REGISTRY", sandbox().registryFile().c_str(), 1);
    EXPECT_EQ(none.exitCode, 5);
    EXPECT_EQ(none.out, "");
    EXPECT_NE(none.err.find("reads no registry file"), std::string::npos) << none.err;
}

TEST(ToolPaths, RegistryDirectoriesAndExpansion)
{
    const ToolRun meridian = runTool({"paths", "meridian"});
    EXPECT_EQ(meridian.exitCode, 0);
    EXPECT_NE(meridian.out.find("Meridian.inipath=" + sandbox().iniDir() + "\n"), std::string::npos) << meridian.out;
    EXPECT_NE(meridian.out.find("Meridian.logpath=" + sandbox().logDir() + "\n"), std::string::npos);
    EXPECT_EQ(runTool({"paths", "35"}).out, meridian.out);
    EXPECT_NE(runTool({"paths"}).out.find("keellib.vardatapath=" + sandbox().varDataDir() + "\n"), std::string::npos);
    EXPECT_EQ(runTool({"paths", "nothing"}).exitCode, 5);

    EXPECT_EQ(runTool({"expand", "@QvInstallPath@/bin"}).out, sandbox().suiteDir() + "/bin\n");
    EXPECT_EQ(runTool({"expand", "plain"}).out, "plain\n");
}

TEST(ToolStrings, SuiteTableWithLanguageFallBack)
{
    const std::string table = sandbox().writeFile("suite/meridian/ini/ini/zksdst32.ini",
                                                  "[ASCII EN_US DEFAULT STRING ID SECTION]\n0:1A=Disk full\n"
                                                  "0:1B=Fan stopped\n[MISCELLANEOUS STRING ID SECTION]\n"
                                                  "407:1A=Platte voll\n");
    const struct {
        std::vector<std::string> args;
        int exitCode;
        const char *out;
    } cases[] = {
        {{"strings", "26"}, 0, "Disk full\n"},
        {{"strings", "0x1A", "--lang", "1031"}, 0, "Platte voll\n"},
        {{"strings", "27", "--lang", "1031"}, 0, "Fan stopped\n"},
        {{"strings", "28"}, 5, ""},
        {{"strings", "26", "--file", sandbox().path("tool-none.ini")}, 5, ""},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.args[1]);
        const ToolRun run = runTool(c.args);
        EXPECT_EQ(run.exitCode, c.exitCode);
        EXPECT_EQ(run.out, c.out);
    }
    unlink(table.c_str());
}

}  // namespace
}  // namespace zksupt::test
