// SPDX-License-Identifier: MIT
#include "cli/BatchReport.h"

#include "host/batch/RunStatus.h"
#include "host/text/Counted.h"

#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <iostream>

namespace Cli {

using namespace Quillmere::Host;

namespace {

constexpr std::chrono::milliseconds kOnTerminal{100};
constexpr std::chrono::seconds kElsewhere{30};
constexpr std::size_t kMostShown = 50;

std::string formatted(const char* format, double number) {
    char text[64];
    std::snprintf(text, sizeof text, format, number);
    return text;
}

/// In the unit that has few digits.
std::string lengthText(double seconds) {
    constexpr double kMinute = 60.0;
    constexpr double kHour = 3600.0;
    if (seconds < 1.5 * kMinute) return formatted("%.0f s", seconds);
    if (seconds < 1.5 * kHour) return formatted("%.0f min", seconds / kMinute);
    return formatted("%.1f h", seconds / kHour);
}

} // namespace

std::string textOf(const BatchProgress& progress, double seconds) {
    std::string text = std::to_string(progress.done) + "/" + std::to_string(progress.all) + " done";
    if (progress.kept > 0) text += " (" + std::to_string(progress.kept) + " before)";
    if (progress.failed > 0) text += ", " + std::to_string(progress.failed) + " failed";
    if (progress.running > 0) text += ", " + std::to_string(progress.running) + " running";
    if (progress.getRun() == 0 || !(seconds > 0.0)) return text;
    const double pace = static_cast<double>(progress.getRun()) / seconds;
    const std::size_t left = progress.all - progress.done - progress.failed;
    text += ", " + formatted(pace * 60.0 < 100.0 ? "%.3g" : "%.0f", pace * 60.0) + " files/min";
    return left == 0 ? text : text + ", " + lengthText(static_cast<double>(left) / pace) + " left";
}

BatchProgressLine::BatchProgressLine(bool isShown)
    : isQuiet(!isShown), isTerminal(::isatty(STDERR_FILENO) != 0) {}

double BatchProgressLine::getSeconds() const {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

void BatchProgressLine::show(const BatchProgress& progress) {
    if (isQuiet || Clock::now() - shown < (isTerminal ? Clock::duration(kOnTerminal) : kElsewhere)) return;
    shown = Clock::now();
    std::cerr << (isTerminal ? "\r\033[K" : "") << textOf(progress, getSeconds()) << (isTerminal ? "" : "\n")
              << std::flush;
    isWritten = isTerminal;
}

void BatchProgressLine::clear() {
    if (isWritten) std::cerr << "\r\033[K" << std::flush;
    isWritten = false;
}

void printFailures(const BatchPlan& plan, const BatchTally& batch) {
    std::size_t count = 0;
    for (std::size_t i = 0; i < plan.entries.size(); ++i) {
        const BatchEnd& end = batch.getEnds()[i];
        if (end.state != BatchEnd::State::Failed || ++count > kMostShown) continue;
        std::cerr << "failed: " << plan.entries[i].recording << ": " << failureIn(end.text)
                  << "\n  again: " << plan.entries[i].getCommand() << "\n";
    }
    if (count > kMostShown)
        std::cerr << "and " << counted(count - kMostShown, "more failure") << ", told in "
                  << RunStatus::kFileName << " of each\n";
}

} // namespace Cli
