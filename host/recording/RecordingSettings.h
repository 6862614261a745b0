// SPDX-License-Identifier: MIT
#pragma once

#include "host/ends/HostBlock.h"
#include "host/recording/ReadingSettings.h"
#include "host/recording/ReadingWishes.h"
#include "host/recording/RecordingRows.h"
#include "host/recording/RepairSettings.h"
#include "host/recording/UnitSettings.h"
#include "host/text/Complaint.h"

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// What a graph says of a recording: how it is read, which of its columns go to which pin, when its rows were
/// taken and what becomes of them. All settings of a `RecordingSource` but its file.
struct RecordingSettings {
    struct Pin {
        std::string name;
        std::vector<NamedColumn> columns;
        NamedUnit unit; ///< That its samples are to have; none: as the columns come.
    };

    ReadingWishes wishes; ///< Of how to read; `gatherWishes` has those of what, too.
    RecordingClock clock;
    std::vector<Pin> pins;
    std::vector<StatedUnit> units;     ///< Of columns.
    std::optional<double> nominalRate; ///< Rows a second, for what is said in hertz and seconds alone.
    std::size_t frameRows = 0;         ///< 0: no frames.
    Place frameWhere;
    std::size_t hop = 0; ///< Rows from frame to frame; 0 until told: the frame's own length.
    OnBadRow onBadRow = OnBadRow::Error;
    OnCutEnd onCutEnd = OnCutEnd::Keep;
    RepairSettings repairs;

    static std::vector<HostBlock::SettingDescription> getDescriptions();

    /// Takes one; false for a setting that isn't a recording's. What is wrong with its value is complained
    /// of. [setup]
    bool take(const GraphDescription::Setting& setting, Complaints& complaints);
    /// Complains of what is missing or doesn't go together, in the source named `block`. [setup]
    void finish(const std::string& block, const GraphDescription::Block& description, Complaints& complaints);

    ReadingWishes gatherWishes() const;

    /// Rows a second, where the graph states them.
    std::optional<double> getStatedRate() const;
    bool getIsFramed() const { return frameRows > 0 || frameTime.seconds > 0.0; }
    /// Whether frames are said in seconds, whose rows aren't known yet.
    bool getAwaitsRate() const { return frameTime.getIsOpen() || hopTime.getIsOpen(); }
    /// Makes rows of them. [setup]
    void settleFrames(double rowsASecond, Complaints& complaints);
    /// What became of what was said in seconds: a sentence's part each.
    std::vector<std::string> getNotes() const;

private:
    /// A length in seconds: what was written, and what came of it.
    struct Length {
        double seconds = 0.0; ///< 0: not said so.
        std::string written = {};
        std::size_t rows = 0;
        bool getIsOpen() const { return seconds > 0.0 && rows == 0; }
    };
    std::size_t takeLength(const Value& value, Length& length, Complaints& complaints);
    void settle(Length& length, std::size_t& rows, double rowsASecond, Complaints& complaints) const;

    Length frameTime;
    Length hopTime;

    void takePins(const Value& value, Complaints& complaints);
};

} // namespace Quillmere::Host
