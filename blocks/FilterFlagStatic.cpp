// SPDX-License-Identifier: MIT
#include "blocks/FilterFlagStatic.h"

#include <algorithm>
#include <cmath>

namespace {
using Vector3 = FilterFlagStatic::Vector3;

constexpr double kSettlingSeconds = 0.5;
constexpr double kSettlingSlack = -0.001; // so that a sample that comes a little early still counts

Vector3 firstThree(const MatrixXd& sample) {
    const double* const v = sample.data();
    return {v[0], v[1], v[2]};
}

double norm(const Vector3& v) {
    return std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
}
} // namespace

FilterFlagStatic::FilterFlagStatic(const std::string& instanceName)
    : Filter(instanceName, true), signal("3g", this), bias("3bias", this), flagStatic("FlagStatic", this),
      stdDev("StdDev", this), windowSize("Windows Size", &getPropertyBag()),
      largestTolerance("MaxStdDev", &getPropertyBag()), flagThreshold("FlagThreshold", &getPropertyBag()),
      rampSeconds("StepStdDevThreshold", &getPropertyBag()), startStdDev("StdDevIni", &getPropertyBag()),
      clear("Clear", &getPropertyBag()) {
    windowSize.setRange(0, 10000, 1);
    windowSize.setValue(200);
    largestTolerance.setRange(0.0, 5.0, 0.01);
    largestTolerance.setValue(2.0);
    flagThreshold.setRange(0.0, 1000.0, 0.01);
    flagThreshold.setValue(4.0);
    rampSeconds.setRange(0.0, 2000.0, 0.001);
    rampSeconds.setValue(100.0);
    startStdDev.setRange(0.0, 150.0, 1.0);
    startStdDev.setChangeHandler(this, &FilterFlagStatic::requestReset);
    startStdDev.setValue(40.0);
    clear.setChangeHandler(this, &FilterFlagStatic::requestReset);
    estimate.fill(startStdDev.getValue());
    resetWindows();
}

FilterFlagStatic::~FilterFlagStatic() = default;

void FilterFlagStatic::process() {
    if (!signal.hasData()) return;
    if (!bias.hasData()) return; // the signal's sample waits for its partner
    const MatrixXd& signalSample = signal.take();
    const MatrixXd& biasSample = bias.take();
    if (signalSample.size() < 3 || biasSample.size() < 3) return;
    const Vector3 x = firstThree(signalSample);
    const Vector3 offset = firstThree(biasSample);
    const double time = signal.getTimeStamp();

    if (resetRequested) startAnew();
    resizeSample(flagStatic.data.value, 1, 1);
    flagStatic.data.value(0) = 0.0;
    growTolerance();
    if (samplesSeen == 0) {
        firstTimeStamp = time;
        firstSample = x;
        samplesSeen = 1;
        return;
    }
    if (samplesSeen == 1) {
        sampleRate = 1.0 / (time - firstTimeStamp);
        resetWindows();
        push(firstSample);
        samplesSeen = 2;
    }
    push(x);
    adoptIfBelievable(windowDeviations(), time);

    resizeSample(stdDev.data.value, 1, 3);
    std::copy(estimate.begin(), estimate.end(), stdDev.data.value.data());
    const double away = norm({x[0] - offset[0], x[1] - offset[1], x[2] - offset[2]});
    if (norm(estimate) * flagThreshold.getValue() > away) flagStatic.data.value(0) = 1.0;
    stdDev.send(time);
    flagStatic.send(time);
}

void FilterFlagStatic::startAnew() {
    tolerance = 1.0;
    samplesSeen = 0;
    estimate.fill(startStdDev.getValue());
    resetWindows();
    resetRequested = false;
}

void FilterFlagStatic::resetWindows() {
    for (SlidingStdDev& window : windows)
        window.reset(windowSize.getValue());
}

void FilterFlagStatic::push(const Vector3& sample) {
    for (std::size_t axis = 0; axis < 3; ++axis)
        windows[axis].push(sample[axis]);
}

void FilterFlagStatic::growTolerance() {
    const double largest = largestTolerance.getValue();
    if (!(largest > tolerance)) return;
    tolerance += (largest - 1.0) / (sampleRate * rampSeconds.getValue());
}

FilterFlagStatic::Vector3 FilterFlagStatic::windowDeviations() const {
    Vector3 result;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const double deviation = windows[axis].stdDev();
        result[axis] = deviation == 0.0 ? 2.0 * estimate[axis] : deviation;
    }
    return result;
}

void FilterFlagStatic::adoptIfBelievable(const Vector3& window, double time) {
    const bool isSettled = time - firstTimeStamp - kSettlingSeconds >= kSettlingSlack;
    if (!isSettled || !(tolerance * norm(estimate) > norm(window))) return;
    estimate = window;
    tolerance = 1.0;
}

void FilterFlagStatic::requestReset() {
    resetRequested = true;
}
