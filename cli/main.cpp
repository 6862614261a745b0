// SPDX-License-Identifier: MIT
#include "cli/Commands.h"

#include "cli/Completion.h"
#include "cli/StandardStreams.h"
#include "cli/Usage.h"
#include "cli/UsageError.h"
#include "host/picture/PictureFile.h"
#include "host/plugins/PluginLibrary.h"
#include "host/recording/RecordingForms.h"

#include <CLI/CLI.hpp>

#include <exception>
#include <iostream>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace {

std::string listed(const std::vector<std::string>& forms) {
    std::string text;
    for (const std::string& form : forms)
        text += (text.empty() ? "" : ", ") + form;
    return text;
}

/// The version, and the forms of recordings and of pictures, some of which not every build can read or draw.
std::string versionText() {
    return "quillmere " QUILLMERE_VERSION "\nrecordings: " + listed(Quillmere::Host::getRecordingForms()) +
           "\npictures: " + listed(Quillmere::Host::getPictureForms());
}

CLI::App& addCommand(CLI::App& program, const char* name, const char* meaning) {
    CLI::App& command = *program.add_subcommand(name, meaning);
    command.set_version_flag("--version", versionText(), "Print the version and exit.");
    return command;
}

template <class Command>
std::unique_ptr<Cli::Command> make(CLI::App& command) {
    return std::make_unique<Command>(command);
}

struct CommandEntry {
    const char* name;
    const char* meaning;
    std::unique_ptr<Cli::Command> (*make)(CLI::App& command);
};

/// In the order in which they are listed.
const CommandEntry kCommands[] = {
    {"run", "Run a graph over its recordings and write the results.", make<Cli::RunCommand>},
    {"batch", "Run a graph over many recordings, side by side, each with a folder of its own.",
     make<Cli::BatchCommand>},
    {"check", "Tell whether a graph could run, and everything that is wrong.", make<Cli::CheckCommand>},
    {"inspect", "Tell what is in a recording, and write a graph that reads it.", make<Cli::InspectCommand>},
    {"plot", "Draw recordings and results: a picture, or curves in the terminal.", make<Cli::PlotCommand>},
    {"blocks", "List the block types, or show one.", make<Cli::BlocksCommand>},
    {"response", "Measure what a block does to each frequency: CSV, and a picture.",
     make<Cli::ResponseCommand>},
    {"ctl", "Read and change the settings of a run with --live and --control.", make<Cli::CtlCommand>},
};

Cli::ExitCode call(CLI::App& program, int count, char** arguments) {
    std::vector<std::pair<const CLI::App*, std::unique_ptr<Cli::Command>>> commands;
    for (const CommandEntry& entry : kCommands) {
        CLI::App& command = addCommand(program, entry.name, entry.meaning);
        commands.emplace_back(&command, entry.make(command));
    }
    CLI::App& help = addCommand(program, "help", "Tell what a command is for and what it takes.");
    std::string topic;
    help.add_option("COMMAND", topic, "One of the commands; without it, all are listed.");
    // For packagers: the package has what it prints.
    CLI::App& completion = addCommand(program, "completion", "Print a script that completes, for bash.");
    completion.group("");
    CLI::App& worker = addCommand(program, Cli::kWorkerCommand, "Run what a batch gives out.");
    worker.group("");
    // Commands that are there already don't take it over.
    program.footer("Ends with 0 when all is done, with 1 when a run failed midway or something could not be "
                   "written,\nand with 2 when nothing was run.\n");

    Cli::requireCommand(program, {arguments + 1, arguments + count});
    try {
        program.parse(count, arguments);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() != 0) Cli::refuseCall(program, error);
        program.exit(error); // help, or the version
        return Cli::kDone;
    }
    for (const auto& [application, command] : commands)
        if (application->parsed()) return command->run();
    if (worker.parsed()) return Cli::BatchWorkerCommand(worker).run();
    if (completion.parsed())
        Cli::printCompletion(program);
    else
        Cli::printHelp(program, topic);
    return Cli::kDone;
}

} // namespace

int main(int count, char** arguments) {
    Cli::guardStandardStreams();
    int code = Cli::kNothingRun;
    try {
        CLI::App program("Runs graphs of signal-processing blocks over recordings.", "quillmere");
        program.set_version_flag("--version", versionText(), "Print the version and exit.");
        program.require_subcommand(1);
        code = Cli::finishStandardOutput(call(program, count, arguments));
    } catch (const Cli::UsageError& error) {
        std::cerr << "quillmere: " << error.what() << "\n";
    } catch (const std::bad_alloc&) {
        // Nothing is put together here: there may be no memory for that either.
        std::cerr << Cli::kOutOfMemory;
    } catch (const std::exception& error) {
        // Wrong graphs, plug-ins and recordings: a run that had begun ends in its command.
        std::cerr << error.what() << "\n";
    } catch (...) {
        std::cerr
            << "quillmere: found something raised that is no std::exception; expected plug-ins not to\n";
    }
    // Plug-ins are stopped by now.
    for (const std::string& warning : Quillmere::Host::PluginLibrary::takeStopFailures())
        std::cerr << warning << "\n";
    return code;
}
