// SPDX-License-Identifier: MIT
#include "blocks/FilterDiscarder.h"

#include <limits>

FilterDiscarder::FilterDiscarder(const std::string& instanceName)
    : Filter(instanceName, true), input("in", this), resetPin("reset", this), output("out", this),
      samples("Samples", &getPropertyBag()), resetCommand("Reset", &getPropertyBag()) {
    samples.setRange(0, std::numeric_limits<int>::max(), 0);
    samples.setValue(0);
    resetCommand.setChangeHandler(this, &FilterDiscarder::requestReset);
}

FilterDiscarder::~FilterDiscarder() = default;

void FilterDiscarder::process() {
    if (resetPin.hasData() && isSet(resetPin.take())) resetRequested = true;
    if (resetRequested) discarded = 0;
    resetRequested = false;
    if (!input.hasData()) return;
    const MatrixXd& sample = input.take();
    if (discarded < static_cast<std::uint32_t>(samples.getValue())) {
        ++discarded;
        return;
    }
    copySample(output.data.value, sample);
    output.send(input.getTimeStamp());
}

void FilterDiscarder::requestReset() {
    resetRequested = true;
}
