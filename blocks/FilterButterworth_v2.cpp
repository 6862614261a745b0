// SPDX-License-Identifier: MIT
#include "blocks/FilterButterworth_v2.h"

FilterButterworth_v2::FilterButterworth_v2(const std::string& instanceName)
    : Filter(instanceName, true), out("out", this), in("in", this), cutOffInput("RelativeCutOffFreq", this),
      reset("reset", this), init("Init", &getPropertyBag()),
      relativeCutOff("RelativeCutOffFreq", &getPropertyBag()), order("Order", &getPropertyBag()),
      mode("Mode", &getPropertyBag()), reinitOnUpdate("ReinitOnCutOffFreqUpdate", &getPropertyBag()),
      memorize("MemorizeCoef", &getPropertyBag()) {
    init.setChangeHandler(this, &FilterButterworth_v2::requestDesign);
    relativeCutOff.setRange(0.0, 1.0, 0.000001);
    relativeCutOff.setChangeHandler(this, &FilterButterworth_v2::requestDesign);
    relativeCutOff.setValue(0.05);
    order.setRange(0, 1, 1); // the run step is a first-order recursion
    order.setChangeHandler(this, &FilterButterworth_v2::requestDesign);
    order.setValue(1);
    mode.addLabel("LowPass");
    mode.addLabel("HiPass");
    mode.setChangeHandler(this, &FilterButterworth_v2::requestDesign);
    mode.setValue(0);
    reinitOnUpdate.setValue(true);
    memorize.setValue(false);
    reset.setIsBlocking(false);
}

FilterButterworth_v2::~FilterButterworth_v2() = default;

void FilterButterworth_v2::process() {
    if (reset.hasData() && isSet(reset.take())) designRequested = true;
    if (designRequested) adoptSettings();
    if (cutOffInput.hasData()) {
        const MatrixXd& cutOff = cutOffInput.take();
        if (cutOff.size() > 0) moveCutOff(cutOff(0));
    }
    if (!in.hasData()) return;
    computer.step(in.take());
    copySample(out.data.value, computer.output());
    out.send(in.getTimeStamp());
}

void FilterButterworth_v2::adoptSettings() {
    if (order.getValue() == computer.getOrder()) {
        moveCutOff(relativeCutOff.getValue());
    } else {
        const bool memorizes = memorize.getValue();
        const bool reinit = reinitOnUpdate.getValue();
        const int wantedOrder = order.getValue();
        computer.setParameters(relativeCutOff.getValue(), wantedOrder, reinit, memorizes);
    }
    const bool isHighPass = static_cast<Mode>(mode.getValue()) == Mode::HiPass;
    if (computer.getHighPass() != isHighPass) computer.setHighPass(isHighPass);
    if (reinitOnUpdate.getValue()) computer.requestInit();
    designRequested = false;
}

/// Hands a cut-off on if it is another; only then are the two flags read.
void FilterButterworth_v2::moveCutOff(double cutOff) {
    if (cutOff == computer.getCutOff()) return;
    const bool memorizes = memorize.getValue();
    computer.setCutOff(cutOff, reinitOnUpdate.getValue(), memorizes);
}

void FilterButterworth_v2::requestDesign() {
    designRequested = true;
}
