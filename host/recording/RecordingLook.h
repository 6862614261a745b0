// SPDX-License-Identifier: MIT
#pragma once

#include "host/ends/SampleRate.h"
#include "host/ends/SourceAccount.h"
#include "host/recording/RecordingSettings.h"
#include "host/recording/RepairedRows.h"
#include "host/text/Complaint.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// How often rows of a recording come by their times, as its first `kRowsMeasured` rows show.
struct RowsRate {
    std::optional<SampleRate> rate = {};
    bool isSparse = false;   ///< Some rows have no sample for the pin.
    std::string reason = {}; ///< Why there is no rate.
};

/// A second look into a recording that is open: what its first rows show is read beside the run's, which
/// loses nothing. A file that is gone by then is told of by the run. [setup]
class RecordingLook {
public:
    /// None is owned.
    RecordingLook(const std::string& filePath, const RecordingSettings& recordingSettings,
                  const RepairedRows& openRecording)
        : path(filePath), settings(recordingSettings), recording(openRecording) {}

    /// Of at most so many rows. Requires: it isn't a pipe.
    SourceAccount account(std::uint64_t rows) const;
    /// Of the rows that have a sample for each of the pins, in one reading, and behind them of all rows; of a
    /// pipe nobody knows it. Here and below, rows in front of a start are read until a stop of opening.
    std::vector<RowsRate> measure(std::size_t pins) const;
    /// Of numbers that are taken for seconds since the graph says so.
    std::optional<SourceAccount::OtherUnit> findOtherUnitOfTime() const;
    /// Of a file that ends before the first frame is full, of which `block` sends nothing.
    void warnOfShortFile(const std::string& block, Complaints& complaints) const;

private:
    RepairedRows readAhead() const;
    std::optional<SourceAccount::OtherClock> findOtherRateOfTimes() const;

    const std::string& path;
    const RecordingSettings& settings;
    const RepairedRows& recording;
};

} // namespace Quillmere::Host
