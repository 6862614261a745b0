// SPDX-License-Identifier: MIT
#include "blocks/FilterSaturationDetector.h"

FilterSaturationDetector::FilterSaturationDetector(const std::string& instanceName)
    : Filter(instanceName, true), thresholdLow("Threshold Low", &getPropertyBag()),
      thresholdHigh("Threshold High", &getPropertyBag()), in("in", this), saturation("saturation", this) {
    thresholdLow.setRange(-100000.0, 100000.0, 0.1);
    thresholdLow.setValue(-10.0);
    thresholdHigh.setRange(-100000.0, 100000.0, 0.1);
    thresholdHigh.setValue(10.0);
}

FilterSaturationDetector::~FilterSaturationDetector() = default;

void FilterSaturationDetector::process() {
    if (!in.hasData()) return;
    const MatrixXd& sample = in.take();
    resizeSample(saturation.data.value, sample.rows(), sample.cols());
    const double* const from = sample.data();
    double* const to = saturation.data.value.data();
    const Eigen::Index size = sample.size();
    for (Eigen::Index i = 0; i < size; ++i)
        to[i] = flag(from[i]);
    saturation.send(in.getTimeStamp());
}

double FilterSaturationDetector::flag(double x) const {
    if (!(x < thresholdHigh.getValue())) return 1.0;
    return x > thresholdLow.getValue() ? 0.0 : 1.0;
}
