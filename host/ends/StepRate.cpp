// SPDX-License-Identifier: MIT
#include "host/ends/StepRate.h"

#include <algorithm>
#include <cmath>

namespace Quillmere::Host {

namespace {
constexpr double kPause = 10.0;   ///< Of the median step.
constexpr double kAlike = 0.6;    ///< Steps that differ from the median by less are one step.
constexpr double kUnsteady = 0.5; ///< Of the mean step.

/// Of two middle steps the smaller. Requires: some lead forward.
double medianOfForward(std::vector<StepGroup> steps) {
    std::erase_if(steps, [](const StepGroup& group) { return !(group.sum > 0.0); });
    std::sort(steps.begin(), steps.end(),
              [](const StepGroup& one, const StepGroup& other) { return one.getMean() < other.getMean(); });
    std::uint64_t all = 0;
    for (const StepGroup& group : steps)
        all += group.count;
    std::uint64_t before = 0;
    for (const StepGroup& group : steps) {
        before += group.count;
        if (before > (all - 1) / 2) return group.getMean();
    }
    return 0.0;
}

/// The mean of those that are about as long as the median.
double singleStep(const std::vector<StepGroup>& steps, double median) {
    double sum = 0.0;
    double count = 0.0;
    for (const StepGroup& group : steps) {
        if (!(std::abs(group.getMean() - median) < kAlike * median)) continue;
        sum += group.sum;
        count += static_cast<double>(group.count);
    }
    return sum / count;
}

/// Adds how many single steps there are, and their length.
void addSingleSteps(const std::vector<StepGroup>& steps, double single, double& sum, double& count) {
    for (const StepGroup& group : steps) {
        const double step = group.getMean();
        if (!(step > 0.0 && step < kPause * single)) continue;
        sum += group.sum;
        count += static_cast<double>(group.count) * std::max(1.0, std::round(step / single));
    }
}

std::uint64_t countUnsteady(const std::vector<StepGroup>& steps, double mean) {
    std::uint64_t unsteady = 0;
    for (const StepGroup& group : steps)
        if (!(std::abs(group.getMean() - mean) <= kUnsteady * mean)) unsteady += group.count;
    return unsteady;
}

double toSixDigits(double number) {
    const double digits = std::pow(10.0, 5.0 - std::floor(std::log10(number)));
    return std::round(number * digits) / digits;
}
} // namespace

std::optional<SampleRate> rateOfSteps(const std::vector<std::vector<StepGroup>>& parts) {
    const auto isForward = [](const StepGroup& group) { return group.sum > 0.0; };
    double sum = 0.0;
    double count = 0.0;
    std::uint64_t all = 0;
    std::uint64_t unsteady = 0;
    for (const std::vector<StepGroup>& steps : parts) {
        for (const StepGroup& group : steps)
            all += group.count;
        if (std::none_of(steps.begin(), steps.end(), isForward)) continue;
        double ownSum = 0.0;
        double ownCount = 0.0;
        addSingleSteps(steps, singleStep(steps, medianOfForward(steps)), ownSum, ownCount);
        unsteady += countUnsteady(steps, ownSum / ownCount);
        sum += ownSum;
        count += ownCount;
    }
    // Between steps of the largest and the smallest numbers there is no rate that is a number.
    const double mean = sum / count;
    if (!std::isnormal(mean) || !std::isnormal(toSixDigits(1.0 / mean))) return std::nullopt;
    return SampleRate{toSixDigits(1.0 / mean), true,
                      static_cast<double>(unsteady) / static_cast<double>(all)};
}

} // namespace Quillmere::Host
