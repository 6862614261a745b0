// SPDX-License-Identifier: MIT
#include "cli/Commands.h"

#include "cli/GraphArguments.h"
#include "cli/RunReport.h"
#include "cli/StopSignals.h"
#include "host/graph/ClockWarnings.h"
#include "host/graph/Graph.h"
#include "host/graph/GraphPlugins.h"
#include "host/text/Printable.h"
#include "host/graph/BurstWarnings.h"
#include "host/graph/SettingRules.h"
#include "host/control/ControlServer.h"
#include "host/live/LiveRun.h"
#include "host/response/DesignWarnings.h"
#include "host/run/OfflineRunner.h"
#include "host/text/Complaint.h"

#include <CLI/CLI.hpp>

#include <unistd.h>

#include <charconv>
#include <chrono>
#include <cmath>
#include <csignal>
#include <iostream>
#include <limits>
#include <new>
#include <stop_token>

namespace Cli {

using namespace Quillmere::Host;

namespace {

/// Between two looks how far a live run has come.
constexpr std::chrono::milliseconds kBetweenLooks{100};
constexpr const char* kAsFastAsItCan = "max";

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

std::string checkDuration(const std::string& text) {
    double seconds = 0.0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    const bool isNumber = error == std::errc() && end == text.data() + text.size();
    if (isNumber && std::isfinite(seconds) && seconds > 0.0) return {};
    return refusal(text, "a number of seconds above 0");
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
    command.add_flag("--quiet", isQuiet, "Print neither progress nor a summary.");
    CLI::Option* const live = command.add_flag(
        "--live", isLive, "Run in real time, a thread for each layout; pipes are read as they come.");
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

/// A recording ends a run; a graph without one needs to be told when to end.
void RunCommand::checkLimit(const Graph& graph, Complaints& complaints) const {
    if (!graph.getDescription().isUsable) return;
    const bool isLimited = steps || duration;
    const Place place{arguments.graph, 1, 1};
    // Somebody ends a live run, sooner or later.
    if (graph.getSources().empty() && !isLimited && !isLive)
        complaints.add(place, "a graph without a source", "--duration SECONDS or --steps N to end its run");
    if (!graph.getSources().empty() && isLimited)
        complaints.add(place,
                       steps ? "--steps and a graph with a source" : "--duration and a graph with a source",
                       "neither, since the run ends with the recording");
}

ExitCode RunCommand::run() {
    const ProgressLine::Clock::time_point start = ProgressLine::Clock::now();
    const GraphChanges changes = changesOf(arguments);
    BlockCatalogue catalogue = loadCatalogue(arguments.plugins);
    // A reader that goes away is a failure to write, which ends the run in order.
    std::signal(SIGPIPE, SIG_IGN);
    Complaints complaints;
    const GraphDescription description = GraphDescription::read(arguments.graph, changes, complaints);
    loadPlugins(description, catalogue, complaints);
    Graph graph(description, catalogue, complaints);
    graph.requireDrive(complaints);
    checkLimit(graph, complaints);
    if (arguments.overwrites) graph.allowOverwriting();
    graph.openSources(complaints);
    warnOfLostDigits(graph, catalogue, complaints);
    if (isLive)
        warnOfLiveWallClock(graph, complaints);
    else
        requireStreamClock(graph, complaints);
    if (!control) warnOfIdleBlocks(graph, complaints);
    if (isLive && complaints.isEmpty()) warnOfBursts(graph, complaints);
    settle(complaints, arguments.isStrict);
    try {
        return runAndTell(graph, catalogue, start);
    } catch (const std::bad_alloc&) {
        std::cerr << kOutOfMemory; // results may have been touched
        return kFailedMidway;
    }
}

ExitCode RunCommand::runAndTell(Graph& graph, const BlockCatalogue& catalogue,
                                std::chrono::steady_clock::time_point start) const {
    ProgressLine progress(start, graph.getSources().empty());
    const StopSignals signals;
    const std::stop_token stop = signals.getToken();
    graph.setStop(stop);
    const RunOutcome outcome =
        isLive ? runLive(graph, catalogue, progress, stop) : runOffline(graph, progress, stop);
    progress.clear();
    if (!isQuiet && outcome.getIsWhole()) printSummary(outcome, start);
    printWarnings(outcome);
    if (outcome.getIsWhole()) return kDone;
    printFailure(outcome);
    return kFailedMidway;
}

bool RunCommand::showsProgress() const {
    return !isQuiet && ::isatty(STDERR_FILENO) != 0;
}

RunOutcome RunCommand::runOffline(Graph& graph, ProgressLine& progress, const std::stop_token& stop) const {
    graph.openSinks();
    OfflineRunner runner(graph);
    runner.setLimit({steps, duration});
    runner.setIsStrict(arguments.isStrict);
    if (showsProgress()) runner.setProgressHandler([&](const RunProgress& now) { progress.show(now); });
    try {
        runner.run(stop);
    } catch (const RunException&) {
        // The outcome says it.
    }
    return runner.getOutcome();
}

RunOutcome RunCommand::runLive(Graph& graph, const BlockCatalogue& catalogue, ProgressLine& progress,
                               const std::stop_token& stop) const {
    LiveRun run(graph, catalogue,
                {.speed = speedOf(speed), .limit = {steps, duration}, .isStrict = arguments.isStrict});
    std::optional<ControlServer> server;
    if (control) server.emplace(*control);
    // What a console needs is there before a result is begun.
    if (server) server->serve(run);
    graph.openSinks();
    run.start();
    while (!run.waitFor(kBetweenLooks)) {
        if (stop.stop_requested()) run.interrupt("interrupted");
        if (showsProgress()) progress.show(run.getProgress());
    }
    progress.clear();
    if (printsStatistics)
        for (const std::string& line : run.getStatistics().getText())
            reportStream(graph) << line << "\n";
    return run.getOutcome();
}

} // namespace Cli
