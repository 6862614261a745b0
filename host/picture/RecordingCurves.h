// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/inspection/ClockChoice.h"
#include "host/inspection/Inspection.h"
#include "host/inspection/InspectionSettings.h"
#include "host/picture/Curve.h"
#include "host/recording/RecordingReader.h"
#include "host/recording/RepairSettings.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace Quillmere::Host {

/// Whether a column is meant by a name, with its unit or without, or by a pattern, `acc*`. [any]
QUILLMERE_API bool getMeansColumn(std::string_view wish, const std::string& column);

/// What of recordings is drawn.
struct QUILLMERE_API CurveWishes {
    struct Scale {
        std::string column;
        double factor = 1.0;
        std::string unit; ///< Of the values behind it; empty: nobody says.
    };

    std::vector<std::string> columns; ///< Names and patterns; none: all.
    std::vector<Scale> scales;
    std::string across; ///< The column that stands in place of the times; empty: none.

    /// Takes a setting `start` or `end`, as a source has them. [setup]
    void takeCut(const GraphDescription::Setting& setting, Complaints& complaints);
    /// Complains of two that don't go together. [setup]
    void finish(Complaints& complaints) const;
    const RepairSettings& getCut() const { return cut; }

private:
    RepairSettings cut;
};

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
    std::optional<double> getTime() const;
    void takeRow(double time);

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
};

} // namespace Quillmere::Host
