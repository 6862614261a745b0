// SPDX-License-Identifier: MIT
#include "blocks/FilterFrequency.h"

FilterFrequency::FilterFrequency(const std::string& instanceName)
    : Filter(instanceName, true), input("in", this), output("out", this),
      sampleNumber("SampleNbr", &getPropertyBag()), resetCommand("reset", &getPropertyBag()) {
    sampleNumber.setRange(2, 1000, 1);
    sampleNumber.setValue(100);
    resetCommand.setChangeHandler(this, &FilterFrequency::requestReset);
    resizeSample(output.data.value, 1, 1);
    output.data.value(0) = 0.0;
}

FilterFrequency::~FilterFrequency() = default;

void FilterFrequency::process() {
    if (!input.hasData()) return;
    input.take();
    const double t = input.getTimeStamp();
    const int wantedLength = sampleNumber.getValue();
    if (wantedLength != intervalLength || resetRequested) {
        sampleCount = 0;
        intervalLength = wantedLength;
        resetRequested = false;
    }
    if (sampleCount == 0) {
        sampleCount = 1;
        intervalStart = t;
        return;
    }
    if (sampleCount != intervalLength) {
        ++sampleCount;
        return;
    }
    const double duration = t - intervalStart;
    output.data.value(0) = duration == 0.0 ? -1.0 : sampleCount / duration;
    intervalStart = t;
    sampleCount = 1;
    output.send(t);
}

void FilterFrequency::requestReset() {
    resetRequested = true;
}
