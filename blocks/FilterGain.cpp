// SPDX-License-Identifier: MIT
#include "blocks/FilterGain.h"

namespace {
void multiply(const double* from, double* to, Eigen::Index size, double factor) {
    for (Eigen::Index i = 0; i < size; ++i)
        to[i] = from[i] * factor;
}
} // namespace

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
    multiply(sample.data(), output.data.value.data(), sample.size(), factor);
    output.send(input.getTimeStamp());
}

Eigen::Index FilterGain::getRowWidth(Eigen::Index columns) {
    return columns;
}

void FilterGain::stepRows(const double* rows, double* results, std::size_t count, Eigen::Index columns) {
    multiply(rows, results, static_cast<Eigen::Index>(count) * columns, gain.getValue());
}
