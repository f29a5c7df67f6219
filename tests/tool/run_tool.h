// Runs the built zksupt as a user would: a separate process with the test's
// environment (so ZKSUPT_REGISTRY points into the sandbox), standard input
// from a file, and its output captured.
#pragma once

#include <string>
#include <vector>

namespace zksupt::test {

struct ToolRun {
    int exitCode = -1;  // -1: killed at the bound or did not start
    std::string out;
    std::string err;
};

// Runs the tool with args; input, when not empty, is a file for its standard input.
ToolRun runTool(const std::vector<std::string> &args, const std::string &input = "");

}  // namespace zksupt::test
