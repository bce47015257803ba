#include "Terminal.h"
#include "Tool.h"
#include "Writing.h"

#include <algorithm>
#include <csignal>
#include <exception>
#include <iostream>
#include <new>

namespace {

/// Ahead of the objects of static storage, the argument parser's among them: memory may be lacking already. A file that
/// would grow beyond the process's limit is an error like a full disk, not the end of the process.
[[gnu::constructor(101)]] void expectTrouble() {
    Tool::occupyStandardDescriptors();
    std::set_new_handler(Tool::endOutOfMemory);
    std::signal(SIGXFSZ, SIG_IGN);
}

int runTool(int argc, char** argv) {
    CLI::App app("Dump, list and check the data blocks of module images.", "datablock");
    app.set_version_flag("--version", "datablock " TRAVIK_VERSION);
    app.require_subcommand(1);
    app.footer("Exit status: 0 all well, 1 something is wrong in the data (a line each on standard error),\n"
               "2 the call or a file could not be used.");

    app.fallthrough(); // these may stand behind the command as well
    Tool::addTerminalOptions(app);

    std::vector<std::unique_ptr<Tool::Command>> commands;
    for (const auto& declare : {Tool::showCommand, Tool::dumpCommand, Tool::listCommand, Tool::infoCommand,
                                Tool::summaryCommand, Tool::reportCommand, Tool::verifyCommand, Tool::describeCommand,
                                Tool::exportCommand, Tool::importCommand, Tool::buildCommand, Tool::diffCommand,
                                Tool::setCommand, Tool::copyCommand, Tool::removeCommand, Tool::resealCommand})
        commands.push_back(declare(app));
#ifdef TRAVIK_HAS_FLEET
    for (const auto& declare : {Tool::collectCommand, Tool::fleetCommand})
        commands.push_back(declare(app));
#endif
    std::vector<std::string> arguments(argv + std::min(argc, 1), argv + argc);
    // Here "++" ends the options of a subcommand, unless it is spelt as the file that it names.
    std::ranges::replace(arguments, "++", "./++");
    Tool::joinBackupFile(arguments);
    std::ranges::reverse(arguments);
    try {
        app.parse(arguments);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? Tool::AllWell : Tool::CallFailed;
    }
    const auto subcommands = app.get_subcommands({});
    for (std::size_t i = 0; i < commands.size(); ++i) {
        if (subcommands[i]->parsed())
            return commands[i]->run();
    }
    return Tool::CallFailed;
}

} // namespace

int main(int argc, char** argv) {
    const Tool::StandardStreams streams;
    try {
        const int status = runTool(argc, argv);
        Tool::endPager();
        return status;
    } catch (const std::bad_alloc&) {
        Tool::endOutOfMemory(); // from an allocation that asks no handler
    } catch (const std::exception& error) {
        Tool::endPager();
        std::cerr << "datablock: " << error.what() << '\n';
        return Tool::CallFailed;
    }
}
