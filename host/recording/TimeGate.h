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
class TimeGate {
public:
    enum class Answer { Counts, Early, LeftOut, Over, Refused };

    explicit TimeGate(const TimeRepairPlan& plan);

    /// Looks at the next row, and takes the samples from it that repeat others. `Over`: neither this row nor
    /// any behind it counts. [run]
    Answer judge(TimedRow& row);
    /// Why the last row was refused, without its place. Requires: it was.
    const Complaint& getFault() const { return *fault; }
    void tell(SourceAccount::TimeRepairs& repairs) const;

private:
    Answer judgeBackward(const TimedRow& row);
    Answer judgeDuplicate(TimedRow& row);
    void remember(const TimedRow& row);
    SourceAccount::Spot spotOf(const TimedRow& row, double before) const;

    OnDuplicate onDuplicate;
    OnBackward onBackward;
    double start;
    double end;
    double last;              ///< Of the row that counted last: its time; before the first not-a-number.
    double largest;           ///< Of all that counted.
    std::vector<char> hasHad; ///< For each pin, whether it has had a sample with the last time.
    std::uint64_t earlyRows = 0;
    double lastSeen = 0.0; ///< The time of the last row, whether it counts or not.
    SourceAccount::Finding duplicates;
    SourceAccount::Finding backward;
    std::optional<Complaint> fault;
};

} // namespace Quillmere::Host
