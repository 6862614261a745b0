// SPDX-License-Identifier: MIT
#include "blocks/FilterEdge.h"

namespace {
enum Mode : unsigned { kRisingEdge, kFallingEdge, kBothEdges };
} // namespace

FilterEdge::FilterEdge(const std::string& instanceName)
    : Filter(instanceName, true), input("input", this), output("edge", this), mode("mode", &getPropertyBag()),
      threshold("threshold", &getPropertyBag()), impulse("impulse", &getPropertyBag()),
      resetCommand("reset", &getPropertyBag()) {
    mode.addLabel("rising edge");
    mode.addLabel("falling edge");
    mode.addLabel("both edges");
    mode.setChangeHandler(this, &FilterEdge::reset);
    mode.setValue(kRisingEdge);
    threshold.setValue(1.0);
    impulse.setValue(true);
    resetCommand.setChangeHandler(this, &FilterEdge::reset);
    resizeSample(output.data.value, 1, 1);
    output.data.value(0) = 0.0;
}

FilterEdge::~FilterEdge() = default;

void FilterEdge::process() {
    if (!input.hasData()) return;
    const MatrixXd& sample = input.take();
    if (sample.size() == 0) return;
    const double bound = threshold.getValue();
    const bool isEdge = detect(mode.getValue(), sample(0), bound);
    if (impulse.getValue())
        level = isEdge;
    else if (isEdge)
        level = !level;
    output.data.value(0) = level ? 1.0 : 0.0;
    output.send();
}

bool FilterEdge::detect(unsigned edges, double x, double bound) {
    // A not-a-number is on neither side and leaves both arms as they were.
    const bool isBelow = x < bound;
    const bool isAbove = x >= bound;
    bool isEdge = false;
    if (edges != kFallingEdge) {
        isEdge = armedRising && isAbove;
        armedRising = isBelow || (armedRising && !isAbove);
    }
    if (edges != kRisingEdge) {
        isEdge = isEdge || (armedFalling && isBelow);
        armedFalling = isAbove || (armedFalling && !isBelow);
    }
    return isEdge;
}

void FilterEdge::reset() {
    armedRising = false;
    armedFalling = false;
    level = false;
}
