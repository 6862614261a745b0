// SPDX-License-Identifier: MIT
#include "blocks/FilterBandPass.h"

namespace {
/// Writes a setting of an inner block the way a host does: by name, so that checks and handlers apply.
template <class T>
void write(Filter& block, const char* property, const T& value) {
    block.getProperty(property).setValueFromAny(&value);
}
} // namespace

FilterBandPass::FilterBandPass(const std::string& instanceName)
    : Filter(instanceName, true), out("out", this), in("in", this),
      lowEdge("Low Cutoff Freq. (relative)", &getPropertyBag()),
      highEdge("High Cutoff Freq. (relative)", &getPropertyBag()), order("Order", &getPropertyBag()),
      toInner("", nullptr), fromInner("", nullptr), innerHighPass(instanceName + "_innerLowPass1"),
      innerLowPass(instanceName + "_innerLowPass2") {
    // Defaults before handlers: they don't reach the inner blocks.
    lowEdge.setRange(0.0, 1.0, 0.001);
    lowEdge.setValue(0.001);
    highEdge.setRange(0.0, 1.0, 0.001);
    highEdge.setValue(0.05);
    order.setRange(0, 10, 1);
    order.setValue(1);
    lowEdge.setChangeHandler(this, &FilterBandPass::forwardSettings);
    highEdge.setChangeHandler(this, &FilterBandPass::forwardSettings);
    order.setChangeHandler(this, &FilterBandPass::forwardSettings);

    write(innerHighPass, "Mode", static_cast<unsigned>(FilterButterworth::Mode::HiPass));
    write(innerLowPass, "Mode", static_cast<unsigned>(FilterButterworth::Mode::LowPass));
    toInner.attach(innerHighPass.getInputPin("in"), false);
    innerHighPass.getOutputPin("out").attach(innerLowPass.getInputPin("in"), false);
    innerLowPass.getOutputPin("out").attach(fromInner, false);
}

FilterBandPass::~FilterBandPass() = default;

void FilterBandPass::process() {
    if (!in.hasData()) return;
    copySample(toInner.data.value, in.take());
    toInner.send(in.getTimeStamp());
    innerHighPass.process();
    innerLowPass.process();
    if (!fromInner.hasData()) return;
    copySample(out.data.value, fromInner.take());
    out.send(in.getTimeStamp());
}

Eigen::Index FilterBandPass::getRowWidth(Eigen::Index columns) {
    const Eigen::Index width = innerHighPass.getRowWidth(columns);
    return width == kOneByOne ? kOneByOne : innerLowPass.getRowWidth(width);
}

void FilterBandPass::stepRows(const double* rows, double* results, std::size_t count, Eigen::Index columns) {
    innerHighPass.stepRows(rows, results, count, columns);
    // A cascade may write over what it reads.
    innerLowPass.stepRows(results, results, count, columns);
}

void FilterBandPass::forwardSettings() {
    write(innerHighPass, "RelativeCutOffFreq", lowEdge.getValue());
    write(innerLowPass, "RelativeCutOffFreq", highEdge.getValue());
    write(innerHighPass, "Order", order.getValue());
    write(innerLowPass, "Order", order.getValue());
}
