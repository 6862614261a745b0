// SPDX-License-Identifier: MIT
#include "cli/RunReport.h"

#include "host/recording/StandardStream.h"

#include <algorithm>
#include <cstdio>
#include <iostream>

namespace Cli {

using namespace Quillmere::Host;

namespace {

using Clock = ProgressLine::Clock;

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

} // namespace

void ProgressLine::show(const RunProgress& progress) {
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

void ProgressLine::clear() {
    if (isShown) std::cerr << "\r\033[K" << std::flush;
    isShown = false;
}

std::ostream& reportStream(const Graph& graph) {
    for (const Sink* const sink : graph.getSinks())
        if (getIsStandardStream(sink->getPath())) return std::cerr;
    return std::cout;
}

void printSummary(const Graph& graph, const RunProgress& progress, Clock::time_point start) {
    std::ostream& out = reportStream(graph);
    const double seconds = secondsSince(start);
    std::size_t width = 0;
    for (const Graph::Node& node : graph.getNodes())
        if (node.source != nullptr || node.sink != nullptr)
            width = std::max(width, node.description->id.size());
    const auto line = [&](const HostBlock& block, std::uint64_t rows, const char* direction,
                          const char* standardStream) {
        out << "  " << block.getName() << std::string(width - block.getName().size() + 2, ' ') << rows
            << " rows " << direction << " "
            << (getIsStandardStream(block.getPath()) ? standardStream : block.getPath()) << "\n";
    };
    const Work work(progress, graph.getSources().empty());
    out << graph.getName() << ": " << work.count << work.unit << " in " << formatted("%.2f", seconds)
        << " s (" << formatted("%.0f", static_cast<double>(work.count) / seconds) << work.unit << "/s)\n";
    for (const Source* const source : graph.getSources())
        line(*source, source->getRows(), "from", "standard input");
    for (const Sink* const sink : graph.getSinks())
        line(*sink, sink->getRows(), "to", "standard output");
}

void printFailure(const Graph& graph, const std::string& message) {
    std::cerr << "quillmere: " << message << "\n";
    for (const Sink* const sink : graph.getSinks())
        std::cerr << "  incomplete: " << sink->getRows() << " rows in " << sink->getPartialPath() << "\n";
}

} // namespace Cli
