// SPDX-License-Identifier: MIT
#include "cli/Commands.h"

#include "cli/BatchReport.h"
#include "cli/SideFile.h"
#include "cli/StopSignals.h"
#include "cli/Usage.h"
#include "cli/UsageError.h"
#include "host/batch/BatchPlan.h"
#include "host/batch/BatchRun.h"
#include "host/batch/BatchSummary.h"
#include "host/batch/FileHash.h"
#include "host/batch/ResultFolder.h"
#include "host/batch/ShellWords.h"
#include "host/batch/SlurmScript.h"
#include "host/graph/Graph.h"
#include "host/graph/GraphPlugins.h"
#include "host/text/Counted.h"
#include "host/text/NearestName.h"
#include "host/text/Printable.h"

#include <CLI/CLI.hpp>

#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <limits>
#include <set>
#include <utility>

namespace Cli {

using namespace Quillmere::Host;

namespace {

constexpr const char* kIn = "--in";
constexpr const char* kPlanBegin = "quillmere run ";
constexpr std::int64_t kMostJobs = 1024;
constexpr std::int64_t kMostPerTask = 1'000'000;
constexpr const char* kSlurm = "slurm";

std::size_t coreCount() {
    cpu_set_t cores;
    const int count = ::sched_getaffinity(0, sizeof cores, &cores) == 0 ? CPU_COUNT(&cores) : 1;
    return static_cast<std::size_t>(std::max(1, count));
}

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
    if (!text.empty() && text != "-" && text.find('/') == std::string::npos) return {};
    return refusal(text, "a name in the folder of each recording");
}

std::string checkStatistic(const std::string& text) {
    if (findStatistic(text)) return {};
    return Complaint::unknown({}, "the statistic '" + printable(text, kLongestName) + "'", text,
                              getStatisticNames())
        .getText();
}

std::string checkEngine(const std::string& text) {
    if (text == kSlurm) return {};
    return Complaint::unknown({}, "the engine '" + printable(text, kLongestName) + "'", text, {kSlurm})
        .getText();
}

/// Each worker takes two files here.
void raiseFileLimit() {
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur == limit.rlim_max) return;
    limit.rlim_cur = limit.rlim_max;
    ::setrlimit(RLIMIT_NOFILE, &limit); // as many as there may be, then
}

ResultOptions summaryOptions(bool overwrites) {
    return {.overwrites = overwrites,
            .looksOwn = [](std::string_view text) { return text.starts_with(kSummaryBegin); },
            .isOfGraph = false};
}

/// The options of a call as its words have them.
GraphArguments argumentsOf(const BatchPlan::Entry& entry) {
    GraphArguments arguments;
    for (std::size_t i = 0; i + 1 < entry.words.size(); ++i) {
        const std::string& word = entry.words[i];
        if (word == "--input")
            arguments.inputs.push_back(entry.words[++i]);
        else if (word == "--set")
            arguments.settings.push_back(entry.words[++i]);
        else if (word == "--param")
            arguments.parameters.push_back(entry.words[++i]);
        else if (word == "--note")
            ++i;
    }
    return arguments;
}

void listDoubts(const std::vector<std::string>& names, const std::string& table, const std::string& what) {
    if (names.empty()) return;
    Warning warning;
    warning.where.file = table;
    warning.text = what + listOfNames(names);
    std::cerr << warning.getText() << "\n";
}

} // namespace

BatchCommand::BatchCommand(CLI::App& command) {
    command.add_option("GRAPH", arguments.graph, "The graph file, YAML or JSON.")->type_name("FILE");
    enterRecordings(command);
    enterRules(command);
    enterResults(command);
    enterEngine(command);
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
    planOption =
        command
            .add_option(
                "--plan", planFile,
                "With GRAPH, write what would be called, a line a recording, and run nothing; without it, "
                "run that.")
            ->type_name("FILE");
    linesOption = command.add_option("--lines", lines, "Run these lines of the plan only.")
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
    command.add_option("--watch", watched, "Show in the report what this output sends, too.")
        ->type_name("BLOCK.PIN")
        ->allow_extra_args(false)
        ->needs(page);
}

void BatchCommand::enterEngine(CLI::App& command) {
    CLI::Option* const cluster =
        command
            .add_option("--engine", engine,
                        "With --plan: let a cluster with Slurm run it, by an array of jobs.")
            ->type_name("slurm")
            ->check(checkEngine)
            ->needs(planOption);
    command
        .add_option("--per-task", perTask, "So many recordings for each job of the array; 50 if not said.")
        ->type_name("N")
        ->check(wholeNumber(1, kMostPerTask))
        ->needs(cluster);
    command.add_option("--slurm", slurm, "Options of sbatch, as in 'time=01:00:00 mem=2G cpus-per-task=4'.")
        ->type_name("NAME=VALUE...")
        ->needs(cluster);
    CLI::Option* const print =
        command.add_flag("--print", prints, "Print the script, which sbatch takes.")->needs(cluster);
    cluster->needs(print)->excludes(linesOption);
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

/// What makes every recording fail, or the summary of them, is refused before the first.
void BatchCommand::checkBegin() const {
    if (out.empty()) return;
    namespace fs = std::filesystem;
    std::error_code error;
    fs::path there = fs::absolute(out, error).lexically_normal();
    while (!fs::exists(fs::symlink_status(there, error)) && there.has_relative_path())
        there = there.parent_path();
    const std::string name = "'" + printable(there.string(), kLongestName) + "'";
    if (!fs::is_directory(there, error)) throw UsageError({{"--out"}, "the file " + name, "a folder"});
    if (::access(there.c_str(), W_OK | X_OK) != 0)
        throw UsageError({{"--out"}, "the folder " + name + ", which can't be written", "one that can"});
    const std::string summary = (fs::path(out) / kSummaryName).string();
    if (fs::exists(summary, error)) checkSideFile("--out", summary, summaryOptions(arguments.overwrites));
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
        return writeSummary(folders);
    }
    // Taken first: whoever changes the graph from now on is told.
    const std::string graphHash = hashOfFile(arguments.graph);
    const BatchPlan entries = plan();
    if (!planFile.empty() && !arguments.graph.empty()) return writePlan(entries);
    if (!engine.empty()) {
        printScript(entries);
        return kDone;
    }
    if (isDry && !resumes) {
        std::cout << entries.toText();
        std::cerr << counted(entries.entries.size(), "recording") << " to run\n";
        return kDone;
    }
    if (!isDry) checkBegin();
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

/// Files of the batch itself, and of other sources, that a pattern may find beside recordings.
std::vector<std::string> BatchCommand::leftOut() const {
    std::vector<std::string> names{out, arguments.graph, table, planFile};
    for (const std::string& input : arguments.inputs)
        names.push_back(splitSetting(input, "--input", "block=FILE").second);
    return names;
}

/// The graph is checked before anything is touched, with the first recording's settings and with those of
/// each row of the table.
BatchPlan BatchCommand::planOfGraph() const {
    BlockCatalogue catalogue = loadCatalogue(arguments.plugins);
    Complaints complaints;
    const GraphDescription description = GraphDescription::fromFile(arguments.graph, complaints);
    loadPlugins(description, catalogue, complaints);
    complaints.raise(false);
    PlanWishes wishes{
        .graph = arguments.graph, .source = sourceOf(catalogue), .out = out, .words = wordsForEach()};
    Complaints search;
    const FoundFiles found = findFiles(patterns, leftOut(), kIn, search);
    printDoubts(search);
    search.raise(arguments.isStrict);
    std::optional<StudyTable> rows;
    if (!table.empty()) wishes.table = &rows.emplace(table, complaints);
    complaints.raise(false);
    PlanDoubts doubts;
    BatchPlan made = makePlan(found, wishes, doubts, complaints);
    complaints.raise(false);
    checkEntries(made, description, catalogue);
    listDoubts(doubts.withoutRow, table, "no row for ");
    listDoubts(doubts.unused, table, "no recording for ");
    return made;
}

void BatchCommand::checkEntries(const BatchPlan& made, const GraphDescription& description,
                                const BlockCatalogue& catalogue) const {
    std::set<std::vector<std::string>> checked;
    for (const BatchPlan::Entry& entry : made.entries)
        if (checked.insert(entry.settings).second) checkEntry(entry, description, catalogue);
}

void BatchCommand::checkEntry(const BatchPlan::Entry& entry, const GraphDescription& description,
                              const BlockCatalogue& catalogue) const {
    GraphChanges changes = changesOf(argumentsOf(entry));
    // Those of the table stand behind the others.
    for (std::size_t i = 0; i < entry.settings.size(); ++i)
        changes.settings[changes.settings.size() - entry.settings.size() + i].option =
            entry.row.file + ":" + std::to_string(entry.row.line) + ": " + StudyTable::kSetting +
            printable(entry.settings[i], kLongestName);
    Complaints complaints;
    Complaints ignored; // which the graph complains of, too
    changes.outputs =
        outputsInto(entry.folder, "--out", description.with(changes, ignored).resolved(ignored), catalogue);
    const Graph graph(description.with(changes, complaints), catalogue, complaints);
    complaints.raise(arguments.isStrict);
}

/// The source that reads the recording: the only one with a file, of those that no option gives one.
std::string BatchCommand::sourceOf(const BlockCatalogue& catalogue) const {
    Complaints ignored; // settings and files that recordings bring aren't there yet
    const GraphDescription description = GraphDescription::fromFile(arguments.graph, ignored);
    const Graph graph(description.with(changesOf(arguments), ignored), catalogue, ignored);
    std::vector<std::string> sources;
    for (const Graph::Node& node : graph.getNodes()) {
        const std::string& id = node.description->id;
        const auto isIt = [&](const std::string& input) { return input.starts_with(id + "="); };
        if (node.source == nullptr || node.file == nullptr) continue;
        const bool isGiven = std::any_of(arguments.inputs.begin(), arguments.inputs.end(), isIt);
        if (id == source && isGiven)
            throw UsageError({{"--source"}, "--input for " + id + " as well", "one of them"});
        if (id == source) return source;
        if (!isGiven) sources.push_back(id);
    }
    if (!source.empty())
        throw UsageError(Complaint::unknown(
            {"--source"}, "the block '" + printable(source, kLongestName) + "'", source, sources,
            "a source that reads a file: ", "a graph with a source that reads a file"));
    if (sources.size() == 1) return sources.front();
    const std::string expected = sources.empty() ? "one source at least that reads a recording"
                                                 : "--source BLOCK for the one that reads the recording, and "
                                                   "--input BLOCK=FILE for others";
    throw UsageError({{arguments.graph},
                      counted(sources.size(), "source") + " that read files" +
                          (sources.empty() ? "" : ", " + listOfNames(sources)),
                      expected});
}

std::vector<std::string> BatchCommand::wordsForEach() const {
    std::vector<std::string> words = wordsOf(arguments);
    const auto add = [&](const char* option, const std::string& value) {
        if (!value.empty()) words.insert(words.end(), {option, value});
    };
    add("--report", report);
    for (const std::string& output : watched)
        add("--watch", output);
    add("--picture", picture);
    if (arguments.overwrites) words.emplace_back("--overwrite");
    return words;
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
    if (!engine.empty())
        printScript(written);
    else if (!isQuiet)
        std::cout << counted(written.entries.size(), "recording") << " in " << planFile << "\n";
    return kDone;
}

/// Jobs count lines of the file, which somebody may have edited: empty ones, too.
void BatchCommand::printScript(const BatchPlan& planned) const {
    std::ifstream file(planFile, std::ios::binary);
    const auto ends =
        std::count(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>(), '\n');
    SlurmWishes wishes{.plan = planFile, .perTask = perTask};
    // The last one may lack its end.
    wishes.lines = std::max(planned.entries.size(), static_cast<std::size_t>(ends));
    wishes.name = "quillmere";
    wishes.options = splitShellLine(slurm).value_or(std::vector<std::string>{slurm});
    std::cout << slurmScript(wishes);
}

ExitCode BatchCommand::runPlan(const BatchPlan& entries, const std::string& graphHash) const {
    raiseFileLimit();
    const StopSignals signals;
    BatchOptions options{.worker = {ownPath(), kWorkerCommand}, .jobs = jobs == 0 ? coreCount() : jobs};
    options.words.emplace_back("--quiet");
    if (resumes) options.words.emplace_back("--resume");
    if (keepsChanged) options.words.emplace_back("--keep-changed");
    if (isDry) options.words.emplace_back("--look");
    for (const BatchPlan::Entry& entry : entries.entries) {
        const std::string& graph = entry.words[1];
        if (!options.graphs.contains(graph))
            options.graphs[graph] = graph == arguments.graph ? graphHash : hashOfFile(graph);
    }
    BatchRun batch(entries, options);
    BatchProgressLine line(!isQuiet);
    batch.run(signals.getToken(), [&](const BatchProgress& progress) { line.show(progress); });
    line.clear();
    if (!isDry) return tell(entries, batch, line.getSeconds());
    std::size_t count = 0;
    for (std::size_t i = 0; i < entries.entries.size(); ++i) {
        if (batch.getEnds()[i].state == BatchEnd::State::Kept) continue;
        const std::string& why = batch.getEnds()[i].text;
        std::cout << entries.entries[i].getCommand() << "  # " << why.substr(why.find(": ") + 2) << "\n";
        ++count;
    }
    std::cerr << counted(entries.entries.size(), "recording") << ", " << count << " to run\n";
    return kDone;
}

ExitCode BatchCommand::tell(const BatchPlan& entries, const BatchRun& batch, double seconds) const {
    const BatchProgress& progress = batch.getProgress();
    const std::size_t left = progress.all - progress.done - progress.failed;
    if (!isQuiet) {
        char time[32];
        std::snprintf(time, sizeof time, "%.1f", seconds);
        std::cout << counted(progress.all, "recording") << ": " << progress.done << " done";
        if (progress.kept > 0) std::cout << " (" << progress.kept << " before)";
        std::cout << ", " << progress.failed << " failed";
        if (left > 0) std::cout << ", " << left << " left";
        std::cout << " (in " << time << " s)" << std::endl;
    }
    printFailures(entries, batch);
    if (left > 0) std::cerr << "quillmere: interrupted; the same with --resume does the rest\n";
    // Those of earlier batches stay in the table: this one may be over a part of the study.
    const std::vector<std::string> found = out.empty() ? std::vector<std::string>() : findResultFolders(out);
    std::set<std::string> folders(found.begin(), found.end());
    for (const BatchPlan::Entry& entry : entries.entries)
        folders.insert(entry.folder);
    const ExitCode code = out.empty() ? kDone : writeSummary({folders.begin(), folders.end()});
    return progress.failed == 0 && left == 0 ? code : kFailedMidway;
}

ExitCode BatchCommand::writeSummary(const std::vector<std::string>& folders) const {
    std::vector<ColumnStatistic> wanted;
    for (const std::string& name : statistics)
        wanted.push_back(*findStatistic(name));
    const ResultOptions options = summaryOptions(arguments.overwrites);
    const std::string path = (std::filesystem::path(out) / kSummaryName).string();
    const std::string root = std::filesystem::path(out).lexically_normal().string();
    return writeSideFile(path, options, summaryTable(folders, root, wanted)) ? kDone : kFailedMidway;
}

} // namespace Cli
