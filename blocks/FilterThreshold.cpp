// SPDX-License-Identifier: MIT
#include "blocks/FilterThreshold.h"

namespace {
enum Mode : unsigned { kHighLevel, kLowLevel };
} // namespace

FilterThreshold::FilterThreshold(const std::string& instanceName)
    : Filter(instanceName, true), mode("Mode", &getPropertyBag()), threshold("Threshold", &getPropertyBag()),
      input("Input", this), output("Output", this) {
    mode.addLabel("High Level");
    mode.addLabel("Low Level");
    mode.setValue(kHighLevel);
    threshold.setValue(0.0);
    resizeSample(output.data.value, 1, 1);
    output.data.value(0) = 0.0;
}

FilterThreshold::~FilterThreshold() = default;

void FilterThreshold::process() {
    if (!input.hasData()) return;
    const MatrixXd& sample = input.take();
    if (sample.size() == 0) return;
    const double x = sample(0);
    const bool isHighLevel = mode.getValue() == kHighLevel;
    const double bound = threshold.getValue();
    const bool isBeyond = isHighLevel ? x > bound : x < bound;
    output.data.value(0) = isBeyond ? 1.0 : 0.0;
    output.send(input.getTimeStamp());
}
