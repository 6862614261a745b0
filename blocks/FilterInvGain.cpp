// SPDX-License-Identifier: MIT
#include "blocks/FilterInvGain.h"

FilterInvGain::FilterInvGain(const std::string& instanceName)
    : Filter(instanceName, true), input("input", this), output("output", this),
      invGain("invGain", &getPropertyBag()) {
    invGain.setValue(1.0);
}

FilterInvGain::~FilterInvGain() = default;

void FilterInvGain::process() {
    if (!input.hasData()) return;
    const double divisor = invGain.getValue();
    const MatrixXd& sample = input.take();
    resizeSample(output.data.value, sample.rows(), sample.cols());
    const double* const from = sample.data();
    double* const to = output.data.value.data();
    const Eigen::Index size = sample.size();
    for (Eigen::Index i = 0; i < size; ++i)
        to[i] = from[i] / divisor;
    output.send();
}
