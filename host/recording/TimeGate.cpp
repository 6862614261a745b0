// SPDX-License-Identifier: MIT
#include "host/recording/TimeGate.h"

#include "host/text/ShortestText.h"

#include <limits>

namespace Quillmere::Host {

TimeGate::TimeGate(const TimeRepairPlan& plan)
    : onDuplicate(plan.onDuplicate), onBackward(plan.onBackward), start(plan.start), end(plan.end),
      last(std::numeric_limits<double>::quiet_NaN()), largest(-TimeRepairPlan::kForever),
      hasHad(plan.pins.size()) {}

TimeGate::Answer TimeGate::judge(TimedRow& row) {
    lastSeen = row.time;
    if (row.time < start) {
        ++earlyRows;
        return Answer::Early;
    }
    if (row.time >= end) return Answer::Behind;
    isShared = false;
    Answer answer = row.time < largest ? judgeBackward(row) : Answer::Counts;
    if (answer == Answer::Counts && row.time == last) answer = judgeDuplicate(row);
    if (answer == Answer::Counts) remember(row);
    return answer;
}

TimeGate::Answer TimeGate::judgeBackward(const TimedRow& row) {
    switch (onBackward) {
    case OnBackward::Keep:
        break;
    case OnBackward::Drop:
        backward.note(spotOf(row, largest));
        noteBehindLargest(row);
        return Answer::LeftOut;
    case OnBackward::Error:
        fault.emplace(Place{},
                      "a time stamp of " + shortestText(row.time) + " s, behind one of " +
                          shortestText(largest) + " s",
                      "times that go on, or 'backwards: drop' to leave out such rows");
        return Answer::Refused;
    }
    return Answer::Counts;
}

void TimeGate::noteBehindLargest(const TimedRow& row) {
    if (behindPeak++ == 0) isPeakOdd = row.time >= peak.before;
    if (!isPeakOdd || behindPeak <= wildest.count) return;
    wildest.count = behindPeak;
    wildest.first = peak;
}

TimeGate::Answer TimeGate::judgeDuplicate(TimedRow& row) {
    bool repeats = false;
    bool hasNew = false;
    for (std::size_t pin = 0; pin < hasHad.size(); ++pin) {
        if (row.hasSample[pin] == 0) continue;
        const bool isRepeated = hasHad[pin] != 0;
        (isRepeated ? repeats : hasNew) = true;
        if (isRepeated && onDuplicate != OnDuplicate::Keep) row.hasSample[pin] = 0;
    }
    isShared = !repeats || onDuplicate == OnDuplicate::Drop;
    if (!repeats || onDuplicate == OnDuplicate::Keep) return Answer::Counts;
    if (onDuplicate == OnDuplicate::Error) {
        fault.emplace(Place{}, "the time stamp of the row before, " + shortestText(row.time) + " s",
                      "another for each row, or 'duplicates: drop' to leave out such rows");
        return Answer::Refused;
    }
    duplicates.note(spotOf(row, last));
    return hasNew ? Answer::Counts : Answer::LeftOut;
}

void TimeGate::remember(const TimedRow& row) {
    const bool isNew = row.time != last;
    for (std::size_t pin = 0; pin < hasHad.size(); ++pin)
        hasHad[pin] = static_cast<char>(row.hasSample[pin] != 0 || (!isNew && hasHad[pin] != 0));
    last = row.time;
    if (!(row.time > largest)) return;
    peak = spotOf(row, largest);
    largest = row.time;
    behindPeak = 0;
}

SourceAccount::Spot TimeGate::spotOf(const TimedRow& row, double before) const {
    return {row.row, row.line, before, row.time};
}

void TimeGate::tell(SourceAccount::TimeRepairs& repairs) const {
    repairs.duplicates = duplicates;
    repairs.backward = backward;
    repairs.wildest = wildest;
    repairs.earlyRows = earlyRows;
    repairs.lastSeen = lastSeen;
}

} // namespace Quillmere::Host
