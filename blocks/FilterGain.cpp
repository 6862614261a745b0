// SPDX-License-Identifier: MIT
#include "blocks/FilterGain.h"

FilterGain::FilterGain(const std::string& instanceName)
    : Filter(instanceName, true), input("input", this), output("output", this),
      gain("Gain", &getPropertyBag()) {
    gain.setValue(1.0);
}

FilterGain::~FilterGain() = default;

void FilterGain::process() {
    if (!input.hasData()) return;
    const double factor = gain.getValue();
    const MatrixXd& sample = input.take();
    resizeSample(output.data.value, sample.rows(), sample.cols());
    const double* const from = sample.data();
    double* const to = output.data.value.data();
    const Eigen::Index size = sample.size();
    for (Eigen::Index i = 0; i < size; ++i)
        to[i] = from[i] * factor;
    output.send(input.getTimeStamp());
}
