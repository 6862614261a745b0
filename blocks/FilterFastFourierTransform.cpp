// SPDX-License-Identifier: MIT
#include "blocks/FilterFastFourierTransform.h"

#include "spectral/AmplitudeSpectrum.h"

FilterFastFourierTransform::FilterFastFourierTransform(const std::string& instanceName)
    : Filter(instanceName, true), pause("Pause", &getPropertyBag()), fft("fft", this),
      powerSpectrum("powerSpectrum", this), in("in", this) {
    pause.setValue(false);
}

FilterFastFourierTransform::~FilterFastFourierTransform() = default;

void FilterFastFourierTransform::process() {
    if (pause.getValue()) return;
    if (!in.hasData()) return;
    const MatrixXd& sample = in.take();
    evenLength = static_cast<std::int32_t>(sample.rows() - sample.rows() % 2);
    if (evenLength < 2 || sample.cols() == 0) return;
    transform.setSize(evenLength);
    // The transform is done in the outgoing sample itself.
    MatrixXd& target = fft.data.value;
    copySample(target, sample);
    transform.forwardTransform(target.data());
    resizeSample(powerSpectrum.data.value, evenLength / 2, 1);
    Spectral::writeAmplitudes(target.data(), target.cols(), evenLength, powerSpectrum.data.value.data());
    fft.send(in.getTimeStamp());
    powerSpectrum.send(in.getTimeStamp());
}
