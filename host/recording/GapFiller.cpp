// SPDX-License-Identifier: MIT
#include "host/recording/GapFiller.h"

#include "host/text/ShortestText.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Quillmere::Host {

GapFiller::GapFiller(const TimeRepairPlan& plan)
    : isHeld(plan.onGap == OnGap::Hold), pins(plan.pins), isWhole(plan.pins.size(), 1) {
    std::size_t count = 0;
    for (const TimeRepairPlan::Pin& pin : pins)
        count += pin.size;
    filling.resize(pins.size(), count);
}

std::optional<Complaint> GapFiller::take(const TimedRow& row, bool isBehindGap) {
    toMake = made = 0.0;
    if (isBehindGap) {
        if (auto fault = beginFilling(row)) return fault;
    } else if (hasLast) {
        noteStep(row.time - from);
    }
    taken = &row;
    return std::nullopt;
}

/// Nothing is made where no pin had a sample in every row.
std::optional<Complaint> GapFiller::beginFilling(const TimedRow& row) {
    const double gap = row.time - from;
    const double step = usualStep();
    const bool isAnyWhole =
        std::any_of(isWhole.begin(), isWhole.end(), [](char whole) { return whole != 0; });
    if (!(step > 0.0) || !isAnyWhole) {
        ++gapsLeft;
        return std::nullopt;
    }
    toMake = std::max(0.0, std::round(gap / step) - 1.0);
    if (toMake > kMostRowsMade)
        return Complaint({},
                         "a gap from " + shortestText(from) + " s to " + shortestText(row.time) +
                             " s, which " + shortestText(toMake) + " rows would fill",
                         "at most " + std::to_string(std::lround(kMostRowsMade)) + ", or 'gaps: keep'");
    for (std::size_t pin = 0; pin < pins.size(); ++pin)
        filling.hasSample[pin] = isWhole[pin];
    if (isHeld) return std::nullopt;
    std::fill(filling.values.begin(), filling.values.end(), std::numeric_limits<double>::quiet_NaN());
    std::fill(filling.isMissing.begin(), filling.isMissing.end(), char{1});
    return std::nullopt;
}

const TimedRow* GapFiller::next() {
    if (taken == nullptr) return nullptr;
    if (made < toMake) {
        ++rowsMade;
        made += 1.0;
        // Order matters: the documented formula.
        filling.time = from + (taken->time - from) * made / (toMake + 1.0);
        filling.row = taken->row;
        filling.line = taken->line;
        return &filling;
    }
    const TimedRow* const row = taken;
    taken = nullptr;
    keep(*row);
    return row;
}

void GapFiller::keep(const TimedRow& row) {
    for (std::size_t pin = 0; pin < pins.size(); ++pin)
        if (row.hasSample[pin] == 0) isWhole[pin] = 0;
    if (isHeld) {
        std::copy(row.values.begin(), row.values.end(), filling.values.begin());
        std::copy(row.isMissing.begin(), row.isMissing.end(), filling.isMissing.begin());
    }
    from = row.time;
    hasLast = true;
}

/// Rows that share a stamp, as those of two sensors may, tell nothing of how far rows lie apart.
void GapFiller::noteStep(double step) {
    if (step > 0.0) steps[stepsNoted++ % kSteps] = step;
}

double GapFiller::usualStep() const {
    const std::size_t count = static_cast<std::size_t>(std::min<std::uint64_t>(stepsNoted, kSteps));
    if (count == 0) return 0.0;
    double sum = 0.0;
    for (std::size_t i = 0; i < count; ++i)
        sum += steps[i];
    return sum / static_cast<double>(count);
}

} // namespace Quillmere::Host
