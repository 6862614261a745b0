// SPDX-License-Identifier: MIT
#include "blocks/FilterIIR.h"

namespace {
constexpr unsigned kFixedValue = 1; // index of the label

bool differs(const MatrixXd& sample, const MatrixXd& copy) {
    if (sample.cols() != copy.cols()) return true;
    for (Eigen::Index i = 0; i < sample.size(); ++i)
        if (sample(i) != copy(i)) return true; // a NaN differs from itself
    return false;
}
} // namespace

FilterIIR::FilterIIR(const std::string& instanceName)
    : Filter(instanceName, true), in("in", this), gain("gain", this), coeffsX("coeffsX", this),
      coeffsY("coeffsY", this), reset("reset", this), out("out", this),
      gainSetting("Gain", &getPropertyBag()), xSetting("XCoeffs", &getPropertyBag()),
      ySetting("YCoeffs", &getPropertyBag()), initMode("InitMode", &getPropertyBag()),
      initValue("InitValue", &getPropertyBag()), resetCommand("Reset", &getPropertyBag()) {
    reset.setIsBlocking(false);
    gainSetting.setValue(1.0);
    xSetting.setValidator(this, &FilterIIR::checkCoefficients);
    xSetting.setValue(MatrixXd::Constant(1, 1, 1.0));
    ySetting.setValidator(this, &FilterIIR::checkCoefficients);
    ySetting.setValue(MatrixXd::Constant(1, 1, 1.0));
    initMode.addLabel("First value");
    initMode.addLabel("Fixed value");
    initMode.setValue(0);
    initValue.setValue(0.0);
    initValue.setIsWritable(false);
    // Bound last: the defaults are no changes.
    gainSetting.setChangeHandler(this, &FilterIIR::onParameters);
    xSetting.setChangeHandler(this, &FilterIIR::onParameters);
    ySetting.setChangeHandler(this, &FilterIIR::onParameters);
    initMode.setChangeHandler(this, &FilterIIR::onInitMode);
    initValue.setChangeHandler(this, &FilterIIR::onInitValue);
    resetCommand.setChangeHandler(this, &FilterIIR::onReset);
}

FilterIIR::~FilterIIR() = default;

void FilterIIR::process() {
    if (reset.hasData() && isSet(reset.take())) resetRequested = true;
    if (resetRequested) {
        computer.requestInit();
        resetRequested = false;
    }
    bool changed = parametersChanged;
    if (parametersChanged) readSettings();
    if (takeGain()) changed = true;
    if (takeCoefficients(coeffsX, xCopy, xSetting)) changed = true;
    if (takeCoefficients(coeffsY, yCopy, ySetting)) changed = true;
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
    gainCopy = gainSetting.getValue();
    xCopy = xSetting.getValue();
    yCopy = ySetting.getValue();
    parametersChanged = false;
}

bool FilterIIR::takeGain() {
    if (!gain.hasData()) return false;
    const MatrixXd& sample = gain.take();
    if (sample.size() == 0 || sample(0) == gainCopy) return false; // a NaN differs from itself
    gainCopy = sample(0);
    gainSetting.setValue(gainCopy);
    parametersChanged = false; // the write has just raised it
    return true;
}

bool FilterIIR::takeCoefficients(InputPin<MatrixXd>& pin, MatrixXd& copy, ValueProperty<MatrixXd>& setting) {
    if (!pin.hasData()) return false;
    const MatrixXd& sample = pin.take();
    if (sample.rows() != 1 || !differs(sample, copy)) return false;
    copySample(copy, sample);
    setting.setValue(copy); // raises for a row without columns
    parametersChanged = false;
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
