// SPDX-License-Identifier: MIT
#include "blocks/FilterFunctionGenerator.h"

#include "design/Constants.h"

#include <cmath>

namespace {
/// Computed, not written as a literal, as everywhere where a phase is turned into an angle.
using Design::kTwoPi;

/// The labels' indices.
enum Mode : unsigned { kSinusoid, kTriangular, kRectangular, kContinuous };
} // namespace

FilterFunctionGenerator::FilterFunctionGenerator(const std::string& instanceName)
    : Filter(instanceName, true), out("out", this), mode("Mode", &getPropertyBag()),
      signalPeriod("SignalPeriod", &getPropertyBag()), signalAmplitude("SignalAmplitude", &getPropertyBag()),
      signalOffset("SignalOffset", &getPropertyBag()), sampleRate("SampleRate", &getPropertyBag()) {
    for (const char* label : {"sinusoid", "triangular", "rectangular", "continuous"})
        mode.addLabel(label);
    mode.setChangeHandler(this, &FilterFunctionGenerator::onMode);
    mode.setValue(kSinusoid);
    signalPeriod.setRange(1.0, 60000.0, 1.0);
    signalPeriod.setValue(1000.0);
    signalAmplitude.setRange(0.0, 1000.0, 0.1);
    signalAmplitude.setValue(100.0);
    signalOffset.setRange(-1000.0, 1000.0, 0.000001);
    signalOffset.setValue(0.0);
    sampleRate.setRange(0, 1000, 1);
    sampleRate.setValue(10);
    resizeSample(out.data.value, 1, 1);
    out.data.value(0) = -signalAmplitude.getValue();
}

FilterFunctionGenerator::~FilterFunctionGenerator() = default;

void FilterFunctionGenerator::process() {
    out.data.value(0) = valueAtPhase();
    advance();
    out.send(time);
}

double FilterFunctionGenerator::valueAtPhase() const {
    const unsigned shape = mode.getValue();
    const double offset = signalOffset.getValue();
    if (shape == kContinuous) return offset;
    const double amplitude = signalAmplitude.getValue();
    const double period = signalPeriod.getValue();
    if (shape == kTriangular) return (2.0 * phase / period - 1.0) * amplitude + offset;
    if (shape == kRectangular) return 2.0 * phase <= period ? offset + amplitude : offset - amplitude;
    return std::sin(phase * kTwoPi / period) * amplitude + offset;
}

void FilterFunctionGenerator::advance() {
    const double step = sampleRate.getValue();
    phase += step;
    time += step;
    const double period = signalPeriod.getValue();
    if (phase >= period) phase -= period;
}

/// In the writer's thread, inside its guard.
void FilterFunctionGenerator::onMode() {
    const bool isPeriodic = mode.getValue() != kContinuous;
    signalAmplitude.setIsWritable(isPeriodic);
    signalPeriod.setIsWritable(isPeriodic);
    sampleRate.setIsWritable(isPeriodic);
}
