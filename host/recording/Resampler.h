// SPDX-License-Identifier: MIT
#pragma once

#include "host/ends/SourceAccount.h"
#include "host/recording/RowQueue.h"
#include "host/recording/TimeRepairPlan.h"
#include "host/recording/TimeTolerance.h"
#include "host/recording/TimedRow.h"
#include "host/text/Complaint.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// Makes rows of even times out of rows of any times that go on.
///
/// The times are t0 + k / rate for k = 0, 1, ..., where t0 is the plan's start or, without one, the first
/// row's time. Between a pin's samples x at a and y at b a line gives x + (y - x) * ((t - a) / (b - a)), and
/// holding gives x. A sample that lies within a millionth of a step of the time is taken as it is, bit for
/// bit (and where stamps are so large that they can't be told apart as finely, within four of their last
/// places). In front of its first sample and, where lines are drawn, behind its last a pin has none.
///
/// Nothing is drawn or held across a gap: where one lies between x and y, the plan says what stands there,
/// which is nothing at all with `Keep`. Where lines are drawn, a step from x to y that is too long is a gap
/// too, whatever rows come meanwhile for other pins: what is held may well change seldom. A time at which no
/// pin has a sample makes no row.
///
/// Rows wait until each pin that lines are drawn for has a sample at or behind the time; no longer.
class Resampler {
public:
    /// Requires: the plan has a rate.
    explicit Resampler(const TimeRepairPlan& plan);

    /// Takes the next row. A complaint, without its place: too many rows would wait, or would have to be
    /// made. Requires: `next` gave null, and the row isn't before the last. [run]
    std::optional<Complaint> take(const TimedRow& row, bool isBehindGap);
    /// No more rows come. [run]
    void finish();
    /// The next row, valid until the next call; null: it depends on rows that haven't come. [run]
    const TimedRow* next();

    /// Rows of which a part lies in a gap.
    std::uint64_t getRowsFilled() const { return rowsFilled; }
    /// Gaps of single pins, while rows went on for others, and the pin of the first.
    const SourceAccount::Finding& getPinGaps() const { return pinGaps; }
    const std::string& getPinOfFirstGap() const { return pinOfFirstGap; }

private:
    /// What is known of a pin around the time of the next row.
    struct Around {
        TimeRepairPlan::Pin pin;
        std::size_t offset = 0; ///< Of its elements in a row.
        bool hasLeft = false;   ///< A sample before the time.
        double leftTime = 0.0;
        bool isGapPassed = false; ///< A row behind a gap has come since, before the time,
        bool isGapSeen = false;   ///< or among those that were looked at for the next sample.
        bool hasLatest = false;   ///< A sample at all,
        double latest = 0.0;      ///< and the time of the last that came,
        bool isGapSince = false;  ///< and whether a gap between rows has come since.
        std::uint64_t seek = 0;   ///< The rows in front of this one haven't the next sample.
    };
    enum class Made { Nothing, Sample, Filled };

    double nextTime() const { return origin + step / rate; }
    double toleranceAt(double time) const;
    bool getReaches(double rowTime, double time) const { return rowTime >= time - toleranceAt(time); }
    bool getIsHit(double rowTime, double time) const;
    bool getPasses(double rowTime, double time) const { return rowTime > time + toleranceAt(time); }

    /// Whether a line is to be drawn to a sample that must come then.
    bool getAwaitsNext(const Around& around) const {
        return !around.pin.isHeld && around.hasLeft && !around.isGapSeen &&
               !getIsGap(around.leftTime, last, gapLimit);
    }
    bool getHasOwnGap(const Around& around, double time) const;
    std::optional<Complaint> takeOfPins(const TimedRow& row, bool isBehindGap);
    void notePinGap(const Around& around, double time);

    std::optional<Complaint> findFaultOfTime(double time, bool isBehindGap) const;
    std::optional<Complaint> findTooManyWaiting() const;
    bool moveUp();
    void skipEmptyTimes();
    void absorbFront();
    bool findNext(Around& around) const;
    bool getIsDecided(double time);
    Made make(const Around& around, double time);
    Made fill(const Around& around);
    void copyRow(const Around& around, const TimedRow& row);
    void copyLeft(const Around& around);
    void drawLine(const Around& around, const TimedRow& right, double time);
    const Around* findWaiting() const;

    double rate;
    OnGap onGap;
    double gapLimit;
    double end;
    bool hasOrigin;
    double origin;     ///< t0, in seconds.
    double step = 0.0; ///< k of the next row: whole numbers up to 2^53 are exact.
    std::vector<Around> arounds;
    TimedRow left; ///< The last samples before the time of the next row.
    TimedRow out;
    RowQueue queue;
    bool hasLast = false;
    double last = 0.0;         ///< The time of the last row that came,
    std::uint64_t lastRow = 0; ///< and its place.
    std::uint64_t lastLine = 0;
    SourceAccount::Finding pinGaps;
    std::string pinOfFirstGap;
    bool isFinished = false;
    std::uint64_t rowsFilled = 0;
};

} // namespace Quillmere::Host
