// SPDX-License-Identifier: MIT
#include "blocks/FilterChebyshev.h"

FilterChebyshev::FilterChebyshev(const std::string& instanceName)
    : BlockPoleZeroBase(instanceName, designer, kLowRelative, kHighRelative),
      ripple("Ripple", &getPropertyBag()), matchedZ("MatchedZ-Transform", &getPropertyBag()),
      resetCommand("Reset", &getPropertyBag()) {
    ripple.setRange(-10.0, -0.1, 0.1);
    ripple.setValue(-0.5);
    ripple.setChangeHandler(this, &FilterChebyshev::onRipple);
    matchedZ.setValue(true);
    bindToDesign(matchedZ);
    bindToReset(resetCommand);
}

FilterChebyshev::~FilterChebyshev() = default;

void FilterChebyshev::passParameters(std::int32_t designCode) {
    const double high = highCutOff.getValue();
    const double passRipple = ripple.getValue();
    const double low = lowCutOff.getValue();
    const bool useMatchedZ = matchedZ.getValue();
    designer.setParameters(designCode, order.getValue(), useMatchedZ, low, passRipple, high);
}

/// A ripple that isn't negative has no design; the limits keep it away unless somebody has moved them.
void FilterChebyshev::onRipple() {
    if (ripple.getValue() >= 0.0) ripple.setValue(-0.5);
    requestDesign();
}
