// SPDX-License-Identifier: MIT
#pragma once

#include "host/run/Job.h"
#include "host/run/RunOutcome.h"

#include <chrono>
#include <iosfwd>
#include <string>

namespace Cli {

/// A line on a terminal that is written over again and again: rows a second, and how long the rest will take.
class ProgressLine {
public:
    using Clock = std::chrono::steady_clock;

    ProgressLine(Clock::time_point begin, bool countsRounds)
        : start(begin), shown(begin), isWithoutRows(countsRounds) {}
    ~ProgressLine() { clear(); }

    void show(const Quillmere::Host::RunProgress& progress);
    void clear();

private:
    Clock::time_point start;
    Clock::time_point shown;
    bool isWithoutRows;
    bool isShown = false;
};

/// Where people are told things: standard output, unless a result or the summary for programs goes there.
std::ostream& reportStream(const Quillmere::Host::Job& job);

/// What a run has done, and what came from where and went to where.
void printSummary(const Quillmere::Host::RunOutcome& outcome, ProgressLine::Clock::time_point start,
                  std::ostream& out);

/// What may well not be what the user meant, on standard error.
void printWarnings(const Quillmere::Host::RunOutcome& outcome);

/// Why a run failed, and what is left of its results, if it has begun any.
void printFailure(const Quillmere::Host::RunOutcome& outcome);

} // namespace Cli
