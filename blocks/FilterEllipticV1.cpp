// SPDX-License-Identifier: MIT
#include "blocks/FilterEllipticV1.h"

FilterEllipticV1::FilterEllipticV1(const std::string& instanceName)
    : BlockPoleZeroBase(instanceName, designer, {"LowRelFreq", 0.01, 1.0, 0.0001, 0.05},
                        {"HighRelFreq", 0.0, 1.0, 0.0001, 0.0}),
      passRipple("Ripple BandPass", &getPropertyBag()), stopRipple("Ripple BandStop", &getPropertyBag()),
      resetCommand("Reset", &getPropertyBag()) {
    passRipple.setRange(0.1, 10.0, 0.01);
    passRipple.setValue(0.5);
    passRipple.setChangeHandler(this, &FilterEllipticV1::onPassRipple);
    stopRipple.setRange(-60.0, -0.1, 0.01);
    stopRipple.setValue(-10.0);
    stopRipple.setChangeHandler(this, &FilterEllipticV1::onStopRipple);
    bindToReset(resetCommand);
}

FilterEllipticV1::~FilterEllipticV1() = default;

void FilterEllipticV1::passParameters(std::int32_t designCode) {
    const double high = highCutOff.getValue();
    const double low = lowCutOff.getValue();
    const double pass = passRipple.getValue();
    const double stop = stopRipple.getValue();
    designer.setParameters(designCode, order.getValue(), low, pass, stop, high);
}

std::vector<double> FilterEllipticV1::feedbackToPublish() const {
    std::vector<double> feedback = designer.getYCoefficients();
    for (double& coefficient : feedback)
        coefficient = -coefficient;
    return feedback;
}

// Ripples of the wrong sign have no design; the limits keep them away unless somebody has moved them.

void FilterEllipticV1::onPassRipple() {
    if (passRipple.getValue() <= 0.0) passRipple.setValue(0.5);
    requestDesign();
}

void FilterEllipticV1::onStopRipple() {
    if (stopRipple.getValue() >= 0.0) stopRipple.setValue(-10.0);
    requestDesign();
}
