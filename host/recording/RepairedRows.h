// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/recording/RecordingRows.h"
#include "host/recording/TimeRepair.h"
#include "host/recording/TimeRepairPlan.h"
#include "host/recording/TimedRow.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>
#include <stop_token>
#include <vector>

namespace Quillmere::Host {

/// Makes seconds of the dates in a plan. What it gives back is wrong with them, and stands where the graph
/// has them. Requires: a row has been read.
std::optional<Complaint> resolveDates(TimeRepairPlan& plan, const RecordingReader& reader);

/// The rows of a recording with times as its graph wants them. Where it wants nothing, they are the rows as
/// they were taken, which costs nothing.
class QUILLMERE_API RepairedRows {
public:
    /// `Skipped`: a row was read that doesn't count. `Nothing`: none was read, or one that a start cuts off.
    enum class Row { Taken, Skipped, Nothing, End };

    RepairedRows(std::unique_ptr<RecordingReader> reader, RowPlan plan, TimeRepairPlan repairPlan);

    RepairedRows(const RepairedRows&) = delete; // its rows point into it
    RepairedRows& operator=(const RepairedRows&) = delete;

    /// As `RecordingRows` has it. Where times are repaired nothing is read ahead, since a time at which that
    /// ends the run is told with the row's place. [setup]
    void setThread(std::shared_ptr<WorkThread> thread) {
        if (!isRepairing) rows.setThread(std::move(thread));
    }

    /// Goes on by one row that is read, or that was made of those that were. Raises `RecordingException` for
    /// one that ends the run. [run]
    Row take();
    /// Whether `take` wouldn't wait. [run]
    bool getIsReady() { return mayHaveMore || getIsOver() || rows.getIsReady(); }
    /// Whether nothing is left, as far as has been looked. Asked of pipes only. [run]
    bool getIsAtEnd() const { return !mayHaveMore && (getIsOver() || getReader().getIsAtEnd()); }
    void setStop(const std::stop_token& token) { rows.setStop(token); }

    const RecordingReader& getReader() const { return rows.getReader(); }
    const RowPlan& getPlan() const { return rows.getPlan(); }
    const TimeRepairPlan& getRepairPlan() const { return plan; }
    bool getIsRepairing() const { return isRepairing; }

    /// As `RecordingRows` has them. Requires: the last `take` took a row.
    double getTime() const { return current == nullptr ? rows.getTime() : current->time; }
    double getElement(std::size_t pin, std::size_t element) const {
        return current == nullptr ? rows.getElement(pin, element) : current->values[offsets[pin] + element];
    }
    void copyElements(std::size_t pin, double* to) const {
        if (current == nullptr) return rows.copyElements(pin, to);
        std::copy_n(current->values.data() + offsets[pin], plan.pins[pin].size, to);
    }
    bool getIsMissing(std::size_t pin, std::size_t element) const {
        return current == nullptr ? rows.getIsMissing(pin, element)
                                  : current->isMissing[offsets[pin] + element] != 0;
    }
    bool getHasSample(std::size_t pin) const {
        return current == nullptr ? rows.getHasSample(pin) : current->hasSample[pin] != 0;
    }

    SourceAccount getAccount() const;
    /// Of the rows that came of it, by their time stamps; nothing where a rate is stated.
    std::optional<SampleRate> measureRate() const;

private:
    Row takeNext();
    void begin(bool hasRow);
    void copyRow();
    bool getIsOver() const { return repair && repair->getIsOver(); }

    RecordingRows rows;
    TimeRepairPlan plan; ///< Without dates as soon as a row was read.
    bool isRepairing;
    std::optional<TimeRepair> repair; ///< From the first row on.
    std::vector<std::size_t> offsets; ///< For each pin the place of its elements in a row.
    TimedRow read;
    const TimedRow* current = nullptr; ///< The row that came of it; null where nothing is repaired.
    bool mayHaveMore = false;          ///< Of the rows that were read.
};

} // namespace Quillmere::Host
