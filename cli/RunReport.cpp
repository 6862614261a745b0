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

void printSummary(const RunOutcome& outcome, Clock::time_point start) {
    const bool isDataOnOutput =
        std::any_of(outcome.results.begin(), outcome.results.end(),
                    [](const RunOutcome::Result& result) { return getIsStandardStream(result.path); });
    std::ostream& out = isDataOnOutput ? std::cerr : std::cout;
    const double seconds = secondsSince(start);
    std::size_t width = 0;
    for (const RunOutcome::Recording& recording : outcome.recordings)
        width = std::max(width, recording.id.size());
    for (const RunOutcome::Result& result : outcome.results)
        width = std::max(width, result.id.size());
    const auto line = [&](const auto& end, const char* direction, const char* standardStream) {
        out << "  " << end.id << std::string(width - end.id.size() + 2, ' ') << end.rows << " rows "
            << direction << " " << (getIsStandardStream(end.path) ? standardStream : end.path) << "\n";
    };
    const Work work(outcome.progress, outcome.recordings.empty());
    out << outcome.graph << ": " << work.count << work.unit << " in " << formatted("%.2f", seconds) << " s ("
        << formatted("%.0f", static_cast<double>(work.count) / seconds) << work.unit << "/s)\n";
    for (const RunOutcome::Recording& recording : outcome.recordings)
        line(recording, "from", "standard input");
    for (const RunOutcome::Result& result : outcome.results)
        line(result, "to", "standard output");
}

void printWarnings(const RunOutcome& outcome) {
    for (const Warning& warning : outcome.warnings)
        std::cerr << warning.getText() << "\n";
}

void printFailure(const RunOutcome& outcome) {
    std::cerr << "quillmere: " << outcome.failure << "\n";
    for (const RunOutcome::Result& result : outcome.results)
        std::cerr << "  incomplete: " << result.rows << " rows in " << result.partialPath << "\n";
}

} // namespace Cli
