// SPDX-License-Identifier: MIT
#include "cli/Commands.h"

#include "cli/FolderRun.h"
#include "cli/GraphArguments.h"
#include "cli/RunPicture.h"
#include "cli/RunReport.h"
#include "cli/SideFile.h"
#include "cli/StopSignals.h"
#include "cli/UsageError.h"
#include "host/text/Printable.h"
#include "host/text/ShortestText.h"
#include "host/control/ControlServer.h"
#include "host/ends/RecordingException.h"
#include "host/ends/StandardStream.h"
#include "host/live/LiveRun.h"
#include "host/report/Report.h"
#include "host/run/Job.h"

#include <CLI/CLI.hpp>

#include <sys/prctl.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <csignal>
#include <filesystem>
#include <iostream>
#include <limits>
#include <new>
#include <stop_token>
#include <utility>

namespace Cli {

using namespace Quillmere::Host;

namespace {

/// Between two looks how far a live run has come.
constexpr std::chrono::milliseconds kBetweenLooks{100};
constexpr const char* kPictureOption = "--picture";
constexpr const char* kAsFastAsItCan = "max";
constexpr const char* kReportOption = "--report";
constexpr const char* kWatchOption = "--watch";
constexpr const char* kThreadsOption = "--threads";
constexpr std::size_t kMostThreads = 256;
constexpr const char* kSummaryOption = "--summary-json";

double speedOf(const std::string& text) {
    if (text == kAsFastAsItCan) return std::numeric_limits<double>::infinity();
    double speed = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), speed);
    const bool isNumber = error == std::errc() && end == text.data() + text.size();
    return isNumber && std::isfinite(speed) ? speed : 0.0;
}

std::string refusal(const std::string& text, const std::string& expected) {
    return Complaint{{}, "'" + printable(text, kLongestName) + "'", expected}.getText();
}

std::string checkSteps(const std::string& text) {
    std::uint64_t steps = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), steps);
    if (error == std::errc() && end == text.data() + text.size() && steps > 0) return {};
    return refusal(text, "a whole number above 0");
}

std::string checkThreads(const std::string& text) {
    std::size_t threads = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), threads);
    const bool isWhole = error == std::errc() && end == text.data() + text.size();
    if (isWhole && threads > 0 && threads <= kMostThreads) return {};
    return refusal(text, "a whole number from 1 to " + std::to_string(kMostThreads));
}

std::string checkDuration(const std::string& text) {
    double seconds = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    const bool isNumber = error == std::errc() && end == text.data() + text.size();
    if (isNumber && std::isfinite(seconds) && seconds > 0.0) return {};
    return refusal(text, "a number of seconds above 0");
}

std::string checkFile(const std::string& text) {
    return text.empty() ? refusal(text, "the name of a file, or -") : "";
}

std::string checkSpeed(const std::string& text) {
    if (speedOf(text) > 0.0) return {};
    return refusal(text, "a factor above 0, or max");
}

} // namespace

RunCommand::RunCommand(CLI::App& command) {
    arguments.enter(command);
    CLI::Option* const rounds =
        command.add_option("--steps", steps, "Run a graph without a source for N rounds.")
            ->type_name("N")
            ->check(checkSteps);
    command.add_option("--duration", duration, "Run a graph without a source for SECONDS of its time.")
        ->type_name("SECONDS")
        ->check(checkDuration)
        ->excludes(rounds);
    command
        .add_option(kSummaryOption, summary,
                    "Write how it ended to FILE, for programs; - is standard output.")
        ->type_name("FILE")
        ->check(checkFile);
    CLI::Option* const page =
        command
            .add_option(kReportOption, report,
                        "Write a page for a browser: the graph, all signals, what happened.")
            ->type_name("FILE.html")
            ->check(checkFile);
    enterWatched(command, kWatchOption, watched, page);
    command.add_option(kPictureOption, picture, "Draw the results, too, at the end of the run.")
        ->type_name("FILE.svg|FILE.png")
        ->check(checkFile);
    CLI::Option* const sharing =
        command
            .add_option(kThreadsOption, threads,
                        "Let N threads share the work of an offline run; its results are the same.")
            ->type_name("N")
            ->check(checkThreads);
    CLI::Option* const folder = inFolder.enter(command);
    command.add_flag("--quiet", isQuiet, "Print neither progress nor a summary.");
    CLI::Option* const live = command.add_flag(
        "--live", isLive, "Run in real time, a thread for each layout; pipes are read as they come.");
    live->excludes(sharing);
    live->excludes(folder);
    command.add_option("--speed", speed, "Pace recordings so many times as fast as they were taken, or max.")
        ->type_name("FACTOR|max")
        ->check(checkSpeed)
        ->needs(live);
    command.add_option("--control", control, "Let 'quillmere ctl PATH' read and change settings meanwhile.")
        ->type_name("PATH")
        ->needs(live);
    command.add_flag("--stats", printsStatistics, "Print at the end what each block and link has done.")
        ->needs(live);
}

JobOptions RunCommand::jobOptions() const {
    return {.changes = changesOf(arguments),
            .limit = {steps, duration},
            .isStrict = arguments.isStrict,
            .overwrites = arguments.overwrites,
            .threads = threads,
            .isControlled = control.has_value(),
            .roundsName = {.name = "--steps", .value = "N"},
            .secondsName = {.name = "--duration", .value = "SECONDS"},
            .summary = summary,
            .summaryName = kSummaryOption + (" " + printable(summary, kLongestName)),
            .observer = observer(),
            .observerName = kReportOption + (" " + printable(report, kLongestName))};
}

/// Null without a report.
std::shared_ptr<RunObserver> RunCommand::observer() const {
    if (report.empty()) return nullptr;
    std::error_code error; // of what isn't there, which can't be the same
    if (report == summary || std::filesystem::equivalent(report, summary, error))
        throw UsageError({{kReportOption}, std::string("the file of ") + kSummaryOption, "another one"});
    checkPageName(kReportOption, report);
    return std::make_shared<Report>(
        ReportOptions{.path = report,
                      .watched = watched,
                      .overwrites = arguments.overwrites,
                      .program = QUILLMERE_VERSION,
                      .pathName = kReportOption + (" " + printable(report, kLongestName)),
                      .watchName = kWatchOption});
}

ExitCode RunCommand::run() {
    BlockCatalogue catalogue = loadCatalogue(arguments.plugins);
    if (kept != nullptr) *kept = catalogue;
    if (inFolder.folder.empty()) return runGraph(std::move(catalogue), nullptr);
    return runInFolder(std::move(catalogue));
}

/// What changes the results besides the options of the graph.
std::vector<std::string> RunCommand::resultOptions() const {
    std::vector<std::string> words;
    const auto add = [&](const char* option, const std::string& value) {
        if (!value.empty()) words.insert(words.end(), {option, value});
    };
    add(kReportOption, report);
    for (const std::string& output : watched)
        add(kWatchOption, output);
    add(kPictureOption, picture);
    if (duration) add("--duration", shortestText(*duration));
    if (steps) add("--steps", std::to_string(*steps));
    return words;
}

/// Names without a folder are those of files in the results' folder; gives back which those are.
std::vector<std::string> RunCommand::placeInFolder() {
    std::vector<std::string> files;
    for (std::string* const name : {&report, &picture, &summary}) {
        if (name->empty() || getIsStandardStream(*name) || name->find('/') != std::string::npos) continue;
        files.push_back(*name);
        *name = inFolder.folder + "/" + *name;
    }
    return files;
}

/// A run for somebody on another machine isn't to go on when nobody hears how it ends.
void RunCommand::followParent() const {
    if (inFolder.parent == 0) return;
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != inFolder.parent) std::raise(SIGKILL);
}

ExitCode RunCommand::runInFolder(BlockCatalogue catalogue) {
    followParent();
    FolderRun record(inFolder, arguments, resultOptions(), catalogue);
    const std::string reason = inFolder.resumes ? record.findReason() : "it was asked for";
    isDoneBefore = reason.empty();
    if (isDoneBefore && (!inFolder.looks || inFolder.takesOver)) record.keep();
    if (isDoneBefore || inFolder.looks) {
        if (!isQuiet || inFolder.looks)
            std::cout << inFolder.folder << ": " << (isDoneBefore ? "is done" : reason) << "\n";
        return kDone;
    }
    const std::vector<std::string> files = placeInFolder();
    record.begin();
    try {
        const ExitCode code = record.end(runGraph(std::move(catalogue), &record), files);
        isInterrupted = record.getIsInterrupted();
        return code;
    } catch (const std::exception& exception) {
        record.take(exception);
        record.end(kNothingRun, {});
        throw;
    }
}

ExitCode RunCommand::runGraph(BlockCatalogue catalogue, FolderRun* record) {
    const ProgressLine::Clock::time_point start = ProgressLine::Clock::now();
    const StopSignals signals; // a pipe that nobody writes is waited for before the run
    if (!picture.empty() && !report.empty()) keepFromOutput(kPictureOption, picture, report, "the report");
    if (!picture.empty() && !summary.empty()) keepFromOutput(kPictureOption, picture, summary, "the summary");
    JobOptions options = jobOptions();
    if (record != nullptr) options.changes.outputs = record->getOutputs();
    options.stop = signals.getToken();
    if (!picture.empty()) checkPicture(kPictureOption, picture, arguments.overwrites);
    // A reader that goes away is a failure to write, which ends the run in order.
    std::signal(SIGPIPE, SIG_IGN);
    Job job = Job::fromFile(arguments.graph, std::move(catalogue), std::move(options));
    const RunMode mode = isLive ? RunMode::Live : RunMode::Offline;
    try {
        job.require(mode);
    } catch (const InterruptedException& exception) {
        if (record != nullptr) record->take(exception);
        std::cerr << "quillmere: " << exception.what() << "\n";
        return kFailedMidway;
    }
    if (!picture.empty()) keepFromPicture(kPictureOption, picture, job);
    printDoubts(job.check(mode));
    if (record != nullptr) record->takeFolder(job);
    try {
        return runAndTell(std::move(job), start, record, signals.getToken());
    } catch (const std::bad_alloc&) {
        std::cerr << kOutOfMemory; // results may have been touched
        return kFailedMidway;
    }
}

ExitCode RunCommand::runAndTell(Job job, std::chrono::steady_clock::time_point start, FolderRun* record,
                                const std::stop_token& stop) const {
    ProgressLine progress(start, job.getGraph().getSources().empty());
    std::ostream& told =
        getIsStandardStream(report) || getIsStandardStream(picture) ? std::cerr : reportStream(job);
    std::optional<RunPicture> drawing;
    if (!picture.empty()) drawing.emplace(job);
    const RunOutcome outcome =
        isLive ? runLive(std::move(job), progress, told, stop) : runOffline(job, progress, stop);
    progress.clear();
    if (record != nullptr) record->take(outcome);
    if (!isQuiet && outcome.getIsWhole()) printSummary(outcome, start, told);
    printWarnings(outcome);
    if (outcome.getIsWhole())
        return !drawing || drawing->write(picture, arguments.overwrites, outcome.getOrigin()) ? kDone
                                                                                              : kFailedMidway;
    printFailure(outcome);
    return outcome.hasBegun || outcome.isInterrupted ? kFailedMidway : kNothingRun;
}

bool RunCommand::showsProgress() const {
    return !isQuiet && ::isatty(STDERR_FILENO) != 0;
}

RunOutcome RunCommand::runOffline(Job& job, ProgressLine& progress, const std::stop_token& stop) const {
    if (!showsProgress()) return job.run(stop);
    return job.run(stop, [&](const RunProgress& now) { progress.show(now); });
}

RunOutcome RunCommand::runLive(Job job, ProgressLine& progress, std::ostream& told,
                               const std::stop_token& stop) const {
    LiveRun run(std::move(job), {.speed = speedOf(speed)});
    std::optional<ControlServer> server;
    if (control) server.emplace(*control);
    // What a console needs is there before a result is begun.
    if (server) server->serve(run);
    run.start(stop);
    while (!run.waitFor(kBetweenLooks))
        if (showsProgress()) progress.show(run.getProgress());
    progress.clear();
    if (printsStatistics && run.getOutcome().hasBegun)
        for (const std::string& line : run.getStatistics().getText())
            told << line << "\n";
    return run.getOutcome();
}

} // namespace Cli
