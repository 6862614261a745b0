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
    action.sa_flags = SA_RESETHAND;
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

/// A line on a terminal that is written over again and again: rows a second, and how long the rest will take.
class ProgressLine {
public:
    explicit ProgressLine(Clock::time_point begin) : start(begin), shown(begin) {}
    ~ProgressLine() { clear(); }

    void show(const RunProgress& progress) {
        if (Clock::now() - shown < std::chrono::milliseconds(100)) return;
        shown = Clock::now();
        const double seconds = secondsSince(start);
        const double rows = static_cast<double>(progress.rows);
        std::cerr << "\r\033[K" << progress.rows << " rows, " << formatted("%.0f", rows / seconds)
                  << " rows/s";
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
    std::cout << graph.getName() << ": " << progress.rows << " rows in " << formatted("%.2f", seconds)
              << " s (" << formatted("%.0f", static_cast<double>(progress.rows) / seconds) << " rows/s)\n";
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
    command.add_flag("--quiet", isQuiet, "Print neither progress nor a summary.");
}

ExitCode RunCommand::run() {
    const Clock::time_point start = Clock::now();
    stopOnSignals();
    const GraphChanges changes = changesOf(arguments);
    const BlockCatalogue catalogue = loadCatalogue(arguments.plugins);
    Complaints complaints;
    const GraphDescription description = GraphDescription::read(arguments.graph, changes, complaints);
    Graph graph(description, catalogue, complaints);
    graph.requireSource(complaints);
    graph.openSources(complaints);
    complaints.raise();
    graph.openSinks();

    OfflineRunner runner(graph);
    ProgressLine progress(start);
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
