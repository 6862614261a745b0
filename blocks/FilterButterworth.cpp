// SPDX-License-Identifier: MIT
#include "blocks/FilterButterworth.h"

FilterButterworth::FilterButterworth(const std::string& instanceName)
    : Filter(instanceName, true), out("out", this), in("in", this), reset("reset", this),
      init("Init", &getPropertyBag()), relativeCutOff("RelativeCutOffFreq", &getPropertyBag()),
      order("Order", &getPropertyBag()), mode("Mode", &getPropertyBag()) {
    init.setChangeHandler(this, &FilterButterworth::requestDesign);
    relativeCutOff.setRange(0.0, 1.0, 0.000001);
    relativeCutOff.setChangeHandler(this, &FilterButterworth::requestDesign);
    relativeCutOff.setValue(0.05);
    order.setRange(0, 10, 1);
    order.setChangeHandler(this, &FilterButterworth::requestDesign);
    order.setValue(1);
    mode.addLabel("LowPass");
    mode.addLabel("HiPass");
    mode.setChangeHandler(this, &FilterButterworth::requestDesign);
    mode.setValue(0);
    reset.setIsBlocking(false);
}

FilterButterworth::~FilterButterworth() = default;

void FilterButterworth::process() {
    if (reset.hasData() && isSet(reset.take())) designRequested = true;
    if (designRequested) redesign();
    if (!in.hasData()) return;
    computer.step(in.take());
    copySample(out.data.value, computer.output());
    out.send(in.getTimeStamp());
}

Eigen::Index FilterButterworth::getRowWidth(Eigen::Index columns) {
    const bool isSteady = !designRequested && computer.getIsUnderWay(columns) && !reset.hasData();
    return isSteady ? columns : kOneByOne;
}

void FilterButterworth::stepRows(const double* rows, double* results, std::size_t count, Eigen::Index) {
    computer.stepRows(rows, results, static_cast<std::ptrdiff_t>(count));
}

void FilterButterworth::redesign() {
    const int wantedOrder = order.getValue();
    computer.setParameters(relativeCutOff.getValue(), wantedOrder);
    computer.setHighPass(static_cast<Mode>(mode.getValue()) == Mode::HiPass);
    computer.requestInit();
    designRequested = false;
}

void FilterButterworth::requestDesign() {
    designRequested = true;
}
