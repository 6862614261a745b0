// SPDX-License-Identifier: MIT
#include "cli/Commands.h"

#include "cli/SideFile.h"
#include "cli/Usage.h"
#include "cli/UsageError.h"
#include "host/batch/BatchPlan.h"
#include "host/batch/BatchSummary.h"
#include "host/batch/FileHash.h"
#include "host/picture/PictureFile.h"
#include "host/text/Counted.h"
#include "host/text/NearestName.h"
#include "host/text/Printable.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <limits>
#include <utility>

namespace Cli {

using namespace Quillmere::Host;

namespace {

constexpr const char* kIn = "--in";
constexpr const char* kPlanBegin = "quillmere run ";
constexpr std::int64_t kMostJobs = 1024;

/// Two numbers counted from 1, or one that is both; 0 for what isn't that.
std::pair<std::size_t, std::size_t> rangeOf(const std::string& text) {
    const auto numberOf = [](const std::string& digits) {
        std::size_t number = 0;
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
        return error == std::errc() && end == digits.data() + digits.size() ? number : 0;
    };
    const std::size_t sign = text.find('-');
    const std::size_t first = numberOf(text.substr(0, sign));
    const std::size_t last = sign == std::string::npos ? first : numberOf(text.substr(sign + 1));
    return first <= last ? std::pair(first, last) : std::pair<std::size_t, std::size_t>(0, 0);
}

std::string refusal(const std::string& text, const std::string& expected) {
    return Complaint{{}, "'" + printable(text, kLongestName) + "'", expected}.getText();
}

std::string checkRange(const std::string& text) {
    return rangeOf(text).first > 0 ? "" : refusal(text, "FIRST-LAST, counted from 1");
}

/// Of files in each recording's folder.
std::string checkName(const std::string& text) {
    const bool isTaken = text == RunStatus::kFileName;
    if (!text.empty() && text != "-" && !isTaken && text.find('/') == std::string::npos) return {};
    return refusal(text, "a name in the folder of each recording");
}

std::string checkStatistic(const std::string& text) {
    if (findStatistic(text)) return {};
    return Complaint::unknown({}, "the statistic '" + printable(text, kLongestName) + "'", text,
                              getStatisticNames())
        .getText();
}

} // namespace

BatchCommand::BatchCommand(CLI::App& command) {
    command.add_option("GRAPH", arguments.graph, "The graph file, YAML or JSON.")->type_name("FILE");
    enterRecordings(command);
    enterRules(command);
    enterResults(command);
    elsewhere.enter(command);
    arguments.enterChanges(command);
    arguments.enterRules(command);
    command.add_flag("--quiet", isQuiet, "Print failures only.");
}

void BatchCommand::enterRecordings(CLI::App& command) {
    command.add_option(kIn, patterns, "The recordings, as in 'study/**/*.csv'; ** is any folders.")
        ->type_name("PATTERN");
    command.add_option("--out", out, "Where each recording gets a folder of its own, as they lie.")
        ->type_name("FOLDER");
    command.add_option("--source", source, "The source that reads the recording, of several.")
        ->type_name("BLOCK");
    command
        .add_option("--table", table,
                    "What is known of them: rows by path or id; columns set:BLOCK.PROPERTY set that.")
        ->type_name("FILE");
    CLI::Option* const planOption =
        command
            .add_option(
                "--plan", planFile,
                "With GRAPH, write what would be called, a line a recording, and run nothing; without it, "
                "run that.")
            ->type_name("FILE");
    command.add_option("--lines", lines, "Run these lines of the plan only.")
        ->type_name("FIRST-LAST")
        ->check(checkRange)
        ->needs(planOption);
}

void BatchCommand::enterRules(CLI::App& command) {
    command.add_option("--jobs", jobs, "So many at once; else as many as there are cores.")
        ->type_name("N")
        ->check(wholeNumber(1, kMostJobs));
    CLI::Option* const resume =
        command.add_flag("--resume", resumes, "Leave out what is done and hasn't changed.");
    command
        .add_flag("--keep-changed", keepsChanged,
                  "With --resume: also where graph, recording, settings or versions have changed.")
        ->needs(resume);
    command.add_flag("--dry-run", isDry, "Tell what would be called, and run nothing.");
}

void BatchCommand::enterResults(CLI::App& command) {
    command.add_flag("--collect", collects, "Only make summary.csv anew, of what is in --out.");
    command
        .add_option(
            "--statistic", statistics,
            "Summarise each column of each result: mean, median, std, min, max, count, p95 and so on.")
        ->type_name("NAME,...")
        ->delimiter(',')
        ->check(checkStatistic);
    command.add_option("--picture", picture, "Draw the results of each recording into its folder.")
        ->type_name("NAME.svg|NAME.png")
        ->check(checkName);
    CLI::Option* const page =
        command.add_option("--report", report, "Write a page for a browser into the folder of each.")
            ->type_name("NAME.html")
            ->check(checkName);
    enterWatched(command, "--watch", watched, page);
}

void BatchCommand::checkOptions() const {
    const auto require = [](bool isGiven, const char* what, const char* value) {
        if (!isGiven) throw UsageError({{}, std::string("no ") + what, value});
    };
    if (collects) {
        if (!arguments.graph.empty() || !patterns.empty() || !planFile.empty())
            throw UsageError(
                {{"--collect"}, "GRAPH, --in or --plan beside it", "--out alone, and nothing is run"});
        return require(!out.empty(), "--out", "the folder with the results");
    }
    if (!report.empty()) checkPageName("--report", report);
    if (!picture.empty()) {
        Complaints complaints;
        pictureFormOf(picture, {"--picture"}, complaints);
        complaints.raise();
    }
    elsewhere.check(!arguments.graph.empty(), planFile, !lines.empty());
    if (arguments.graph.empty() && !planFile.empty()) return checkPlanAlone();
    require(!arguments.graph.empty(), "GRAPH", "one, as 'quillmere batch --help' tells");
    require(!patterns.empty(), kIn, "--in 'FOLDER/**/*.csv' or the like");
    require(!out.empty(), "--out", "--out FOLDER, for the results");
}

/// The lines of a plan say all of it, as it was when the plan was made.
void BatchCommand::checkPlanAlone() const {
    const auto refuse = [](bool isGiven, const char* option) {
        if (isGiven) throw UsageError({{}, std::string(option) + " without GRAPH", "both, or --plan alone"});
    };
    refuse(!patterns.empty(), kIn);
    refuse(!arguments.settings.empty(), "--set");
    refuse(!arguments.parameters.empty(), "--param");
    refuse(!arguments.inputs.empty(), "--input");
    refuse(!arguments.plugins.plugins.empty(), "--plugin");
    refuse(arguments.isStrict, "--strict");
    refuse(!source.empty(), "--source");
    refuse(!table.empty(), "--table");
    refuse(!picture.empty(), "--picture");
    refuse(!report.empty(), "--report");
}

ExitCode BatchCommand::run() {
    checkOptions();
    if (collects) {
        const std::vector<std::string> folders = findResultFolders(out);
        if (folders.empty())
            throw UsageError(
                {{"--out"},
                 "no " + std::string(RunStatus::kFileName) + " below '" + printable(out, kLongestName) + "'",
                 "the results of a batch"});
        return writeSummary(folders, {});
    }
    // Taken first: whoever changes the graph from now on is told.
    const std::string graphHash = hashOfFile(arguments.graph);
    const BatchPlan entries = plan();
    if (elsewhere.getIsSlurm()) return runOnSlurm(entries, graphHash);
    if (!planFile.empty() && !arguments.graph.empty()) return writePlan(entries);
    if (isDry && !resumes) {
        std::cout << entries.toText();
        std::cerr << counted(entries.entries.size(), "recording") << " to run\n";
        return kDone;
    }
    if (!isDry) checkBegin();
    if (!isDry && elsewhere.getIsDask()) return runOnDask(entries, graphHash);
    return runPlan(entries, graphHash);
}

BatchPlan BatchCommand::plan() const {
    if (!arguments.graph.empty()) return planOfGraph();
    const auto [first, last] =
        lines.empty() ? std::pair(std::size_t{1}, std::numeric_limits<std::size_t>::max()) : rangeOf(lines);
    Complaints complaints;
    BatchPlan read = BatchPlan::fromFile(planFile, first, last, complaints);
    complaints.raise(false);
    return read;
}

ExitCode BatchCommand::writePlan(const BatchPlan& made) const {
    BatchPlan written = made;
    for (BatchPlan::Entry& entry : written.entries) {
        if (resumes) entry.words.emplace_back("--resume");
        if (keepsChanged) entry.words.emplace_back("--keep-changed");
    }
    const ResultOptions options{
        .overwrites = arguments.overwrites,
        .looksOwn = [](std::string_view text) { return text.starts_with(kPlanBegin); },
        .isOfGraph = false};
    checkSideFile("--plan", planFile, options);
    if (!writeSideFile(planFile, options, written.toText())) return kFailedMidway;
    if (!isQuiet && !elsewhere.getIsSlurm())
        std::cout << counted(written.entries.size(), "recording") << " in " << planFile << "\n";
    return kDone;
}

} // namespace Cli
