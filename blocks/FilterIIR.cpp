// SPDX-License-Identifier: MIT
#include "blocks/FilterIIR.h"

namespace {
enum InitMode : unsigned { kFirstValue, kFixedValue };

bool differs(const MatrixXd& sample, const MatrixXd& copy) {
    if (sample.cols() != copy.cols()) return true;
    for (Eigen::Index i = 0; i < sample.size(); ++i)
        if (sample(i) != copy(i)) return true; // a NaN differs from itself
    return false;
}
} // namespace

FilterIIR::FilterIIR(const std::string& instanceName)
    : Filter(instanceName, true), in("in", this), gainPin("gain", this), coeffsXPin("coeffsX", this),
      coeffsYPin("coeffsY", this), resetPin("reset", this), out("out", this), gain("Gain", &getPropertyBag()),
      coeffsX("XCoeffs", &getPropertyBag()), coeffsY("YCoeffs", &getPropertyBag()),
      initMode("InitMode", &getPropertyBag()), initValue("InitValue", &getPropertyBag()),
      resetCommand("Reset", &getPropertyBag()) {
    resetPin.setIsBlocking(false);
    gain.setValue(1.0);
    coeffsX.setValidator(this, &FilterIIR::checkCoefficients);
    coeffsX.setValue(MatrixXd::Constant(1, 1, 1.0));
    coeffsY.setValidator(this, &FilterIIR::checkCoefficients);
    coeffsY.setValue(MatrixXd::Constant(1, 1, 1.0));
    initMode.addLabel("First value");
    initMode.addLabel("Fixed value");
    initMode.setValue(kFirstValue);
    initValue.setValue(0.0);
    initValue.setIsWritable(false);
    // Bound last: the defaults are no changes.
    gain.setChangeHandler(this, &FilterIIR::requestUpdate);
    coeffsX.setChangeHandler(this, &FilterIIR::requestUpdate);
    coeffsY.setChangeHandler(this, &FilterIIR::requestUpdate);
    initMode.setChangeHandler(this, &FilterIIR::onInitMode);
    initValue.setChangeHandler(this, &FilterIIR::onInitValue);
    resetCommand.setChangeHandler(this, &FilterIIR::requestReset);
}

FilterIIR::~FilterIIR() = default;

void FilterIIR::process() {
    if (resetPin.hasData() && isSet(resetPin.take())) resetRequested = true;
    if (resetRequested) {
        computer.requestInit();
        resetRequested = false;
    }
    bool changed = updateRequested;
    if (updateRequested) readSettings();
    if (takeGain()) changed = true;
    if (takeCoefficients(coeffsXPin, xCopy, coeffsX)) changed = true;
    if (takeCoefficients(coeffsYPin, yCopy, coeffsY)) changed = true;
    if (changed) {
        computer.setGain(gainCopy);
        computer.setXCoefficients(xCopy);
        computer.setYCoefficients(yCopy);
    }

    if (!in.hasData()) return;
    const MatrixXd& sample = in.take();
    if (sample.size() == 0 || !computer.getIsRunnable()) return;
    computer.step(sample);
    copySample(out.data.value, computer.output());
    out.send(in.getTimeStamp());
}

void FilterIIR::readSettings() {
    gainCopy = gain.getValue();
    xCopy = coeffsX.getValue();
    yCopy = coeffsY.getValue();
    updateRequested = false;
}

bool FilterIIR::takeGain() {
    if (!gainPin.hasData()) return false;
    const MatrixXd& sample = gainPin.take();
    if (sample.size() == 0 || sample(0) == gainCopy) return false; // a NaN differs from itself
    gainCopy = sample(0);
    gain.setValue(gainCopy);
    updateRequested = false; // the write has just raised it
    return true;
}

bool FilterIIR::takeCoefficients(InputPin<MatrixXd>& pin, MatrixXd& copy, ValueProperty<MatrixXd>& setting) {
    if (!pin.hasData()) return false;
    const MatrixXd& sample = pin.take();
    if (sample.rows() != 1 || !differs(sample, copy)) return false;
    copySample(copy, sample);
    setting.setValue(copy); // raises for a row without columns
    updateRequested = false;
    return true;
}

void FilterIIR::checkCoefficients(const MatrixXd& value) {
    if (value.rows() != 1 || value.cols() < 1)
        throw Poco::DataFormatException("Coefficients must be specified on first matrix row.");
}

void FilterIIR::onInitMode() {
    const bool isFixed = initMode.getValue() == kFixedValue;
    computer.setFirstValueMode(!isFixed);
    initValue.setIsWritable(isFixed);
}

void FilterIIR::onInitValue() {
    computer.setInitValue(initValue.getValue());
}
