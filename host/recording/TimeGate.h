// SPDX-License-Identifier: MIT
#pragma once

#include "host/ends/SourceAccount.h"
#include "host/recording/TimeRepairPlan.h"
#include "host/recording/TimedRow.h"
#include "host/text/Complaint.h"

#include <optional>
#include <vector>

namespace Quillmere::Host {

/// Tells which rows count by their times: those between start and end, and of those that repeat a time stamp
/// or go back what the plan leaves of them.
///
/// A row goes back that has a time stamp below the largest so far. It repeats the one before when it has the
/// time stamp of the last row that counted and a pin has a sample that had one with that stamp already: of
/// rows that share a stamp and no pin, each counts. Rows that don't count are as if they weren't there.
///
/// A single stamp that is wrong by far leaves out all behind it that are right: where the first row behind
/// the largest stamp isn't before the row in front of it, that stamp is the odd one, and it is told.
class TimeGate {
public:
    enum class Answer { Counts, Early, LeftOut, Behind, Refused };

    explicit TimeGate(const TimeRepairPlan& plan);

    /// Looks at the next row, and takes the samples from it that repeat others. `Behind`: it is at or behind
    /// the end. [run]
    Answer judge(TimedRow& row);
    /// Why the last row was refused, without its place. Requires: it was.
    const Complaint& getFault() const { return *fault; }
    /// Whether the last row, which counted, has the time stamp of another and shares no pin with it, or not
    /// any more.
    bool getIsShared() const { return isShared; }
    void tell(SourceAccount::TimeRepairs& repairs) const;

private:
    Answer judgeBackward(const TimedRow& row);
    Answer judgeDuplicate(TimedRow& row);
    void noteBehindLargest(const TimedRow& row);
    void remember(const TimedRow& row);
    SourceAccount::Spot spotOf(const TimedRow& row, double before) const;

    OnDuplicate onDuplicate;
    OnBackward onBackward;
    double start;
    double end;
    double last;                  ///< Of the row that counted last: its time; before the first not-a-number.
    double largest;               ///< Of all that counted.
    SourceAccount::Spot peak;     ///< The row of the largest, and in front of it the largest before.
    std::uint64_t behindPeak = 0; ///< Rows left out since,
    bool isPeakOdd = false;       ///< of which the first wouldn't go back without that row.
    bool isShared = false;
    std::vector<char> hasHad; ///< For each pin, whether it has had a sample with the last time.
    std::uint64_t earlyRows = 0;
    double lastSeen = 0.0; ///< The time of the last row, whether it counts or not.
    SourceAccount::Finding duplicates;
    SourceAccount::Finding backward;
    SourceAccount::Finding wildest;
    std::optional<Complaint> fault;
};

} // namespace Quillmere::Host
