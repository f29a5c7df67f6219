// The command line itself: help, usage errors and the digest commands.
#include <gtest/gtest.h>

#include "run_tool.h"
#include "support/sandbox.h"

#include <zksupt/digest.h>

#include <unistd.h>

namespace zksupt::test {
namespace {

TEST(ToolCli, HelpNamesEveryCommandAndUsageErrorsExitTwo)
{
    const ToolRun help = runTool({"help"});
    EXPECT_EQ(help.exitCode, 0);
    for (const char *command : {"sdo", "ini", "prop", "log", "paths", "registry", "expand", "ipc", "strings", "md5",
                                "crc32", "base64", "help"})
        EXPECT_NE(help.out.find("\n  " + std::string(command) + " "), std::string::npos) << command;
    EXPECT_NE(runTool({"help", "log", "append"}).out.find("--category"), std::string::npos);

    for (const std::vector<std::string> &args : std::vector<std::vector<std::string>>{
             {}, {"frobnicate"}, {"sdo"}, {"sdo", "dump"}, {"help", "nothing"}, {"ini", "get", "f", "s"}}) {
        EXPECT_EQ(runTool(args).exitCode, 2) << (args.empty() ? "" : args[0]);
    }
    const ToolRun version = runTool({"--version"});
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_EQ(version.out.rfind("zksupt ", 0), 0u);
}

TEST(ToolCli, DigestsOfKnownInputs)
{
    const std::string abc = sandbox().writeFile("tool-digest/abc", "abc");
    const std::string digits = sandbox().writeFile("tool-digest/digits", "123456789");
    const std::string encoded = sandbox().writeFile("tool-digest/encoded", "Zm9vYmE=\n");
    // The tool shows the library's digest, which is RFC 1321's only on a little-endian host.
    SMRFC1321Context context;
    SMRFC1321Load(&context);
    SMRFC1321AddMsg(&context, "abc", 3);
    SMRFC1321ComputeMsgDigest(&context);
    std::string digest;
    for (unsigned char byte : context.digest) {
        digest += "0123456789abcdef"[byte >> 4];
        digest += "0123456789abcdef"[byte & 15];
    }
    if (!ZKSUPT_TARGET_BIG_ENDIAN) {
        EXPECT_EQ(digest, "900150983cd24fb0d6963f7d28e17f72");
    }
    EXPECT_EQ(runTool({"md5", abc}).out, digest + "  " + abc + "\n");
    EXPECT_EQ(runTool({"md5"}, abc).out, digest + "  -\n");
    EXPECT_EQ(runTool({"crc32", digits}).out, "cbf43926  " + digits + "\n");
    EXPECT_EQ(runTool({"base64", "-"}, abc).out, "YWJj\n");
    EXPECT_EQ(runTool({"base64", "-d", encoded}).out, "fooba");
    EXPECT_EQ(runTool({"base64", digits}).out, "MTIzNDU2Nzg5\n");
    EXPECT_EQ(runTool({"crc32", sandbox().path("tool-digest/none")}).exitCode, 3);
    for (const std::string &file : {abc, digits, encoded})
        unlink(file.c_str());
}

}  // namespace
}  // namespace zksupt::test
