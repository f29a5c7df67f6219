// The guide's examples are complete programs: each one runs in the sandbox
// installation, ends with status 0, says what it did, and leaves behind what
// it claims to have written.
#include <gtest/gtest.h>

#include "support/run_program.h"
#include "support/sandbox.h"

#include <string>

namespace {

using zksupt::test::readFile;
using zksupt::test::runProgram;
using zksupt::test::sandbox;

struct Example {
    const char *name;
    const char *saying;    // a line of its output
    const char *file;      // a file it writes, under the sandbox (empty: none kept)
    const char *fileText;  // a text that file holds
};

const Example kExamples[] = {
    {"named_objects", "the other process waited for its turn at the named mutex\n", "", ""},
    {"sdo", "capacity read back: 4000787030016 (same)\n", "", ""},
    {"ini_and_properties", "Network.timeout: KEY_NOT_FOUND, value 30\n", "suite/meridian/ini/ini/guide.ini",
     "[Network]\nport=5986\n"},
    {"logs", "event recorded in zksys32.log (found) and zksys32.xml\n", "var/log/log/zksys32.xml",
     "The guide service started."},
};

class GuideExample : public testing::TestWithParam<Example> {};

TEST_P(GuideExample, RunsInTheSandboxAndDoesWhatItSays)
{
    const Example &example = GetParam();
    const auto run = runProgram(ZKSUPT_GUIDE_EMULATOR, std::string(ZKSUPT_GUIDE_DIR "/guide_") + example.name, {});
    EXPECT_EQ(run.exitCode, 0) << run.out << run.err;
    EXPECT_NE(run.out.find(example.saying), std::string::npos) << run.out;
    EXPECT_EQ(run.err, "");
    if (*example.file != '\0') {
        const std::string written = readFile(sandbox().path(example.file));
        EXPECT_NE(written.find(example.fileText), std::string::npos) << example.file << ":\n" << written;
    }
}

INSTANTIATE_TEST_SUITE_P(Guide, GuideExample, testing::ValuesIn(kExamples),
                         [](const testing::TestParamInfo<Example> &param) { return std::string(param.param.name); });

}  // namespace
