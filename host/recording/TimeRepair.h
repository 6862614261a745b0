// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/ends/SourceAccount.h"
#include "host/ends/TimeStampWatch.h"
#include "host/recording/GapFiller.h"
#include "host/recording/Resampler.h"
#include "host/recording/TimeGate.h"
#include "host/recording/TimeRepairPlan.h"
#include "host/recording/TimedRow.h"
#include "host/text/Complaint.h"

#include <cstdint>
#include <optional>

namespace Quillmere::Host {

/// Makes of rows as they come those that a plan wants: cuts them off, leaves them out, fills gaps, resamples.
/// It keeps no rows but those that wait for others, and allocates nothing in the steady state.
class QUILLMERE_API TimeRepair {
public:
    explicit TimeRepair(TimeRepairPlan plan);

    /// Takes the next row, and samples from it that aren't to count. What it gives back is wrong with the
    /// row and ends the run, without its place. Requires: `next` gave null, and more rows are wanted; the row
    /// stays as it is until `next` gives null again. [run]
    std::optional<Complaint> take(TimedRow& row);
    /// No more rows come. What it gives back is as that of `take`. [run]
    std::optional<Complaint> finish();
    /// Whether rows that come now would count for nothing. [run]
    bool getIsOver() const { return isOver; }
    /// Whether the last row was one in front of the start. [run]
    bool getIsEarly() const { return isEarly; }
    /// The next row, valid until the next call; null: another has to be taken, or it is over. [run]
    const TimedRow* next();

    /// What was done, and what is to be told of the times that came of it. [run]
    void tell(SourceAccount& account) const;
    /// How often rows came that count, before they were resampled.
    std::optional<SampleRate> measureRate() const { return watch.measureRate(); }

private:
    std::optional<Complaint> takeEarly(const TimedRow& row);
    std::optional<Complaint> takeBehind(const TimedRow& row);
    std::optional<Complaint> takeLast();
    void forgetBehind();
    void tellPinGaps(SourceAccount& account) const;
    std::optional<Complaint> pass(const TimedRow& row);
    bool findGap(const TimedRow& row);

    TimeRepairPlan plan;
    TimeGate gate;
    std::optional<GapFiller> filler;
    std::optional<Resampler> resampler;
    const TimedRow* passed = nullptr;
    bool isOver = false;
    bool isEarly = false;
    bool hasLast = false;
    double last = 0.0; ///< The time of the last row that was passed on.
    bool isBehind = false;
    TimedRow behind; ///< The row that was taken last, if it is at or behind the end.
    TimeStampWatch watch;
    SourceAccount::Finding behindEnd;
    SourceAccount::Finding gaps;
    std::uint64_t rowsIn = 0; ///< That count,
    std::uint64_t rows = 0;   ///< and that came of them.
    double firstTime = 0.0;
    double lastTime = 0.0;
};

} // namespace Quillmere::Host
