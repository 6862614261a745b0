// SPDX-License-Identifier: MIT
#include "host/recording/TimeRepair.h"

#include "host/recording/TimeTolerance.h"
#include "host/text/Counted.h"
#include "host/text/ShortestText.h"

#include <string>
#include <utility>

namespace Quillmere::Host {

namespace {
std::string cutText(const TimeRepairPlan& plan, std::uint64_t earlyRows) {
    const bool hasStart = plan.start > -TimeRepairPlan::kForever;
    const bool hasEnd = plan.end < TimeRepairPlan::kForever;
    if (!hasStart && !hasEnd) return "";
    return (hasStart ? counted(earlyRows, "row") + " before " + shortestText(plan.start) + " s" : "") +
           (hasStart && hasEnd ? " and " : "") +
           (hasEnd ? "all rows from " + shortestText(plan.end) + " s on" : "") + " left out";
}
} // namespace

TimeRepair::TimeRepair(TimeRepairPlan repairPlan) : plan(std::move(repairPlan)), gate(plan) {
    if (plan.resampleRate)
        resampler.emplace(plan);
    else if (plan.onGap == OnGap::Nan || plan.onGap == OnGap::Hold)
        filler.emplace(plan);
}

std::optional<Complaint> TimeRepair::take(TimedRow& row) {
    isEarly = false;
    const TimeGate::Answer answer = gate.judge(row);
    if (isBehind && answer != TimeGate::Answer::Behind) forgetBehind();
    switch (answer) {
    case TimeGate::Answer::Early:
        isEarly = true;
        return takeEarly(row);
    case TimeGate::Answer::LeftOut:
        return std::nullopt;
    case TimeGate::Answer::Behind:
        return takeBehind(row);
    case TimeGate::Answer::Refused:
        return gate.getFault();
    case TimeGate::Answer::Counts:
        break;
    }
    const bool isFirst = rowsIn++ == 0;
    const bool isGap = findGap(row);
    const bool isRepaired = isGap && (filler || resampler);
    // What lies wholly in front of the start concerns nobody.
    const bool isInside = !isFirst || getIsGap(plan.start, row.time, 0.0);
    if (isRepaired && isInside) gaps.note({row.row, row.line, last, row.time});
    const bool isRepeatMeant = gate.getIsShared() && (resampler || plan.onDuplicate != OnDuplicate::Keep);
    if ((isRepaired && !isFirst) || isRepeatMeant)
        watch.skipTo(row.time);
    else
        watch.take(row.time, row.row, row.line);
    if (rowsIn == kRowsMeasured) watch.beginPart();
    if (!isGap || isFirst || plan.onGap != OnGap::Error) return pass(row);
    return Complaint({}, "a gap from " + shortestText(last) + " s to " + shortestText(row.time) + " s",
                     "steps of at most " + shortestText(plan.gapLimit) +
                         " s, or 'gaps: nan', 'hold' or 'keep'");
}

/// Rows in front of the start lead to the first times behind it, as far as they go on.
std::optional<Complaint> TimeRepair::takeEarly(const TimedRow& row) {
    if (!resampler || rowsIn > 0 || (hasLast && row.time < last)) return std::nullopt;
    return pass(row);
}

/// One stamp at or behind the end may be wrong; with the second it is over.
std::optional<Complaint> TimeRepair::takeBehind(const TimedRow& row) {
    if (isBehind) return finish();
    isBehind = true;
    behind = row;
    return std::nullopt;
}

/// Time isn't over after all.
void TimeRepair::forgetBehind() {
    behindEnd.note({behind.row, behind.line, hasLast ? last : behind.time, behind.time});
    isBehind = false;
}

/// The first row behind the end leads to the last times in front of it.
std::optional<Complaint> TimeRepair::takeLast() {
    isBehind = false;
    if (!resampler || rowsIn == 0) return std::nullopt;
    if (findGap(behind)) gaps.note({behind.row, behind.line, last, behind.time});
    return pass(behind);
}

std::optional<Complaint> TimeRepair::pass(const TimedRow& row) {
    const bool isGap = findGap(row);
    last = row.time;
    hasLast = true;
    if (resampler) return resampler->take(row, isGap);
    if (filler) return filler->take(row, isGap);
    passed = &row;
    return std::nullopt;
}

bool TimeRepair::findGap(const TimedRow& row) {
    return hasLast && getIsGap(last, row.time, plan.gapLimit);
}

std::optional<Complaint> TimeRepair::finish() {
    std::optional<Complaint> fault;
    if (isBehind) fault = takeLast();
    isOver = true;
    if (resampler) resampler->finish();
    return fault;
}

const TimedRow* TimeRepair::next() {
    const TimedRow* const row = resampler ? resampler->next()
                                : filler  ? filler->next()
                                          : std::exchange(passed, nullptr);
    if (row == nullptr) return nullptr;
    if (rows++ == 0) firstTime = row->time;
    lastTime = row->time;
    return row;
}

void TimeRepair::tell(SourceAccount& account) const {
    watch.tell(account);
    account.rows = rows;
    account.firstTime = firstTime;
    account.lastTime = lastTime;
    SourceAccount::TimeRepairs& repairs = account.repairs;
    gate.tell(repairs);
    repairs.behindEnd = behindEnd;
    repairs.gaps = gaps;
    repairs.gapLimit = plan.gapLimit;
    repairs.isHeld = plan.onGap == OnGap::Hold;
    if (const std::string cut = cutText(plan, repairs.earlyRows); !cut.empty()) account.notes.push_back(cut);
    if (filler) {
        repairs.rowsFilled = filler->getRowsMade();
        repairs.gapsLeft = filler->getGapsLeft();
    }
    if (!resampler) return;
    account.notes.push_back(shortestText(*plan.resampleRate) + " rows a second, resampled from " +
                            counted(rowsIn, "row"));
    tellPinGaps(account);
    repairs.rowsFilled = resampler->getRowsFilled();
    repairs.resampledRate = plan.resampleRate;
    repairs.resampledRows = rowsIn;
    account.firstStep = account.medianStep = std::nullopt;
    if (rows > 1) account.firstStep = account.medianStep = 1.0 / *plan.resampleRate;
}

/// They count as gaps; which pins have them stands apart.
void TimeRepair::tellPinGaps(SourceAccount& account) const {
    const SourceAccount::Finding& ofPins = resampler->getPinGaps();
    if (ofPins.count == 0) return;
    SourceAccount::Finding& all = account.repairs.gaps;
    if (all.count == 0 || ofPins.first.row < all.first.row) all.first = ofPins.first;
    all.count += ofPins.count;
    account.notes.push_back(counted(ofPins.count, "gap") +
                            " of single pins while the rows went on, the first of '" +
                            resampler->getPinOfFirstGap() + "'");
}

} // namespace Quillmere::Host
