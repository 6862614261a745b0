// SPDX-License-Identifier: MIT
#include "blocks/BlockPrototypeBase.h"

BlockPrototypeBase::BlockPrototypeBase(const std::string& instanceName, PoleZeroDesigner& ownDesigner)
    : BlockPoleZeroBase(instanceName, ownDesigner, kLowRelative, kHighRelative),
      matchedZ("MatchedZ-Transform", &getPropertyBag()), resetCommand("Reset", &getPropertyBag()),
      poleZeroDesigner(ownDesigner) {
    matchedZ.setValue(true);
    bindToDesign(matchedZ);
    bindToReset(resetCommand);
}

BlockPrototypeBase::~BlockPrototypeBase() = default;

void BlockPrototypeBase::passParameters(std::int32_t designCode) {
    const double high = highCutOff.getValue();
    const double low = lowCutOff.getValue();
    const bool useMatchedZ = matchedZ.getValue();
    poleZeroDesigner.setParameters(designCode, order.getValue(), useMatchedZ, low, high);
}
