#include "run_tool.h"

#include "support/run_program.h"

namespace zksupt::test {

ToolRun runTool(const std::vector<std::string> &args, const std::string &input)
{
    const ProgramRun run = runProgram(ZKSUPT_TOOL_EMULATOR, ZKSUPT_TOOL_PATH, args, input);
    return ToolRun{run.exitCode, run.out, run.err};
}

}  // namespace zksupt::test
