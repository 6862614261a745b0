// SPDX-License-Identifier: MIT
#include "blocks/BlockWindowBase.h"

#include "design/Constants.h"

namespace {
using Design::kTwoPi;

/// The length of a row or a column of at least 2 elements, 0 for any other matrix.
std::int32_t vectorLength(const MatrixXd& sample) {
    const bool isVector = sample.rows() == 1 || sample.cols() == 1;
    return isVector && sample.size() > 1 ? static_cast<std::int32_t>(sample.size()) : 0;
}
} // namespace

BlockWindowBase::BlockWindowBase(const std::string& instanceName)
    : Filter(instanceName, true), input("input", this), output("output", this) {
    resizeSample(output.data.value, 1, 1);
    output.data.value(0) = 0.0;
}

BlockWindowBase::~BlockWindowBase() = default;

void BlockWindowBase::process() {
    if (!input.hasData()) return;
    const MatrixXd& sample = input.take();
    const std::int32_t length = vectorLength(sample);
    if (length == 0) return;
    resizeSample(output.data.value, sample.rows(), sample.cols());
    buildWindow(length);
    const double* const from = sample.data();
    const double* const weights = window.data();
    double* const to = output.data.value.data();
    for (std::int32_t i = 0; i < length; ++i)
        to[i] = from[i] * weights[i];
    output.send(input.getTimeStamp());
}

void BlockWindowBase::buildWindow(std::int32_t length) {
    resizeSample(window, length, 1);
    const double step = kTwoPi / (length - 1);
    double* const weights = window.data();
    // Order matters: for an even length the last turn writes both middle elements from index N/2.
    for (std::int32_t i = 0; i <= length / 2; ++i) {
        weights[i] = windowCoefficient(i, step);
        weights[length - 1 - i] = weights[i];
    }
}
