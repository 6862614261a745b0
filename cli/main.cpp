// SPDX-License-Identifier: MIT
#include "cli/Commands.h"

#include "host/recording/RecordingException.h"

#include <CLI/CLI.hpp>

#include <exception>
#include <iostream>
#include <memory>

namespace {

constexpr const char* kVersion = "quillmere " QUILLMERE_VERSION;

CLI::App& addCommand(CLI::App& program, const char* name, const char* meaning) {
    CLI::App& command = *program.add_subcommand(name, meaning);
    command.set_version_flag("--version", kVersion, "Print the version and exit.");
    return command;
}

int call(CLI::App& program, int count, char** arguments) {
    CLI::App& runApp = addCommand(program, "run", "Run a graph over its recordings and write the results.");
    CLI::App& checkApp =
        addCommand(program, "check", "Tell whether a graph could run, and everything that is wrong.");
    CLI::App& blocksApp = addCommand(program, "blocks", "List the block types, or show one.");
    CLI::App& responseApp =
        addCommand(program, "response", "Measure what a block does to each frequency: CSV, and a picture.");
    CLI::App& ctlApp =
        addCommand(program, "ctl", "Read and change the settings of a run with --live and --control.");
    Cli::RunCommand run(runApp);
    Cli::CheckCommand check(checkApp);
    Cli::BlocksCommand blocks(blocksApp);
    Cli::ResponseCommand response(responseApp);
    Cli::CtlCommand ctl(ctlApp);
    try {
        program.parse(count, arguments);
    } catch (const CLI::ParseError& error) {
        return program.exit(error) == 0 ? Cli::kDone : Cli::kNothingRun;
    }
    Cli::Command& command = runApp.parsed()        ? static_cast<Cli::Command&>(run)
                            : checkApp.parsed()    ? static_cast<Cli::Command&>(check)
                            : responseApp.parsed() ? static_cast<Cli::Command&>(response)
                            : ctlApp.parsed()      ? static_cast<Cli::Command&>(ctl)
                                                   : static_cast<Cli::Command&>(blocks);
    return command.run();
}

} // namespace

int main(int count, char** arguments) {
    CLI::App program("Runs graphs of signal-processing blocks over recordings.", "quillmere");
    program.set_version_flag("--version", kVersion, "Print the version and exit.");
    program.require_subcommand(1);
    try {
        return call(program, count, arguments);
    } catch (const Cli::UsageError& error) {
        std::cerr << "quillmere: " << error.text << "\n";
    } catch (const Quillmere::Host::InterruptedException& error) {
        // Before its first round, a run waited for somebody to read a result.
        std::cerr << "quillmere: " << error.what() << "\n";
        return Cli::kFailedMidway;
    } catch (const std::exception& error) {
        // Wrong graphs, plug-ins and recordings: a run that had begun ends in its command.
        std::cerr << error.what() << "\n";
    }
    return Cli::kNothingRun;
}
