// SPDX-License-Identifier: MIT
#include "host/recording/RowClock.h"

#include "host/recording/CsvCells.h"
#include "host/text/Counted.h"

#include <algorithm>

namespace Quillmere::Host {

namespace {
constexpr std::int64_t kDay = 86'400'000'000'000; // nanoseconds
constexpr std::int64_t kShortTurn = 1 << 16;      // of a counter of 16 bits
} // namespace

RowClock::RowClock(TimePlan timePlan, char decimalSign) : plan(std::move(timePlan)), decimal(decimalSign) {}

std::optional<double> RowClock::take(std::string_view text) {
    std::optional<Tick> tick = tickOf(text);
    const std::uint64_t row = rowOfSecond++;
    if (!tick) return std::nullopt;
    unwrap(*tick);
    if (!first) first = tick;
    double seconds = 0.0;
    if (plan.start) {
        const std::int64_t unit = nanosecondsOfUnit();
        const Tick start{*plan.start / unit,
                         static_cast<double>(*plan.start % unit) / static_cast<double>(unit)};
        seconds = tick->since(start) / plan.perSecond;
    } else if (plan.isRelative) {
        seconds = tick->since(*first) / plan.perSecond;
    } else {
        seconds = tick->getValue() / plan.perSecond;
    }
    if (!plan.isSpread) return seconds;
    return seconds + static_cast<double>(before + row) / static_cast<double>(perSecond);
}

std::optional<Tick> RowClock::tickOf(std::string_view text) const {
    if (!plan.isText) return tickOfNumber(text, decimal);
    const std::optional<std::int64_t> nanoseconds = nanosecondsOf(text, plan.order);
    return nanoseconds ? std::optional(Tick{*nanoseconds, 0.0}) : std::nullopt;
}

/// A step back by more than half of what a counter holds is a new turn of it; a time of day without a date is
/// one of a day.
void RowClock::unwrap(Tick& tick) {
    const bool isOfDay = plan.isText && tick.whole >= 0 && tick.whole < kDay;
    const std::int64_t turn = isOfDay ? kDay : plan.counterBits > 0 ? std::int64_t{1} << plan.counterBits : 0;
    if (!plan.isText && turn != kShortTurn) lookForShortWrap(tick.whole);
    if (turn == 0) return;
    if (tick.whole < 0 || tick.whole >= turn) return;
    if (last && last->whole - tick.whole > turn / 2) {
        turns += turn;
        ++wraps;
    }
    last = tick;
    tick.whole += turns;
}

/// A small counter isn't taken for one unless the graph says so: its numbers may be what they look like.
void RowClock::lookForShortWrap(std::int64_t tick) {
    const std::int64_t end = kShortTurn / 8;
    if (largest < kShortTurn && former >= kShortTurn - end && tick >= 0 && tick < end) ++shortWraps;
    former = tick;
    largest = std::max(largest, tick);
}

void RowClock::beginSecond(std::uint64_t rows, std::uint64_t usual, bool isFirst) {
    rowOfSecond = 0;
    perSecond = std::max(rows, usual);
    before = isFirst ? perSecond - rows : 0;
}

std::int64_t RowClock::nanosecondsOfUnit() const {
    return plan.isText ? 1 : static_cast<std::int64_t>(1e9 / plan.perSecond);
}

/// Requires: there is a first.
std::int64_t RowClock::nanosecondsOfFirst() const {
    const std::int64_t unit = nanosecondsOfUnit();
    return first->whole * unit + static_cast<std::int64_t>(first->fraction * static_cast<double>(unit));
}

std::optional<std::int64_t> RowClock::getOrigin() const {
    if (plan.start) return plan.start;
    if (plan.isRelative && first) return nanosecondsOfFirst();
    return std::nullopt;
}

std::string RowClock::startText() const {
    const std::string text = dateText(nanosecondsOfFirst());
    const bool isOfDay = plan.isText && first->whole >= 0 && first->whole < kDay;
    return isOfDay ? text.substr(text.find(' ') + 1) : text;
}

std::vector<std::string> RowClock::getNotes() const {
    std::vector<std::string> notes = plan.notes;
    if (first && plan.isRelative && !plan.start) notes.push_back("times count from " + startText());
    if (shortWraps > 0)
        notes.push_back(counted(shortWraps, "step") + " back at " + std::to_string(kShortTurn) +
                        ", as a counter of 16 bits makes; 'counterBits: 16' would mend it");
    if (wraps > 0)
        notes.push_back(counted(wraps, "turn") + " of " +
                        (plan.isText ? std::string("midnight")
                                     : "the " + std::to_string(plan.counterBits) + "-bit counter") +
                        " mended in its times");
    return notes;
}

} // namespace Quillmere::Host
