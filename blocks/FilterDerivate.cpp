// SPDX-License-Identifier: MIT
#include "blocks/FilterDerivate.h"

FilterDerivate::FilterDerivate(const std::string& instanceName)
    : Filter(instanceName, true), input("Input", this), output("Output", this),
      resetCommand("Reset", &getPropertyBag()) {
    resetCommand.setChangeHandler(this, &FilterDerivate::requestReset);
}

FilterDerivate::~FilterDerivate() = default;

void FilterDerivate::process() {
    if (!input.hasData()) return;
    const MatrixXd& sample = input.take();
    if (resetRequested) resizeSample(previous, 0, 0);
    resetRequested = false;
    if (previous.rows() != sample.rows() || previous.cols() != sample.cols()) copySample(previous, sample);
    MatrixXd& difference = output.data.value;
    resizeSample(difference, sample.rows(), sample.cols());
    const double* const from = sample.data();
    const double* const before = previous.data();
    double* const to = difference.data();
    const Eigen::Index size = sample.size();
    for (Eigen::Index i = 0; i < size; ++i)
        to[i] = from[i] - before[i];
    copySample(previous, sample);
    output.send(input.getTimeStamp());
}

void FilterDerivate::requestReset() {
    resetRequested = true;
}
