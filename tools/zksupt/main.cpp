// zksupt: shows and repairs what the library keeps on disk and in the kernel.
#include "common.h"

#include <zksupt/frame.h>

#include <iostream>
#include <string>
#include <vector>

namespace {

std::string versionText()
{
    return "zksupt " ZKSUPT_TOOL_VERSION " (library interface " + std::to_string(SUPTGetMajorVersion()) + "." +
           std::to_string(SUPTGetMinorVersion()) + "." + std::to_string(SUPTGetRevision()) + ")";
}

// "help [COMMAND...]": the application's help, or that of the named (sub)command.
void addHelpCommand(CLI::App &app, zktool::Outcome &outcome)
{
    auto words = std::make_shared<std::vector<std::string>>();
    CLI::App *help = app.add_subcommand("help", "Show help for zksupt or one of its commands");
    help->add_option("command", *words, "Command (and subcommand) to describe");
    help->callback([&app, &outcome, words] {
        CLI::App *target = &app;
        for (const std::string &word : *words) {
            CLI::App *next = nullptr;
            for (CLI::App *sub : target->get_subcommands([](CLI::App *) { return true; })) {
                if (sub->get_name() == word)
                    next = sub;
            }
            if (!next) {
                std::cerr << "zksupt: help: no command \"" << word << "\"\n";
                outcome.exitCode = zktool::kExitUsage;
                return;
            }
            target = next;
        }
        std::cout << target->get_formatter()->make_help(target, target->get_name(), CLI::AppFormatMode::Normal);
    });
}

}  // namespace

int main(int argc, char **argv)
{
    CLI::App app{"Show and repair the files and kernel objects of the zksupt library", "zksupt"};
    app.set_version_flag("--version", versionText());
    app.require_subcommand(1);
    zktool::Outcome outcome;
    addHelpCommand(app, outcome);
    zktool::addSdoCommands(app, outcome);
    zktool::addIniCommands(app, outcome);
    zktool::addPropCommands(app, outcome);
    zktool::addLogCommands(app, outcome);
    zktool::addPathCommands(app, outcome);
    zktool::addIpcCommands(app, outcome);
    zktool::addStringCommands(app, outcome);
    zktool::addDigestCommands(app, outcome);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        int code = app.exit(error);
        return code == 0 ? zktool::kExitOk : zktool::kExitUsage;
    }
    return outcome.exitCode;
}
