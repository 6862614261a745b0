// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/inspection/ClockChoice.h"
#include "host/inspection/Inspection.h"
#include "host/inspection/InspectionSettings.h"
#include "host/picture/Curve.h"
#include "host/picture/CurveWishes.h"
#include "host/recording/RecordingReader.h"
#include "host/recording/TimeRepairPlan.h"

#include <cstddef>
#include <functional>
#include <limits>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// Reads the columns of a recording, or of a result, as curves, once. Memory grows with the columns, not with
/// the rows. What is wrong with single rows is left out of the picture, as a gap where cells are no numbers.
class QUILLMERE_API RecordingCurves {
public:
    /// More columns are nothing that a picture could show.
    static constexpr std::size_t kMostColumns = 1024;

    /// Requires: the three outlive it, and the reader was opened with the wishes of these settings.
    RecordingCurves(RecordingReader& recording, const InspectionSettings& settings,
                    const CurveWishes& curveWishes);

    /// All that could be drawn, as the file names it. [setup]
    const std::vector<std::string>& getNames() const { return names; }

    /// Where the times come from, unless a column stands in their place. [setup]
    const ClockChoice& getClock() const { return clock; }

    /// Raises `RecordingException` for what ends the reading, `InterruptedException` when a stop is
    /// requested. Requires: not called before. [run]
    CurveTable read(const std::stop_token& stop = {},
                    const std::function<void(const InspectionProgress&)>& tell = {});

private:
    void choose();
    TimeRepairPlan cutBy() const;
    std::optional<double> getTime() const;
    void takeRow(double time);
    void finishPaths();

    RecordingReader& reader;
    const CurveWishes& wishes;
    ClockChoice clock;
    std::vector<std::string> units; ///< Of all columns.
    std::vector<std::string> names;
    std::optional<std::size_t> timeValue;
    bool isAcross = false; ///< Some column stands in place of the times.
    std::vector<std::size_t> chosen;
    std::vector<double> values;
    std::vector<double> scales; ///< Of the curves; they begin with value 0.
    CurveTable table;
    std::uint64_t rowsRead = 0;
    double latest = -std::numeric_limits<double>::infinity(); ///< Of the times so far.
};

} // namespace Quillmere::Host
