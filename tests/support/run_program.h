// Runs a built program as a user would: a separate process with the test's
// environment (so ZKSUPT_REGISTRY points into the sandbox), standard input
// from a file, its output captured, and a bound on how long it may run. In a
// cross build the emulator comes first.
#pragma once

#include <string>
#include <vector>

namespace zksupt::test {

struct ProgramRun {
    int exitCode = -1;  // -1: killed at the bound or did not start
    std::string out;
    std::string err;
};

// Runs emulator words (space-separated, may be empty), then program and args;
// input, when not empty, is a file for its standard input.
ProgramRun runProgram(const std::string &emulator, const std::string &program, const std::vector<std::string> &args,
                      const std::string &input = "");

}  // namespace zksupt::test
