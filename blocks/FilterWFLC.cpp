// SPDX-License-Identifier: MIT
#include "blocks/FilterWFLC.h"

namespace {
constexpr double kStartFrequency = 0.125663706144; // 2 Hz at 100 samples a second
constexpr double kMu = 0.15;
constexpr double kMu0 = 0.001;
constexpr double kMuB = 0.001;
} // namespace

FilterWFLC::FilterWFLC(const std::string& instanceName)
    : Filter(instanceName, true), input("Input", this), startFrequencyPin("Wf0", this),
      resetPin("Reset", this), out("Out", this), error("Error", this), frequencyWeight("FreqWeight", this),
      amplitudeWeights("AmplWeights", this), harmonicWeights("HarmonicWeights", this),
      order("Order", &getPropertyBag()), mu("Mu", &getPropertyBag()), mu0("Mu0", &getPropertyBag()),
      muB("MuB", &getPropertyBag()), wf0("Wf0", &getPropertyBag()), w1("W1", &getPropertyBag()),
      wm1("Wm1", &getPropertyBag()), offset("Offset", &getPropertyBag()),
      resetCommand("Reset", &getPropertyBag()), startFrequency(kStartFrequency),
      estimator(1, kMu, kMu0, kMuB, kStartFrequency, 0.0, 0.0, 0.0) {
    order.setRange(1, WFLCEstimator::kLargestOrder, 1);
    order.setChangeHandler(this, &FilterWFLC::requestRebuild);
    order.setValue(1);
    setUp(mu, kMu);
    setUp(mu0, kMu0);
    setUp(muB, kMuB);
    setUp(wf0, kStartFrequency);
    wf0.setChangeHandler(this, &FilterWFLC::onStartFrequency);
    setUp(w1, 0.0);
    setUp(wm1, 0.0);
    offset.setChangeHandler(this, &FilterWFLC::requestRebuild);
    offset.setValue(0.0);
    resetCommand.setChangeHandler(this, &FilterWFLC::requestReset);
    startFrequencyPin.setIsBlocking(false);
    resetPin.setIsBlocking(false);
    for (OutputPin<MatrixXd>* const pin : {&out, &error, &frequencyWeight})
        resizeSample(pin->data.value, 1, 1);
}

FilterWFLC::~FilterWFLC() = default;

void FilterWFLC::process() {
    if (resetPin.hasData() && isSet(resetPin.take())) resetRequested = true;
    pollStartFrequency();
    if (rebuildRequested) rebuild();
    if (resetRequested) estimator.reset();
    resetRequested = false;

    if (!input.hasData()) return;
    const MatrixXd& sample = input.take();
    if (sample.size() == 0) return;
    estimator.step(sample(0));
    send();
}

void FilterWFLC::setUp(RangeProperty<double>& property, double defaultValue) {
    {
        const Quillmere::Core::PropertyLocker guard(property);
        property.minValue = 0.0;
    }
    property.setChangeHandler(this, &FilterWFLC::requestRebuild);
    property.setValue(defaultValue);
}

void FilterWFLC::pollStartFrequency() {
    if (!startFrequencyPin.hasData()) return;
    const MatrixXd& sample = startFrequencyPin.take();
    if (sample.size() == 0) return;
    const double value = sample(0);
    if (value == startFrequency || !(value >= 0.0)) return;
    startFrequency = value;
    estimator.setStartFrequency(value);
}

/// Starts anew, so that a reset asked for at the same time is done.
void FilterWFLC::rebuild() {
    const double newOffset = offset.getValue();
    const double newWm1 = wm1.getValue();
    const double newW1 = w1.getValue();
    const double newMuB = muB.getValue();
    const double newMu0 = mu0.getValue();
    const double newMu = mu.getValue();
    const int newOrder = order.getValue();
    estimator.configure(newOrder, newMu, newMu0, newMuB, startFrequency, newW1, newWm1, newOffset);
    rebuildRequested = false;
    resetRequested = false;
}

void FilterWFLC::send() {
    out.data.value(0) = estimator.getEstimate();
    error.data.value(0) = estimator.getError();
    frequencyWeight.data.value(0) = estimator.getFrequencyWeight();
    estimator.copyAmplitudeWeights(amplitudeWeights.data.value);
    estimator.copyHarmonicWeights(harmonicWeights.data.value);
    const double time = input.getTimeStamp();
    for (OutputPin<MatrixXd>* const pin :
         {&out, &error, &frequencyWeight, &amplitudeWeights, &harmonicWeights})
        pin->send(time);
}

void FilterWFLC::onStartFrequency() {
    startFrequency = wf0.getValue();
    rebuildRequested = true;
}

void FilterWFLC::requestRebuild() {
    rebuildRequested = true;
}

void FilterWFLC::requestReset() {
    resetRequested = true;
}
