// SPDX-License-Identifier: MIT
#include "blocks/FilterDeadband.h"

#include <cmath>

namespace {
/// Multiplies each element by 1.0 where `passes` holds and by 0.0 elsewhere. Two loops that become vector
/// code are faster than one that the compiler fills with jumps.
template <class Passes>
void applyMask(const MatrixXd& sample, MatrixXd& result, Passes passes) {
    const double* const from = sample.data();
    double* const to = result.data();
    const Eigen::Index size = sample.size();
    for (Eigen::Index i = 0; i < size; ++i)
        to[i] = passes(from[i]) ? 1.0 : 0.0;
    for (Eigen::Index i = 0; i < size; ++i)
        to[i] *= from[i];
}
} // namespace

FilterDeadband::FilterDeadband(const std::string& instanceName)
    : Filter(instanceName, true), input("in", this), output("out", this),
      absolute("Absolute", &getPropertyBag()), strict("Strict", &getPropertyBag()),
      threshold("Threshold", &getPropertyBag()) {
    absolute.setValue(true);
    strict.setValue(false);
    threshold.setValue(0.0);
}

FilterDeadband::~FilterDeadband() = default;

void FilterDeadband::process() {
    if (!input.hasData()) return;
    const MatrixXd& sample = input.take();
    const bool isStrict = strict.getValue();
    const bool isAbsolute = absolute.getValue();
    const double t = threshold.getValue();
    MatrixXd& result = output.data.value;
    resizeSample(result, sample.rows(), sample.cols());
    if (isAbsolute && isStrict)
        applyMask(sample, result, [t](double x) { return std::abs(x) > t; });
    else if (isAbsolute)
        applyMask(sample, result, [t](double x) { return std::abs(x) >= t; });
    else if (isStrict)
        applyMask(sample, result, [t](double x) { return x > t; });
    else
        applyMask(sample, result, [t](double x) { return x >= t; });
    output.send(input.getTimeStamp());
}
