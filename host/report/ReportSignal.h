// SPDX-License-Identifier: MIT
#pragma once

#include "host/ends/Onlooker.h"
#include "host/picture/CurvePath.h"
#include "host/report/SignalCurves.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace Quillmere::Host {

/// What a page shows in one panel: curves that share their times.
struct ReportSignal {
    ReportSignal(std::string signalName, SignalCurves signalCurves)
        : name(std::move(signalName)), curves(std::move(signalCurves)) {}

    std::string name; ///< `block.pin`, of a sink's input or of an output that is watched; or of a recording.
    bool isWatched = false;
    std::string unit = {};                 ///< Empty where nobody knows it.
    std::vector<std::string> columns = {}; ///< As the sink's settings name them; none where they don't.
    /// Of spectra: the rows a second of what they are made of; 0 of anything else.
    double rowRate = 0.0;
    /// Of a map what its first element stands for, how far apart they are, and in which unit; apart 0:
    /// unknown, or as the row rate tells.
    double rowsBegin = 0.0;
    double rowsApart = 0.0;
    std::string rowsUnit = {};
    SignalCurves curves;
    /// Of each column that goes to and fro along the axis, as the coordinate of a way does; else none.
    std::vector<CurvePath> ways = {};

    /// With the row rate, too.
    double getRowsApart() const;
    bool getIsWay() const { return !ways.empty(); }
};

/// What of a run comes to be signals of its report.
class SignalGatherer {
public:
    virtual ~SignalGatherer() = default;

    /// Behind each round, where all blocks share rounds. [run]
    virtual void look(double) {}
    /// Behind the last one; then nothing runs any more. [any]
    virtual void lookAtRest() {}

    /// As `RunObserver` has them. [setup]
    virtual std::vector<Onlooker*> getOnlookers() { return {}; }

    virtual std::vector<const ReportSignal*> getSignals() const = 0;
    /// Which most signals have a sample in.
    virtual std::uint64_t getRounds() const = 0;
};

} // namespace Quillmere::Host
