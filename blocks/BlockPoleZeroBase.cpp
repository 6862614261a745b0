// SPDX-License-Identifier: MIT
#include "blocks/BlockPoleZeroBase.h"

#include <algorithm>

namespace {
/// The settings' labels stand in the order of the design codes 1, 2, 4, 8.
std::int32_t designCode(unsigned modeIndex) {
    return std::int32_t{1} << modeIndex;
}
enum Mode : unsigned { kLowPass, kHighPass, kBandPass, kBandStop };
} // namespace

BlockPoleZeroBase::BlockPoleZeroBase(const std::string& instanceName, DirectFormDesigner& ownDesigner,
                                     const CutOff& low, const CutOff& high)
    : Filter(instanceName, true), in("in", this), resetPin("reset", this), out("out", this),
      gain("gain", this), coeffs("coeffs", this), mode("Mode", &getPropertyBag()),
      order("Order", &getPropertyBag()), lowCutOff(low.name, &getPropertyBag()),
      highCutOff(high.name, &getPropertyBag()), anyDesigner(ownDesigner) {
    resetPin.setIsBlocking(false);
    gain.data.value = MatrixXd::Zero(1, 1);
    for (const char* const label : {"LowPass", "HighPass", "BandPass", "BandStop"})
        mode.addLabel(label);
    mode.setValue(kLowPass);
    order.setRange(1, 10, 1);
    order.setValue(1);
    lowCutOff.setRange(low.min, low.max, low.step);
    lowCutOff.setValue(low.start);
    highCutOff.setRange(high.min, high.max, high.step);
    highCutOff.setValue(high.start);
    highCutOff.setIsWritable(false);
    // Bound last: one default may lie below the other.
    mode.setChangeHandler(this, &BlockPoleZeroBase::onMode);
    bindToDesign(order);
    lowCutOff.setChangeHandler(this, &BlockPoleZeroBase::onLowCutOff);
    highCutOff.setChangeHandler(this, &BlockPoleZeroBase::onHighCutOff);
}

BlockPoleZeroBase::~BlockPoleZeroBase() = default;

void BlockPoleZeroBase::bindToDesign(Quillmere::Core::AbstractProperty& property) {
    property.setChangeHandler(this, &BlockPoleZeroBase::requestDesign);
}

void BlockPoleZeroBase::bindToReset(CommandProperty& command) {
    command.setChangeHandler(this, &BlockPoleZeroBase::requestReset);
}

void BlockPoleZeroBase::process() {
    if (resetPin.hasData() && isSet(resetPin.take())) resetRequested = true;
    if (designRequested)
        passParameters(designCode(mode.getValue())); // a design starts from zeros anyway
    else if (resetRequested)
        anyDesigner.resetHistory(0, 0);
    resetRequested = false;

    if (!in.hasData()) return;
    const MatrixXd& sample = in.take();
    if (sample.size() == 0) return;
    anyDesigner.step(sample);
    if (designRequested) publish();
    copySample(out.data.value, anyDesigner.output());
    out.send(in.getTimeStamp());
}

void BlockPoleZeroBase::publish() {
    const std::vector<double> forward = anyDesigner.getXCoefficients();
    const std::vector<double> feedback = feedbackToPublish();
    MatrixXd& rows = coeffs.data.value;
    resizeSample(rows, 2, static_cast<Eigen::Index>(std::max(forward.size(), feedback.size())));
    rows.setZero();
    std::copy(forward.begin(), forward.end(), rows.data());
    std::copy(feedback.begin(), feedback.end(), rows.data() + rows.cols());
    gain.data.value(0) = gainToPublish();
    designRequested = false;
    gain.send();
    coeffs.send();
}

void BlockPoleZeroBase::onMode() {
    const bool isBand = mode.getValue() >= kBandPass;
    highCutOff.setIsWritable(isBand);
    if (isBand && highCutOff.getValue() < lowCutOff.getValue()) highCutOff.setValue(lowCutOff.getValue());
    requestDesign();
}

void BlockPoleZeroBase::onLowCutOff() {
    if (highCutOff.getIsWritable() && highCutOff.getValue() < lowCutOff.getValue())
        highCutOff.setValue(lowCutOff.getValue());
    requestDesign();
}

void BlockPoleZeroBase::onHighCutOff() {
    if (lowCutOff.getValue() > highCutOff.getValue()) lowCutOff.setValue(highCutOff.getValue());
    requestDesign();
}
