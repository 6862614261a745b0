// SPDX-License-Identifier: MIT
#include "cli/RunReport.h"

#include "host/text/Counted.h"
#include "host/ends/StandardStream.h"
#include "host/text/Table.h"

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
        : count(isWithoutRows ? progress.rounds : progress.rows), unit(isWithoutRows ? "round" : "row") {}
    std::string getText() const { return counted(count, unit); }
    std::string getSpeed(double seconds) const {
        return formatted("%.0f", static_cast<double>(count) / seconds) + " " + unit + "s/s";
    }
    std::uint64_t count;
    const char* unit;
};

std::string pathText(const std::string& path, const char* standardStream) {
    return getIsStandardStream(path) ? standardStream : path;
}

/// `12000 rows from wrist.csv, 11900 of them processed, 120 s at 100 rows/s`.
std::string textOf(const RunOutcome::Recording& recording) {
    const SourceAccount& account = recording.account;
    std::string text = counted(recording.rows, "row");
    if (!recording.path.empty()) text += " from " + pathText(recording.path, "standard input");
    if (recording.processedRows < recording.rows)
        text += ", " + std::to_string(recording.processedRows) + " of them processed";
    if (account.rows > 1) text += ", " + formatted("%.6g", account.getLength()) + " s";
    if (account.getMedianRate()) text += " at " + formatted("%.4g", *account.getMedianRate()) + " rows/s";
    if (account.missingCells > 0) text += ", " + counted(account.missingCells, "cell") + " missing";
    return text;
}

/// Where a result is, whole or not: its file, or the block where it has none.
std::string placeOf(const RunOutcome::Result& result) {
    return result.getWhere().empty() ? "'" + result.id + "'" : result.getWhere();
}

} // namespace

void ProgressLine::show(const RunProgress& progress) {
    if (Clock::now() - shown < std::chrono::milliseconds(100)) return;
    shown = Clock::now();
    const double seconds = secondsSince(start);
    const Work work(progress, isWithoutRows);
    std::cerr << "\r\033[K" << work.getText() << ", " << work.getSpeed(seconds);
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

std::ostream& reportStream(const Job& job) {
    if (getIsStandardStream(job.getOptions().summary)) return std::cerr;
    for (const Graph::Node& node : job.getGraph().getNodes())
        if (node.result != nullptr && getIsStandardStream(node.result->getPath())) return std::cerr;
    return std::cout;
}

void printSummary(const RunOutcome& outcome, Clock::time_point start, std::ostream& out) {
    const double seconds = secondsSince(start);
    const Work work(outcome.progress, outcome.recordings.empty());
    out << outcome.graph << ": " << work.getText() << " (in " << formatted("%.2f", seconds) << " s, "
        << work.getSpeed(seconds) << ")\n";
    Table ends(2);
    for (const RunOutcome::Recording& recording : outcome.recordings) {
        ends.add({recording.id, textOf(recording)});
        for (const std::string& note : recording.account.notes)
            ends.add({"", note});
    }
    for (const RunOutcome::Result& result : outcome.results) {
        const std::string where =
            result.path.empty() ? "" : " to " + pathText(result.path, "standard output");
        ends.add({result.id, counted(result.rows, "row") + where});
        for (const std::string& silence : result.silentPins)
            ends.add({"", "nothing to " + silence});
    }
    for (const RunOutcome::Note& note : outcome.notes)
        ends.add({note.block, note.text});
    for (const RateConversion& conversion : outcome.conversions)
        ends.add({conversion.target, conversion.getText()});
    out << ends.getText();
}

void printWarnings(const RunOutcome& outcome) {
    constexpr std::size_t kMostShown = 50; // as of those that a graph raises
    const std::size_t shown = std::min(outcome.warnings.size(), kMostShown);
    for (std::size_t i = 0; i < shown; ++i)
        std::cerr << outcome.warnings[i].getText() << "\n";
    if (outcome.warnings.size() > shown)
        std::cerr << "and " << counted(outcome.warnings.size() - shown, "more warning") << "\n";
}

void printFailure(const RunOutcome& outcome) {
    // What a graph is refused for stands alone.
    if (outcome.hasBegun || outcome.isInterrupted) std::cerr << "quillmere: ";
    std::cerr << outcome.failure << "\n";
    for (const RunOutcome::Recording& recording : outcome.recordings)
        if (recording.processedRows < recording.rows)
            std::cerr << "  " << recording.id << ": " << counted(recording.rows, "row") << " read, "
                      << recording.processedRows << " processed\n";
    for (const RunOutcome::Result& result : outcome.results)
        std::cerr << (result.isComplete ? "  complete: " : "  incomplete: ") << counted(result.rows, "row")
                  << " in " << placeOf(result) << "\n";
}

} // namespace Cli
