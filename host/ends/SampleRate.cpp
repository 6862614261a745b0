// SPDX-License-Identifier: MIT
#include "host/ends/SampleRate.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace Quillmere::Host {

namespace {
constexpr double kPause = 10.0;   ///< Of the median step.
constexpr double kAlike = 0.6;    ///< Steps that differ from the median by less are one step.
constexpr double kUnsteady = 0.5; ///< Of the mean step.

std::vector<double> stepsOf(const std::vector<double>& times) {
    std::vector<double> steps;
    for (std::size_t i = 1; i < times.size(); ++i)
        steps.push_back(times[i] - times[i - 1]);
    return steps;
}

/// Requires: some are.
double medianOfForward(std::vector<double> steps) {
    std::erase_if(steps, [](double step) { return !(step > 0.0); });
    const auto middle = steps.begin() + static_cast<std::ptrdiff_t>((steps.size() - 1) / 2);
    std::nth_element(steps.begin(), middle, steps.end());
    return *middle;
}

/// The mean of those that are about as long as the median.
double singleStep(const std::vector<double>& steps, double median) {
    double sum = 0.0;
    double count = 0.0;
    for (const double step : steps) {
        if (!(std::abs(step - median) < kAlike * median)) continue;
        sum += step;
        count += 1.0;
    }
    return sum / count;
}

double meanStep(const std::vector<double>& steps, double single) {
    double sum = 0.0;
    double count = 0.0;
    for (const double step : steps) {
        if (!(step > 0.0 && step < kPause * single)) continue;
        sum += step;
        count += std::max(1.0, std::round(step / single));
    }
    return sum / count;
}

double toSixDigits(double number) {
    const double digits = std::pow(10.0, 5.0 - std::floor(std::log10(number)));
    return std::round(number * digits) / digits;
}
} // namespace

std::optional<SampleRate> RateMeter::measure() const {
    const std::vector<double> steps = stepsOf(times);
    if (std::none_of(steps.begin(), steps.end(), [](double step) { return step > 0.0; })) return std::nullopt;
    // Between steps of the largest and the smallest numbers there is no rate that is a number.
    const double mean = meanStep(steps, singleStep(steps, medianOfForward(steps)));
    if (!std::isnormal(mean) || !std::isnormal(toSixDigits(1.0 / mean))) return std::nullopt;
    const auto unsteady = std::count_if(steps.begin(), steps.end(), [&](double step) {
        return !(std::abs(step - mean) <= kUnsteady * mean);
    });
    return SampleRate{toSixDigits(1.0 / mean), true,
                      static_cast<double>(unsteady) / static_cast<double>(steps.size())};
}

} // namespace Quillmere::Host
