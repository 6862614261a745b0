// SPDX-License-Identifier: MIT
#include "cli/Commands.h"

#include "cli/GraphArguments.h"
#include "host/graph/Graph.h"
#include "host/run/OfflineRunner.h"

#include <CLI/CLI.hpp>

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <iostream>
#include <limits>

namespace Cli {

using namespace Quillmere::Host;

namespace {

using Clock = std::chrono::steady_clock;

std::atomic<bool> isStopped{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may set only what needs no lock");

/// Asks the run to end; a second signal ends the program at once.
void stopOnSignals() {
    struct sigaction action {};
    action.sa_handler = [](int) { isStopped.store(true, std::memory_order_relaxed); };
    action.sa_flags = static_cast<int>(SA_RESETHAND); // a macro without a sign
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        sigaction(signal, &action, nullptr);
}

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

std::string formatted(const char* format, double number) {
    char text[64];
    std::snprintf(text, sizeof text, format, number);
    return text;
}

/// What a run has done: rows of its recordings or, where there are none, rounds.
struct Work {
    Work(const RunProgress& progress, bool isWithoutRows)
        : count(isWithoutRows ? progress.rounds : progress.rows), unit(isWithoutRows ? " rounds" : " rows") {}
    std::uint64_t count;
    const char* unit;
};

/// A line on a terminal that is written over again and again: rows a second, and how long the rest will take.
class ProgressLine {
public:
    ProgressLine(Clock::time_point begin, bool countsRounds)
        : start(begin), shown(begin), isWithoutRows(countsRounds) {}
    ~ProgressLine() { clear(); }

    void show(const RunProgress& progress) {
        if (Clock::now() - shown < std::chrono::milliseconds(100)) return;
        shown = Clock::now();
        const double seconds = secondsSince(start);
        const Work work(progress, isWithoutRows);
        std::cerr << "\r\033[K" << work.count << work.unit << ", "
                  << formatted("%.0f", static_cast<double>(work.count) / seconds) << work.unit << "/s";
        if (progress.bytes > 0 && progress.bytesRead > 0) {
            const double part = static_cast<double>(progress.bytesRead) / static_cast<double>(progress.bytes);
            std::cerr << ", " << formatted("%.0f", 100.0 * part) << " %, "
                      << formatted("%.0f", seconds * (1.0 - part) / part) << " s left";
        }
        std::cerr << std::flush;
        isShown = true;
    }
    void clear() {
        if (isShown) std::cerr << "\r\033[K" << std::flush;
        isShown = false;
    }

private:
    Clock::time_point start;
    Clock::time_point shown;
    bool isWithoutRows;
    bool isShown = false;
};

void printSummary(const Graph& graph, const RunProgress& progress, double seconds) {
    std::size_t width = 0;
    for (const Graph::Node& node : graph.getNodes())
        if (node.source != nullptr || node.sink != nullptr)
            width = std::max(width, node.description->id.size());
    const auto line = [&](const HostBlock& block, std::uint64_t rows, const char* direction) {
        std::cout << "  " << block.getName() << std::string(width - block.getName().size() + 2, ' ') << rows
                  << " rows " << direction << " " << block.getPath() << "\n";
    };
    const Work work(progress, graph.getSources().empty());
    std::cout << graph.getName() << ": " << work.count << work.unit << " in " << formatted("%.2f", seconds)
              << " s (" << formatted("%.0f", static_cast<double>(work.count) / seconds) << work.unit
              << "/s)\n";
    for (const Source* const source : graph.getSources())
        line(*source, source->getRows(), "from");
    for (const Sink* const sink : graph.getSinks())
        line(*sink, sink->getRows(), "to");
}

void printFailure(const Graph& graph, const std::string& message) {
    std::cerr << "quillmere: " << message << "\n";
    for (const Sink* const sink : graph.getSinks())
        std::cerr << "  incomplete: " << sink->getRows() << " rows in " << sink->getPartialPath() << "\n";
}

} // namespace

RunCommand::RunCommand(CLI::App& command) {
    arguments.enter(command);
    CLI::Option* const rounds =
        command.add_option("--steps", steps, "Run a graph without a source for N rounds.")
            ->type_name("N")
            ->check(CLI::PositiveNumber);
    command.add_option("--duration", duration, "Run a graph without a source for SECONDS of its time.")
        ->type_name("SECONDS")
        ->check(CLI::Range(std::numeric_limits<double>::min(), std::numeric_limits<double>::max(), "above 0"))
        ->excludes(rounds);
    command.add_flag("--quiet", isQuiet, "Print neither progress nor a summary.");
}

/// A recording ends a run; a graph without one needs to be told when to end.
void RunCommand::checkLimit(const Graph& graph, Complaints& complaints) const {
    const bool isLimited = steps || duration;
    const Place place{arguments.graph, 1, 1};
    if (graph.getSources().empty() && !isLimited)
        complaints.add(place, "a graph without a source", "--duration SECONDS or --steps N to end its run");
    if (!graph.getSources().empty() && isLimited)
        complaints.add(place,
                       steps ? "--steps and a graph with a source" : "--duration and a graph with a source",
                       "neither, since the run ends with the recording");
}

ExitCode RunCommand::run() {
    const Clock::time_point start = Clock::now();
    stopOnSignals();
    const GraphChanges changes = changesOf(arguments);
    const BlockCatalogue catalogue = loadCatalogue(arguments.plugins);
    Complaints complaints;
    const GraphDescription description = GraphDescription::read(arguments.graph, changes, complaints);
    Graph graph(description, catalogue, complaints);
    graph.requireDrive(complaints);
    checkLimit(graph, complaints);
    graph.openSources(complaints);
    complaints.raise();
    graph.openSinks();

    OfflineRunner runner(graph);
    runner.setLimit({steps, duration});
    ProgressLine progress(start, graph.getSources().empty());
    if (!isQuiet && ::isatty(STDERR_FILENO) != 0)
        runner.setProgressHandler([&](const RunProgress& now) { progress.show(now); });
    try {
        runner.run(isStopped);
    } catch (const RunException& exception) {
        progress.clear();
        printFailure(graph, exception.what());
        return kFailedMidway;
    }
    progress.clear();
    if (!isQuiet) printSummary(graph, runner.getProgress(), secondsSince(start));
    return kDone;
}

} // namespace Cli
