// SPDX-License-Identifier: MIT
#include "host/recording/Resampler.h"

#include "host/recording/TimeTolerance.h"
#include "host/text/ShortestText.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Quillmere::Host {

namespace {
constexpr double kFinest = 0.25; ///< Of a step: coarser stamps would all be at the same times.
/// Two minutes at 1 kHz. A pin that is silent for longer isn't one to draw lines for.
constexpr std::size_t kMostWaiting = 131072;
/// Fewer of rows with so many values that they would take too much memory.
constexpr std::size_t kMostValuesWaiting = std::size_t{1} << 24;
} // namespace

Resampler::Resampler(const TimeRepairPlan& plan)
    : rate(*plan.resampleRate), onGap(plan.onGap), gapLimit(plan.gapLimit), end(plan.end),
      hasOrigin(plan.start > -TimeRepairPlan::kForever), origin(hasOrigin ? plan.start : 0.0) {
    std::size_t count = 0;
    for (const TimeRepairPlan::Pin& pin : plan.pins) {
        Around& around = arounds.emplace_back();
        around.pin = pin;
        around.offset = count;
        count += pin.size;
    }
    left.resize(arounds.size(), count);
    out.resize(arounds.size(), count);
}

double Resampler::toleranceAt(double time) const {
    return std::max(kNearStep / rate, kNearStamp * std::abs(time));
}

bool Resampler::getIsHit(double rowTime, double time) const {
    return std::abs(rowTime - time) <= toleranceAt(time);
}

std::optional<Complaint> Resampler::take(const TimedRow& row, bool isBehindGap) {
    if (!hasOrigin) origin = row.time;
    hasOrigin = true;
    std::optional<Complaint> fault = findFaultOfTime(row.time, isBehindGap);
    if (!fault) fault = findTooManyWaiting();
    hasLast = true;
    last = row.time;
    lastRow = row.row;
    lastLine = row.line;
    if (!fault) fault = takeOfPins(row, isBehindGap);
    queue.push(row, isBehindGap);
    return fault;
}

/// A pin whose samples end before the rows do has a gap behind its last.
void Resampler::finish() {
    for (const Around& around : arounds)
        if (getHasOwnGap(around, last)) notePinGap(around, last);
    isFinished = true;
}

/// Whether its step from the sample that came last is too long by itself, and reaches into what counts.
bool Resampler::getHasOwnGap(const Around& around, double time) const {
    return !around.pin.isHeld && around.hasLatest && !around.isGapSince &&
           getIsGap(around.latest, time, gapLimit) && getPasses(time, origin) && around.latest < end;
}

void Resampler::notePinGap(const Around& around, double time) {
    if (pinGaps.count == 0) pinOfFirstGap = around.pin.name;
    pinGaps.note({lastRow, lastLine, around.latest, time});
}

std::optional<Complaint> Resampler::takeOfPins(const TimedRow& row, bool isBehindGap) {
    std::optional<Complaint> fault;
    for (std::size_t pin = 0; pin < arounds.size(); ++pin) {
        Around& around = arounds[pin];
        around.isGapSince = around.isGapSince || isBehindGap;
        if (row.hasSample[pin] == 0) continue;
        if (getHasOwnGap(around, row.time)) {
            notePinGap(around, row.time);
            if (onGap == OnGap::Error)
                fault = Complaint({},
                                  "a gap of the pin '" + around.pin.name + "' from " +
                                      shortestText(around.latest) + " s to " + shortestText(row.time) + " s",
                                  "steps of at most " + shortestText(gapLimit) +
                                      " s, or 'gaps: nan', 'hold' or 'keep'");
        }
        around.hasLatest = true;
        around.latest = row.time;
        around.isGapSince = false;
    }
    return fault;
}

std::optional<Complaint> Resampler::findFaultOfTime(double time, bool isBehindGap) const {
    if (kNearStamp * std::max(std::abs(origin), std::abs(time)) > kFinest / rate)
        return Complaint({},
                         "a time stamp of " + shortestText(time) +
                             " s, so large that 'resample' can't tell times " + shortestText(1.0 / rate) +
                             " s apart",
                         "times in seconds that count from less long ago, as 'timeUnit' and 'timeStart' make "
                         "them");
    const double rows = hasLast ? (std::min(time, end) - std::max(last, origin)) * rate : 0.0;
    if (!(rows > kMostRowsMade) || (isBehindGap && onGap == OnGap::Keep)) return std::nullopt;
    return Complaint({},
                     "no row from " + shortestText(last) + " s to " + shortestText(time) +
                         " s, where 'resample' would make " + shortestText(std::round(rows)),
                     "at most " + std::to_string(std::lround(kMostRowsMade)) +
                         ", or 'gapLimit' and 'gaps: keep' to leave gaps as they are");
}

std::optional<Complaint> Resampler::findTooManyWaiting() const {
    const std::size_t most =
        std::min(kMostWaiting, kMostValuesWaiting / std::max<std::size_t>(1, out.values.size()));
    const Around* const waiting = queue.getSize() >= most ? findWaiting() : nullptr;
    if (waiting == nullptr) return std::nullopt;
    return Complaint({},
                     "more than " + std::to_string(most) + " rows without a sample of the pin '" +
                         waiting->pin.name + "', for whose next one 'resample' waits",
                     "'interpolate: {" + waiting->pin.name + ": hold}', or a source of its own for it");
}

const Resampler::Around* Resampler::findWaiting() const {
    const auto found = std::find_if(arounds.begin(), arounds.end(), [&](const Around& around) {
        return getAwaitsNext(around) && around.seek == queue.getEnd();
    });
    return found == arounds.end() ? nullptr : &*found;
}

const TimedRow* Resampler::next() {
    while (moveUp()) {
        const double time = nextTime();
        if (!getIsDecided(time)) return nullptr;
        bool isAny = false;
        bool isFilled = false;
        for (std::size_t pin = 0; pin < arounds.size(); ++pin) {
            const Made made = make(arounds[pin], time);
            out.hasSample[pin] = made != Made::Nothing;
            isAny = isAny || made != Made::Nothing;
            isFilled = isFilled || made == Made::Filled;
        }
        step += 1.0;
        if (!isAny) continue;
        if (isFilled) ++rowsFilled;
        out.time = time;
        out.row = queue.front().row.row;
        out.line = queue.front().row.line;
        return &out;
    }
    return nullptr;
}

/// Until the first row that waits reaches the time of the next one; false when none does.
bool Resampler::moveUp() {
    if (!hasOrigin) return false;
    skipEmptyTimes();
    const double time = nextTime();
    if (getReaches(time, end)) {
        queue.clear();
        return false;
    }
    while (!queue.isEmpty() && !getReaches(queue.front().row.time, time))
        absorbFront();
    return !queue.isEmpty();
}

/// In front of the first row and in gaps that are kept nothing is sent, and there may be much of it.
void Resampler::skipEmptyTimes() {
    if (queue.isEmpty()) return;
    const auto hasLeft = [](const Around& around) { return around.hasLeft; };
    const bool isFirst = std::none_of(arounds.begin(), arounds.end(), hasLeft);
    const RowQueue::Entry& front = queue.front();
    if (!isFirst && !(front.isBehindGap && onGap == OnGap::Keep)) return;
    const double first = front.row.time - toleranceAt(front.row.time);
    step = std::max(step, std::ceil((first - origin) * rate));
}

void Resampler::absorbFront() {
    const RowQueue::Entry& front = queue.front();
    const std::uint64_t number = queue.getFirst();
    for (std::size_t pin = 0; pin < arounds.size(); ++pin) {
        Around& around = arounds[pin];
        const bool isOver = around.seek <= number;
        if (isOver) around.seek = number + 1;
        if (front.row.hasSample[pin] == 0) {
            around.isGapPassed = around.isGapPassed || front.isBehindGap;
            if (isOver) around.isGapSeen = around.isGapSeen || front.isBehindGap;
            continue;
        }
        const auto offset = static_cast<std::ptrdiff_t>(around.offset);
        const auto size = static_cast<std::ptrdiff_t>(around.pin.size);
        std::copy_n(front.row.values.begin() + offset, size, left.values.begin() + offset);
        std::copy_n(front.row.isMissing.begin() + offset, size, left.isMissing.begin() + offset);
        around.hasLeft = true;
        around.leftTime = front.row.time;
        around.isGapPassed = around.isGapSeen = false;
    }
    queue.pop();
}

/// Looks for the pin's first sample among the rows that wait; true when there is one, in row `seek`.
bool Resampler::findNext(Around& around) const {
    const auto pin = static_cast<std::size_t>(&around - arounds.data());
    for (; around.seek < queue.getEnd(); ++around.seek) {
        const RowQueue::Entry& entry = queue[around.seek];
        if (entry.row.hasSample[pin] != 0) return true;
        around.isGapSeen = around.isGapSeen || entry.isBehindGap;
    }
    return false;
}

/// Whether nothing that may still come changes the row of that time. A sample of the time itself may.
bool Resampler::getIsDecided(double time) {
    bool isDecided = true;
    for (Around& around : arounds) {
        if (findNext(around) || isFinished) continue;
        isDecided = isDecided && !getAwaitsNext(around) && getPasses(last, time);
    }
    return isDecided;
}

Resampler::Made Resampler::make(const Around& around, double time) {
    const bool hasNext = around.seek < queue.getEnd();
    const RowQueue::Entry& front = queue.front();
    if (hasNext && getIsHit(queue[around.seek].row.time, time)) {
        copyRow(around, queue[around.seek].row);
        return Made::Sample;
    }
    if (!around.hasLeft) return Made::Nothing;
    if (around.pin.isHeld) {
        if (around.isGapPassed || front.isBehindGap) return fill(around);
        copyLeft(around);
        return Made::Sample;
    }
    if (around.isGapSeen || (hasNext && queue[around.seek].isBehindGap)) return fill(around);
    if (getIsGap(around.leftTime, hasNext ? queue[around.seek].row.time : last, gapLimit))
        return fill(around);
    if (!hasNext) return Made::Nothing;
    drawLine(around, queue[around.seek].row, time);
    return Made::Sample;
}

Resampler::Made Resampler::fill(const Around& around) {
    if (onGap == OnGap::Keep || onGap == OnGap::Error) return Made::Nothing;
    copyLeft(around);
    if (onGap == OnGap::Hold) return Made::Filled;
    for (std::size_t i = around.offset; i < around.offset + around.pin.size; ++i) {
        out.values[i] = std::numeric_limits<double>::quiet_NaN();
        out.isMissing[i] = 1;
    }
    return Made::Filled;
}

void Resampler::copyRow(const Around& around, const TimedRow& row) {
    for (std::size_t i = around.offset; i < around.offset + around.pin.size; ++i) {
        out.values[i] = row.values[i];
        out.isMissing[i] = row.isMissing[i];
    }
}

void Resampler::copyLeft(const Around& around) {
    copyRow(around, left);
}

void Resampler::drawLine(const Around& around, const TimedRow& right, double time) {
    // Order matters: the documented formula.
    const double part = (time - around.leftTime) / (right.time - around.leftTime);
    for (std::size_t i = around.offset; i < around.offset + around.pin.size; ++i) {
        const double x = left.values[i];
        out.values[i] = x + (right.values[i] - x) * part;
        out.isMissing[i] = static_cast<char>(std::isnan(out.values[i]) &&
                                             (left.isMissing[i] != 0 || right.isMissing[i] != 0));
    }
}

} // namespace Quillmere::Host
