// SPDX-License-Identifier: MIT
#include "blocks/FilterSmartSaturationDetector.h"

#include <cmath>

namespace {
struct Rules {
    double minThreshold;
    double maxThreshold;
    double tolerance;
    double steadySamples;
};

/// One sample over all elements. The counts are doubles, so that every lane of a vector holds one element;
/// they are exact, and the selections leave no branch to guess.
template <bool kWholeOnly>
void flagElements(const Rules& rules, const double* x, double* anchor, double* count, double* out,
                  Eigen::Index size) {
    for (Eigen::Index i = 0; i < size; ++i) {
        const double value = x[i];
        const double start = anchor[i];
        const bool isCandidate = (value <= rules.minThreshold) | (value >= rules.maxThreshold);
        const bool isFlat = (value >= start - rules.tolerance) & (value <= start + rules.tolerance);
        bool follows = isCandidate & isFlat;
        if constexpr (kWholeOnly) follows = follows & (std::trunc(value) == value);
        const double newCount = follows ? count[i] + 1.0 : 0.0;
        count[i] = newCount;
        out[i] = (follows & (newCount + 1.0 >= rules.steadySamples)) ? 1.0 : 0.0;
        anchor[i] = follows ? start : value;
    }
}
} // namespace

FilterSmartSaturationDetector::FilterSmartSaturationDetector(const std::string& instanceName)
    : Filter(instanceName, true), in("in", this), saturation("saturation", this),
      minThreshold("MinThreshold", &getPropertyBag()), maxThreshold("MaxThreshold", &getPropertyBag()),
      steadyTolerance("SteadyTolerance", &getPropertyBag()),
      steadySamples("SteadySamples", &getPropertyBag()),
      integerSaturation("IntegerSaturation", &getPropertyBag()) {
    minThreshold.setRange(-100000.0, 100000.0, 0.001);
    minThreshold.setValue(-1024.0);
    maxThreshold.setRange(-100000.0, 100000.0, 0.001);
    maxThreshold.setValue(1024.0);
    steadyTolerance.setRange(0.0, 10000.0, 0.001);
    steadyTolerance.setValue(0.0);
    steadySamples.setRange(2, 10000, 1);
    steadySamples.setValue(3);
    integerSaturation.setValue(false);
    // After the defaults, which would drag each other.
    minThreshold.setChangeHandler(this, &FilterSmartSaturationDetector::onMinThreshold);
    maxThreshold.setChangeHandler(this, &FilterSmartSaturationDetector::onMaxThreshold);
}

FilterSmartSaturationDetector::~FilterSmartSaturationDetector() = default;

void FilterSmartSaturationDetector::process() {
    if (!in.hasData()) return;
    const MatrixXd& sample = in.take();
    MatrixXd& out = saturation.data.value;
    if (out.rows() != sample.rows() || out.cols() != sample.cols()) startAnew(sample);

    Rules rules;
    rules.minThreshold = minThreshold.getValue();
    rules.maxThreshold = maxThreshold.getValue();
    rules.tolerance = steadyTolerance.getValue();
    rules.steadySamples = steadySamples.getValue();
    const auto flagAll = integerSaturation.getValue() ? flagElements<true> : flagElements<false>;
    flagAll(rules, sample.data(), anchor.data(), steadyCount.data(), out.data(), sample.size());
    saturation.send(in.getTimeStamp());
}

void FilterSmartSaturationDetector::startAnew(const MatrixXd& sample) {
    for (MatrixXd* const matrix : {&anchor, &steadyCount, &saturation.data.value}) {
        resizeSample(*matrix, sample.rows(), sample.cols());
        matrix->setZero();
    }
}

void FilterSmartSaturationDetector::onMinThreshold() {
    const double smallest = minThreshold.getValue();
    if (maxThreshold.getValue() < smallest) maxThreshold.setValue(smallest);
}

void FilterSmartSaturationDetector::onMaxThreshold() {
    const double largest = maxThreshold.getValue();
    if (minThreshold.getValue() > largest) minThreshold.setValue(largest);
}
