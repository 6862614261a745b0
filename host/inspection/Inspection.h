// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/ends/SampleRate.h"
#include "host/ends/SourceAccount.h"
#include "host/inspection/AxisGroups.h"
#include "host/inspection/ClockChoice.h"
#include "host/inspection/ColumnWatch.h"
#include "host/inspection/InspectionSettings.h"
#include "host/recording/RecordingReader.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// What is in a recording, as far as it can be told without knowing what it is for: a value.
struct QUILLMERE_API Inspection {
    using Clock = ClockChoice::Kind;

    struct Column {
        RecordingReader::Column described;
        bool isTime = false; ///< Its cells are the rows' times.
        bool isRead = false; ///< It holds numbers; of others nothing below is told.
        std::uint64_t numbers = 0;
        std::uint64_t emptyCells = 0;
        std::uint64_t missingCells = 0; ///< With a text that stands for a missing value.
        std::uint64_t oddCells = 0;     ///< With something else that is no finite number.
        std::optional<double> smallest;
        std::optional<double> largest;
        bool isConstant = false;
        std::uint64_t rowsClippedBelow = 0; ///< By the rule of `ColumnWatch`; 0: it isn't clipped there.
        std::uint64_t rowsClippedAbove = 0;
        std::vector<NumberRange> picture;

        /// Of the rows that were taken, the part without a number.
        double getShareWithout() const {
            const std::uint64_t without = emptyCells + missingCells + oddCells;
            const std::uint64_t cells = without + numbers;
            return cells == 0 ? 0.0 : static_cast<double>(without) / static_cast<double>(cells);
        }
    };
    /// Columns that differ by their axis.
    struct Group {
        AxisGroup axes;
        std::optional<double> medianLength; ///< Of three axes for which no unit is stated.
        std::string guessedUnit;            ///< Empty without a guess.
        bool hasHoles = false;              ///< In some row some are empty while others aren't.
    };

    std::string path;
    std::vector<std::string> form;  ///< What it was taken for and why, each a part of a sentence.
    std::vector<std::string> notes; ///< What was guessed or mended and changes numbers.

    std::uint64_t rows = 0;
    std::uint64_t badRows = 0;    ///< Of too few or too many cells, or without a time; not counted below.
    std::uint64_t mendedRows = 0; ///< With a cell that is no number.
    std::vector<std::string> firstFaults;
    bool isChangedMeanwhile = false;

    Clock clock = Clock::None;
    std::optional<double> statedRate;       ///< Rows a second, by the file or by who asked.
    std::optional<SampleRate> measuredRate; ///< By the first `kRowsMeasured` rows with a time.
    /// First and last time, duplicates, steps back, gaps, median step. Requires: a clock.
    SourceAccount times;
    /// Seconds, of the steps forward, as `LogHistogram` has them: a part of 0.05, 0.5 and 0.95 of them.
    std::optional<double> shortStep;
    std::optional<double> middleStep;
    std::optional<double> longStep;
    std::optional<double> longestStep; ///< Exact.

    std::vector<Column> columns;
    std::vector<Group> groups;
};

/// How far a look has come.
struct InspectionProgress {
    std::uint64_t rows = 0;
    std::uint64_t bytesRead = 0;
    std::uint64_t bytes = 0; ///< 0 when unknown.
};

/// Reads a recording to its end, once, and tells what is in it. Memory grows with its columns, not with its
/// rows. Raises `RecordingException` for what ends the reading, `InterruptedException` when a stop is
/// requested. Requires: a reader that was opened with the wishes of these settings and nothing read of it.
/// [run]
QUILLMERE_API Inspection inspect(RecordingReader& reader, const InspectionSettings& settings,
                                 const std::stop_token& stop = {},
                                 const std::function<void(const InspectionProgress&)>& tell = {});

} // namespace Quillmere::Host
