// SPDX-License-Identifier: MIT
#include "host/ends/TimeStampWatch.h"

#include <cmath>

namespace Quillmere::Host {

namespace {
constexpr double kJump = 10.0; ///< Median steps.
} // namespace

TimeStampWatch::TimeStampWatch() : bins(kLastBin - kFirstBin + 1) {}

/// The first row, which is behind none, or a step that doesn't lead forward.
void TimeStampWatch::takeOddStep(const SourceAccount::Spot& spot) {
    if (std::isnan(spot.before)) {
        first = spot.time;
        return;
    }
    noteFirstStep(spot);
    (spot.time < spot.before ? backward : equal).note(spot);
}

/// Every bin is empty before the first step, so the first step is noted here or as an odd one.
void TimeStampWatch::beginBin(Bin& bin, const SourceAccount::Spot& spot) {
    noteFirstStep(spot);
    bin.first = spot;
}

void TimeStampWatch::noteFirstStep(const SourceAccount::Spot& spot) {
    if (!firstStep) firstStep = spot.time - spot.before;
}

std::optional<double> TimeStampWatch::medianStep() const {
    std::uint64_t steps = 0;
    for (const Bin& bin : bins)
        steps += bin.count;
    std::uint64_t before = 0;
    for (const Bin& bin : bins) {
        before += bin.count;
        // Of two middle steps the smaller: a recording of a gap and one more step has no gap of its median.
        if (before > 0 && 2 * before >= steps) return bin.sum / static_cast<double>(bin.count);
    }
    return std::nullopt;
}

void TimeStampWatch::beginPart() {
    for (const Bin& bin : bins)
        firstPart.push_back({bin.count, bin.sum});
    oddInFirstPart = backward.count + equal.count;
}

std::optional<SampleRate> TimeStampWatch::measureRate() const {
    std::vector<std::vector<StepGroup>> parts(2);
    const auto add = [&](std::size_t part, std::uint64_t count, double sum) {
        if (count > 0) parts[part].push_back({count, sum});
    };
    for (std::size_t i = 0; i < bins.size(); ++i) {
        const StepGroup before = firstPart.empty() ? StepGroup{} : firstPart[i];
        add(0, before.count, before.sum);
        add(1, bins[i].count - before.count, bins[i].sum - before.sum);
    }
    add(0, oddInFirstPart, 0.0);
    add(1, backward.count + equal.count - oddInFirstPart, 0.0);
    return rateOfSteps(parts);
}

void TimeStampWatch::tell(SourceAccount& account) const {
    if (std::isnan(last)) return;
    account.firstTime = first;
    account.lastTime = last;
    account.firstStep = firstStep;
    account.medianStep = medianStep();
    account.backward = backward;
    account.equal = equal;
    account.jumps = {};
    if (!account.medianStep) return;
    for (const Bin& bin : bins) {
        if (bin.count == 0 || !(bin.sum / static_cast<double>(bin.count) > kJump * *account.medianStep))
            continue;
        if (account.jumps.count == 0 || bin.first.row < account.jumps.first.row)
            account.jumps.first = bin.first;
        account.jumps.count += bin.count;
    }
}

} // namespace Quillmere::Host
