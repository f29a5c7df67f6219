#include "support/run_program.h"

#include "support/child.h"
#include "support/sandbox.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <sstream>

extern char **environ;

namespace zksupt::test {

ProgramRun runProgram(const std::string &emulator, const std::string &program, const std::vector<std::string> &args,
                      const std::string &input)
{
    std::vector<std::string> words;
    std::istringstream emulatorWords(emulator);
    for (std::string word; emulatorWords >> word;)
        words.push_back(word);
    words.push_back(program);
    words.insert(words.end(), args.begin(), args.end());
    std::vector<char *> argv;
    for (std::string &word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);

    const std::string outPath = sandbox().path("program.out");
    const std::string errPath = sandbox().path("program.err");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, input.empty() ? "/dev/null" : input.c_str(), O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    posix_spawn_file_actions_addopen(&actions, 2, errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    pid_t pid = -1;
    const int spawned = posix_spawnp(&pid, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);

    ProgramRun run;
    if (spawned != 0)
        return run;
    // A generous bound: the emulated build is far slower than the host.
    const ChildEnd end = waitForChild(pid, std::chrono::seconds(120));
    if (end.finished && WIFEXITED(end.status))
        run.exitCode = WEXITSTATUS(end.status);
    run.out = readFile(outPath);
    run.err = readFile(errPath);
    unlink(outPath.c_str());
    unlink(errPath.c_str());
    return run;
}

}  // namespace zksupt::test
