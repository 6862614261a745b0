// SPDX-License-Identifier: MIT
#include "FilterRunningMean.h"

FilterRunningMean::FilterRunningMean(const std::string& instanceName)
    : Filter(instanceName, true), in("in", this), resetPin("reset", this), out("out", this),
      window("Window", &getPropertyBag()), resetCommand("Reset", &getPropertyBag()) {
    resetPin.setIsBlocking(false);                                // may be left open
    window.setRange(1.0, 1e6, 1.0);                               // least, most, the step of a knob
    window.setValue(10.0);                                        // the default, within the limits
    window.setChangeHandler(this, &FilterRunningMean::startAnew); // bound last: the default is no change
    resetCommand.setChangeHandler(this, &FilterRunningMean::startAnew);
}

void FilterRunningMean::process() {
    if (resetPin.hasData() && isSet(resetPin.take())) startAnew();
    if (!in.hasData()) return;
    const double samples = window.getValue();
    const MatrixXd& sample = in.take();
    MatrixXd& mean = out.data.value; // what was sent last: it stays until the next sample
    if (sample.rows() != mean.rows() || sample.cols() != mean.cols()) startAnew();
    if (isFirst)
        copySample(mean, sample);
    else
        mean += (sample - mean) / samples;
    isFirst = false;
    out.send(in.getTimeStamp());
}
