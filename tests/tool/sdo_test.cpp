// sdo build, dump and check as a user runs them.
#include <gtest/gtest.h>

#include "run_tool.h"
#include "support/sandbox.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <unistd.h>

namespace zksupt::test {
namespace {

std::string host16(uint16_t value)
{
    return std::string(reinterpret_cast<const char *>(&value), sizeof value);
}

// JSON documents that must come back byte for byte through build, dump --json and build.
const char *const kDocuments[] = {
    R"({"kind":"object","entries":[]})",
    R"({"kind":"object","entries":[{"id":7,"type":6,"text":"42"},{"id":65533,"type":3,"text":"-5"}]})",
    // Out-of-line values, attribute bits and a value given as bytes.
    R"({"kind":"object","entries":[{"id":1,"type":9,"text":"2.25"},{"id":2,"type":232,"bytes":"0102030405060708"}]})",
    // A nested object and an array of objects with an empty element.
    R"({"kind":"object","entries":[{"id":9,"type":12,"object":{"kind":"object","entries":[{"id":1,"type":7,
        "text":"4000000000"}]}},{"id":10,"type":28,"array":{"kind":"array","elements":[{"kind":"object",
        "entries":[{"id":2,"type":5,"text":"200"}]},{"kind":"object","entries":[]}]}}]})",
    R"({"kind":"array","elements":[{"kind":"object","entries":[{"id":3,"type":2,"text":"-300"}]}]})",
};

TEST(ToolSdo, JsonAndBinaryRoundTripByteForByte)
{
    for (const char *document : kDocuments) {
        SCOPED_TRACE(document);
        const std::string json = sandbox().writeFile("sdo/in.json", document);
        const std::string first = sandbox().path("sdo/first.bin");
        ASSERT_EQ(runTool({"sdo", "build", json, "-o", first}).exitCode, 0);
        ASSERT_EQ(runTool({"sdo", "check", first}).exitCode, 0);

        const ToolRun dumped = runTool({"sdo", "dump", "--json", first});
        ASSERT_EQ(dumped.exitCode, 0) << dumped.err;
        const std::string again = sandbox().writeFile("sdo/again.json", dumped.out);
        // Through standard input and output this time.
        const ToolRun rebuilt = runTool({"sdo", "build", "-"}, again);
        ASSERT_EQ(rebuilt.exitCode, 0) << rebuilt.err;
        EXPECT_EQ(rebuilt.out, readFile(first));
    }
    unlink(sandbox().path("sdo/in.json").c_str());
    unlink(sandbox().path("sdo/first.bin").c_str());
    unlink(sandbox().path("sdo/again.json").c_str());
}

TEST(ToolSdo, BuildWritesTheLibrarysLayout)
{
    // One 2-byte value inline in its slot: header, then ID 7, type, flags 1, the value and two zero bytes.
    const std::string json = sandbox().writeFile("sdo/one.json", R"({"kind":"object","entries":[{"id":7,"type":6,
        "text":"513"}]})");
    const ToolRun built = runTool({"sdo", "build", json});
    ASSERT_EQ(built.exitCode, 0) << built.err;
    const std::string expected =
        "SDOB" + host16(1) + host16(16) + host16(7) + std::string("\x06\x01", 2) + host16(513) + std::string(2, '\0');
    EXPECT_EQ(built.out, expected);

    const ToolRun tree = runTool({"sdo", "dump", "-"}, sandbox().writeFile("sdo/one.bin", built.out));
    EXPECT_EQ(tree.exitCode, 0);
    EXPECT_NE(tree.out.find("7 (0x0007) uint16 attr 0x00 = 513"), std::string::npos) << tree.out;
    unlink(sandbox().path("sdo/one.json").c_str());
    unlink(sandbox().path("sdo/one.bin").c_str());
}

TEST(ToolSdo, MalformedInputNamesWhereAndFails)
{
    const std::string slot = host16(7) + std::string("\x06\x04", 2) + host16(6) + host16(8);
    const struct {
        const char *name;
        std::string bytes;
        const char *where;
    } cases[] = {
        {"short", "SDOB", "offset 0: shorter than a header"},
        {"magic", "SDXB" + host16(0) + host16(8), "offset 0: neither"},
        {"size past the end", "SDOB" + host16(0) + host16(40), "offset 6: the total size"},
        {"index past the end", "SDOB" + host16(3) + host16(16) + std::string(8, '\0'), "offset 4: the index"},
        {"value past the end", "SDOB" + host16(1) + host16(18) + slot + "ab", "offset 14: a value lies outside"},
        {"trailing bytes", "SDOB" + host16(0) + host16(8) + "x", "offset 8: bytes after the end"},
        {"array element", "SDAB" + host16(1) + host16(16) + "SDXB" + host16(0) + host16(8), "offset 8: an array"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        const std::string file = sandbox().writeFile("sdo/bad.bin", c.bytes);
        const ToolRun checked = runTool({"sdo", "check", file});
        EXPECT_EQ(checked.exitCode, 1);
        EXPECT_EQ(checked.err.rfind("zksupt: " + file + ": " + c.where, 0), 0u) << checked.err;
        EXPECT_NE(checked.err.find(": bad object (0x101)\n"), std::string::npos) << checked.err;
        EXPECT_EQ(runTool({"sdo", "dump", file}).exitCode, 4);
        unlink(file.c_str());
    }
}

TEST(ToolSdo, BadFilesAndBadJsonHaveTheirOwnExitCodes)
{
    const std::string missing = sandbox().path("sdo/missing.bin");
    const ToolRun run = runTool({"sdo", "dump", missing});
    EXPECT_EQ(run.exitCode, 3);
    EXPECT_EQ(run.err, "zksupt: " + missing + ": file not found (0x7)\n");

    const struct {
        const char *json;
        const char *where;
    } cases[] = {
        {"{not json", "not JSON"},
        {R"({"kind":"object","entries":[{"id":7}]})", "$.entries[0]: needs"},
        {R"({"kind":"object","entries":[{"id":7,"type":6,"bytes":"0g"}]})", "$.entries[0]: \"bytes\""},
        {R"({"kind":"object","entries":[{"id":7,"type":6,"text":"many"}]})", "$.entries[0]: \"text\""},
        {R"({"kind":"array","elements":[{"kind":"list"}]})", "$.elements[0]: not an object"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.json);
        const std::string file = sandbox().writeFile("sdo/bad.json", c.json);
        const ToolRun built = runTool({"sdo", "build", file});
        EXPECT_EQ(built.exitCode, 4);
        EXPECT_EQ(built.err.rfind("zksupt: " + file + ": " + c.where, 0), 0u) << built.err;
        EXPECT_TRUE(built.out.empty());
        unlink(file.c_str());
    }
}

}  // namespace
}  // namespace zksupt::test
