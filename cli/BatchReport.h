// SPDX-License-Identifier: MIT
#pragma once

#include "host/batch/BatchPlan.h"
#include "host/batch/BatchTally.h"

#include <chrono>
#include <string>

namespace Cli {

/// How far a batch has come: a line on a terminal that is written over again and again, elsewhere a line now
/// and then.
class BatchProgressLine {
public:
    explicit BatchProgressLine(bool isShown);
    ~BatchProgressLine() { clear(); }

    void show(const Quillmere::Host::BatchProgress& progress);
    void clear();
    double getSeconds() const;

private:
    using Clock = std::chrono::steady_clock;

    bool isQuiet;
    bool isTerminal;
    bool isWritten = false;
    Clock::time_point start = Clock::now();
    Clock::time_point shown = start;
};

/// `212/480 done, 3 failed, 8 running, 14.2 files/min, 18 min left`.
std::string textOf(const Quillmere::Host::BatchProgress& progress, double seconds);

/// What failed, on standard error, each with the command that does it again, alone.
void printFailures(const Quillmere::Host::BatchPlan& plan, const Quillmere::Host::BatchTally& batch);

} // namespace Cli
