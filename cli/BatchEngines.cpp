// SPDX-License-Identifier: MIT
#include "cli/BatchEngines.h"

#include "cli/GraphArguments.h"
#include "cli/Usage.h"
#include "cli/UsageError.h"
#include "host/batch/ShellWords.h"
#include "host/batch/SlurmScript.h"
#include "host/text/NearestName.h"
#include "host/text/Printable.h"

#include <CLI/CLI.hpp>

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <iostream>

namespace Cli {

using namespace Quillmere::Host;

namespace {

constexpr std::int64_t kMostPerTask = 1'000'000;
constexpr const char* kSlurm = "slurm";
constexpr const char* kDask = "dask";
constexpr std::string_view kAtScheduler = "dask://";

std::string checkName(const std::string& text) {
    const std::string_view place = std::string_view(text).substr(std::min(text.size(), kAtScheduler.size()));
    const std::size_t colon = place.rfind(':');
    const bool hasPlace = colon != std::string_view::npos && colon > 0 && colon + 1 < place.size();
    if (text == kSlurm || text == kDask || (text.starts_with(kAtScheduler) && hasPlace)) return {};
    const std::string found = "the engine '" + printable(text, kLongestName) + "'";
    if (text.starts_with(kDask)) return Complaint{{}, found, "dask://HOST:PORT, or dask alone"}.getText();
    return Complaint::unknown({}, found, text, {kDask, kSlurm}).getText();
}

} // namespace

void EngineArguments::enter(CLI::App& command) {
    CLI::Option* const where =
        command
            .add_option(
                "--engine", engine,
                "Let a cluster run it: Dask, whose scheduler is there, or Slurm, as an array of jobs.")
            ->type_name("dask://HOST:PORT|dask|slurm")
            ->check(checkName);
    command
        .add_flag(
            "--ship", ships,
            "Send recordings to the workers of Dask and bring results back: there is no folder for all.")
        ->needs(where);
    command
        .add_option("--per-task", perTask, "So many recordings for each job of the array; 50 if not said.")
        ->type_name("N")
        ->check(wholeNumber(1, kMostPerTask))
        ->needs(where);
    command.add_option("--slurm", slurm, "Options of sbatch, as in 'time=01:00:00 mem=2G cpus-per-task=4'.")
        ->type_name("NAME=VALUE...")
        ->needs(where);
    command.add_flag("--print", prints, "Print the script for Slurm, and don't submit it.")->needs(where);
}

void EngineArguments::check(bool hasGraph, const std::string& plan, bool hasLines) const {
    const auto refuse = [&](bool isFound, const std::string& found, const std::string& expected) {
        if (isFound) throw UsageError({{"--engine"}, found, expected});
    };
    refuse(ships && !getIsDask(), "--ship beside " + engine, "it with dask alone");
    refuse((!slurm.empty() || prints) && !getIsSlurm(), "--slurm or --print beside " + engine,
           "them with slurm alone");
    refuse(getIsSlurm() && hasLines, "--lines beside slurm", "all lines of the plan");
    refuse(getIsDask() && hasGraph && !plan.empty(), "GRAPH and --plan beside dask", "one of them");
}

bool EngineArguments::getIsDask() const {
    return engine.starts_with(kDask);
}

bool EngineArguments::getIsSlurm() const {
    return engine == kSlurm;
}

std::string EngineArguments::getScheduler() const {
    return engine == kDask ? "" : "tcp://" + engine.substr(kAtScheduler.size());
}

std::string slurmText(const EngineArguments& arguments, const std::string& plan, std::size_t lines) {
    SlurmWishes wishes{.plan = plan, .lines = lines, .perTask = arguments.perTask};
    wishes.name = "quillmere";
    wishes.program = std::filesystem::path(ownPath()).parent_path().string();
    wishes.options = splitShellLine(arguments.slurm).value_or(std::vector<std::string>{arguments.slurm});
    return slurmScript(wishes);
}

void submitToSlurm(const std::string& script) {
    std::cout.flush();
    const pid_t process = ::fork();
    if (process == 0) {
        ::execlp("sbatch", "sbatch", script.c_str(), nullptr);
        ::_exit(errno == ENOENT ? 127 : 126);
    }
    int status = 0;
    while (::waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    if (process > 0 && WIFEXITED(status) && WEXITSTATUS(status) == 0) return;
    if (process > 0 && WIFEXITED(status) && WEXITSTATUS(status) == 127)
        throw UsageError(
            {{"--engine"}, "no sbatch on this machine", "one of a cluster with Slurm, or --print"});
    throw UsageError({{"--engine"},
                      "that sbatch hasn't taken '" + printable(script, kLongestName) + "'",
                      "a script that fits the cluster; --slurm has its options, and fewer jobs wait with a "
                      "larger --per-task"});
}

} // namespace Cli
