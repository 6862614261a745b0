// SPDX-License-Identifier: MIT
#include "everyday/Resample.h"

Resample::Resample(const std::string& instanceName)
    : Filter(instanceName, true), in("in", this), out("out", this), rate("Rate", &getPropertyBag()),
      mode("Mode", &getPropertyBag()), lowPass("LowPass", &getPropertyBag()), gap("Gap", &getPropertyBag()),
      resetCommand("Reset", &getPropertyBag()), finishCommand("Finish", &getPropertyBag()) {
    rate.setRange(0.001, 100000.0, 1.0);
    rate.setValue(100.0);
    mode.addLabel("Linear");
    mode.addLabel("Hold");
    mode.setValue(static_cast<unsigned>(Mode::Linear));
    lowPass.setValue(true);
    gap.setRange(0.001, 1e6, 0.1);
    gap.setValue(1.0);
    rate.setChangeHandler(this, &Resample::startAnew);
    mode.setChangeHandler(this, &Resample::startAnew);
    lowPass.setChangeHandler(this, &Resample::startAnew);
    gap.setChangeHandler(this, &Resample::startAnew);
    resetCommand.setChangeHandler(this, &Resample::requestReset);
    finishCommand.setChangeHandler(this, &Resample::requestFinish);
}

Resample::~Resample() = default;

void Resample::process() {
    if (resetRequested) {
        isNew = true;
        resetRequested = false;
    }
    if (hasChanged) {
        sendRest();
        hasChanged = false;
    }
    if (!finishRequested) return take();
    while (in.hasData())
        take();
    sendRest();
    finishRequested = false;
}

void Resample::take() {
    if (!in.hasData()) return;
    const MatrixXd& sample = in.take();
    if (sample.size() == 0) return;
    const MatrixXd& even = out.data.value;
    if (!isNew && (sample.rows() != even.rows() || sample.cols() != even.cols())) sendRest();
    if (isNew) begin(sample);
    sampler.take(in.getTimeStamp(), sample.data());
    sendDecided();
}

void Resample::begin(const MatrixXd& sample) {
    isNew = true; // until there is memory for everything
    sampler.begin({.rate = rate.getValue(),
                   .gap = gap.getValue(),
                   .isHold = static_cast<Mode>(mode.getValue()) == Mode::Hold,
                   .hasLowPass = lowPass.getValue()},
                  static_cast<std::size_t>(sample.size()));
    resizeSample(out.data.value, sample.rows(), sample.cols());
    isNew = false;
}

void Resample::sendDecided() {
    double time = 0.0;
    while (sampler.give(time, out.data.value.data()))
        out.send(time);
}

/// What came is all that there is.
void Resample::sendRest() {
    if (isNew) return;
    sampler.finish();
    sendDecided();
    isNew = true;
}
