// SPDX-License-Identifier: MIT
#include "everyday/GridSampler.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace Everyday {

namespace {
constexpr double kHalfWidth = 20.0; // steps
constexpr double kCutOff = 0.45;    // of the rate: midway between 0.4 and 0.5
constexpr double kBeta = 6.25;      // of a Kaiser window that leaves -65 dB
constexpr double kFaster = 1.01;    // samples a step from which the low-pass is needed
constexpr int kPointsOfStep = 512;  // of the kernel's table; a line between two of them is off by 4e-6
// What two times may differ by that are meant to be one: of a step, and of the time itself, whose last digits
// are a millionth of a second where seconds count from 1970.
constexpr double kSameTime = 1e-6;
constexpr double kSameDigits = 1e-15;
constexpr double kMostSteps = 1e5;           // within a gap, so that a step of the block stays bounded
constexpr double kFarthest = 1e12;           // steps from the origin
constexpr std::size_t kMostSamples = 200000; // within the low-pass

/// The modified Bessel function of order 0, by its series.
double bessel0(double x) {
    const double quarter = 0.25 * x * x;
    double sum = 1.0;
    double term = 1.0;
    for (int k = 1; k < 40; ++k) {
        term *= quarter / (static_cast<double>(k) * static_cast<double>(k));
        sum += term;
    }
    return sum;
}

std::vector<double> makeKernel() {
    const int points = static_cast<int>(kHalfWidth) * kPointsOfStep;
    std::vector<double> table(static_cast<std::size_t>(points) + 2, 0.0);
    for (int i = 0; i < points; ++i) {
        const double steps = static_cast<double>(i) / kPointsOfStep;
        const double angle = 2.0 * std::numbers::pi * kCutOff * steps;
        const double part = steps / kHalfWidth;
        table[static_cast<std::size_t>(i)] =
            (i == 0 ? 1.0 : std::sin(angle) / angle) * bessel0(kBeta * std::sqrt(1.0 - part * part));
    }
    return table;
}
} // namespace

void GridSampler::begin(const Rules& newRules, std::size_t elements) {
    rules = newRules;
    rules.gap = std::min(rules.gap, kMostSteps / rules.rate);
    width = elements;
    hasOrigin = false;
    isEnding = hasWaiting = false;
    waitingSample.resize(width);
    times.clear();
    values.clear();
    first = 0;
    if (rules.hasLowPass && kernel.empty()) kernel = makeKernel();
}

void GridSampler::take(double time, const double* sample) {
    if (!std::isfinite(time) || time + 0.5 / rules.rate == time) return;
    if (getCount() == 0) {
        append(time, sample);
        return beginStretch();
    }
    if (!(time > times.back())) return;
    if (time - times.back() > rules.gap) {
        isEnding = hasWaiting = true;
        waitingTime = time;
        std::copy_n(sample, width, waitingSample.data());
        return;
    }
    if (getCount() >= kMostSamples) ++first;
    append(time, sample);
}

void GridSampler::append(double time, const double* sample) {
    if (first > 1024 && first > getCount()) { // room for as many again in front
        times.erase(times.begin(), times.begin() + static_cast<std::ptrdiff_t>(first));
        values.erase(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(first * width));
        first = 0;
    }
    times.push_back(time);
    values.insert(values.end(), sample, sample + width);
}

/// Steps go on where they were, so that a stretch has the times that it would have without a gap before it.
void GridSampler::beginStretch() {
    const double begin = times[first];
    const double steps = (begin - origin) * rules.rate;
    if (!hasOrigin || !(steps < kFarthest)) {
        origin = begin;
        next = 0.0;
        hasOrigin = true;
    } else {
        next = std::ceil(steps - slackAt(begin) * rules.rate);
    }
    isDecided = !rules.hasLowPass || rules.isHold;
    isFiltered = false;
}

double GridSampler::getNextTime() const {
    return origin + next / rules.rate;
}

double GridSampler::slackAt(double time) const {
    return std::max(kSameTime / rules.rate, kSameDigits * std::abs(time));
}

/// How far behind a step the samples have to have come.
double GridSampler::reachAt(double time) const {
    if (rules.isHold) return slackAt(time);
    return isFiltered ? kHalfWidth / rules.rate : 0.0;
}

void GridSampler::decide() {
    const double span = times.back() - times[first];
    if (!isEnding && span < kHalfWidth / rules.rate) return;
    isDecided = true;
    isFiltered = static_cast<double>(getCount() - 1) > kFaster * rules.rate * span;
}

bool GridSampler::give(double& time, double* value) {
    if (getCount() == 0) return false;
    if (!isDecided) decide();
    if (!isDecided) return false;
    time = getNextTime();
    const bool isWithin =
        isEnding ? time <= times.back() + slackAt(time) : time + reachAt(time) <= times.back();
    if (isWithin) {
        if (isFiltered)
            giveFiltered(time, value);
        else
            giveNear(time, value);
        next += 1.0;
        dropBefore(getNextTime() - (isFiltered ? kHalfWidth / rules.rate : 0.0));
        return true;
    }
    if (!isEnding) return false;
    isEnding = false;
    times.clear();
    values.clear();
    first = 0;
    if (!hasWaiting) return false;
    hasWaiting = false;
    append(waitingTime, waitingSample.data());
    beginStretch();
    return give(time, value);
}

/// Keeps one sample that is earlier: a line begins there, and it tells how long the next one stands.
void GridSampler::dropBefore(double time) {
    while (getCount() > 2 && times[first + 1] <= time)
        ++first;
}

void GridSampler::giveNear(double time, double* value) {
    const double reached = rules.isHold ? time + slackAt(time) : time;
    while (getCount() > 1 && times[first + 1] <= reached)
        ++first;
    const double* const from = values.data() + first * width;
    const bool isAtEnd = rules.isHold || getCount() == 1 || time <= times[first];
    if (isAtEnd) {
        std::copy_n(from, width, value);
        return;
    }
    const double part = (time - times[first]) / (times[first + 1] - times[first]);
    for (std::size_t i = 0; i < width; ++i)
        value[i] = from[i] + (from[width + i] - from[i]) * part;
}

/// The kernel's value at a sample, times the time that the sample stands for: half of that to either
/// neighbour.
double GridSampler::weightAt(std::size_t index, double time) const {
    const double steps = std::abs(times[index] - time) * rules.rate;
    if (!(steps < kHalfWidth)) return 0.0;
    const double at = steps * kPointsOfStep;
    const auto point = static_cast<std::size_t>(at);
    const double part = at - static_cast<double>(point);
    const double height = kernel[point] + (kernel[point + 1] - kernel[point]) * part;
    const double before = times[index > first ? index - 1 : index];
    const double behind = times[index + 1 < times.size() ? index + 1 : index];
    return height * (behind - before);
}

void GridSampler::giveFiltered(double time, double* value) const {
    double sum = 0.0;
    std::fill_n(value, width, 0.0);
    for (std::size_t index = first; index < times.size(); ++index) {
        const double weight = weightAt(index, time);
        if (weight == 0.0) continue;
        sum += weight;
        const double* const sample = values.data() + index * width;
        for (std::size_t i = 0; i < width; ++i)
            value[i] += weight * sample[i];
    }
    for (std::size_t i = 0; i < width; ++i)
        value[i] /= sum;
}

} // namespace Everyday
