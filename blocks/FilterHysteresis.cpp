// SPDX-License-Identifier: MIT
#include "blocks/FilterHysteresis.h"

#include <utility>

namespace {
/// Element 0 of the sample that waits on `pin`, or `setting` where none does or it is empty.
double takeThreshold(InputPin<MatrixXd>& pin, double setting) {
    if (!pin.hasData()) return setting;
    const MatrixXd& sample = pin.take();
    return sample.size() > 0 ? sample(0) : setting;
}

/// Whether a sample waits on `pin` with any element but 0.
bool takeRequest(InputPin<MatrixXd>& pin) {
    if (!pin.hasData()) return false;
    const MatrixXd& sample = pin.take();
    for (Eigen::Index i = 0; i < sample.size(); ++i)
        if (sample(i) != 0.0) return true;
    return false;
}
} // namespace

FilterHysteresis::FilterHysteresis(const std::string& instanceName)
    : Filter(instanceName, true), input("input", this), highThresholdPin("HighThreshold", this),
      lowThresholdPin("LowThreshold", this), resetPin("Reset", this), output("output", this),
      highThreshold("HighThreshold", &getPropertyBag()), lowThreshold("LowThreshold", &getPropertyBag()),
      resetCommand("Reset", &getPropertyBag()), impulse("Impulse", &getPropertyBag()) {
    highThreshold.setValue(5.0);
    lowThreshold.setValue(-5.0);
    resetCommand.setChangeHandler(this, &FilterHysteresis::reset);
    impulse.setValue(false);
    highThresholdPin.setIsBlocking(false);
    lowThresholdPin.setIsBlocking(false);
    resetPin.setIsBlocking(false);
    resizeSample(output.data.value, 1, 1);
    output.data.value(0) = 0.0;
}

FilterHysteresis::~FilterHysteresis() = default;

void FilterHysteresis::process() {
    previousLevel = level;
    double high = highThreshold.getValue();
    double low = lowThreshold.getValue();
    high = takeThreshold(highThresholdPin, high);
    low = takeThreshold(lowThresholdPin, low);
    if (high < low) std::swap(high, low);
    if (takeRequest(resetPin)) reset();
    if (input.hasData()) {
        const MatrixXd& sample = input.take();
        if (sample.size() != 1) return;
        follow(sample(0), high, low);
    }
    if (impulse.getValue() && level == previousLevel) return;
    output.data.value(0) = level ? 1.0 : 0.0;
    output.send(input.getTimeStamp());
}

void FilterHysteresis::follow(double x, double high, double low) {
    if (!level && x > high)
        level = true;
    else if (level && x < low)
        level = false;
}

void FilterHysteresis::reset() {
    previousLevel = level;
    level = false;
}
