// SPDX-License-Identifier: MIT
#include "blocks/FilterFFT.h"

#include "spectral/AmplitudeSpectrum.h"

#include <algorithm>

FilterFFT::FilterFFT(const std::string& instanceName)
    : Filter(instanceName, true), pause("Pause", &getPropertyBag()), out("out", this), in("in", this) {
    pause.setValue(true);
}

FilterFFT::~FilterFFT() = default;

void FilterFFT::process() {
    if (pause.getValue()) return;
    if (!in.hasData()) return;
    const MatrixXd& sample = in.take();
    evenLength = static_cast<std::int32_t>(sample.rows() - sample.rows() % 2);
    if (evenLength < 2 || sample.cols() == 0) return;
    // Asks the output and not the plan, which is how a sample of half the length keeps the former plan.
    if (out.data.value.rows() != evenLength) transform.setSize(evenLength);
    copyToWork(sample);
    transform.forwardTransform(work.data());
    resizeSample(out.data.value, evenLength / 2, 1);
    Spectral::writeAmplitudes(work.data(), work.cols(), evenLength, out.data.value.data());
    out.send(in.getTimeStamp());
}

/// Rows of zeros follow the sample where the plan in force reaches beyond it.
void FilterFFT::copyToWork(const MatrixXd& sample) {
    Eigen::Index rows = sample.rows();
    if (sample.size() < transform.getSize()) rows = (transform.getSize() + sample.cols() - 1) / sample.cols();
    resizeSample(work, rows, sample.cols());
    double* const behind = std::copy_n(sample.data(), sample.size(), work.data());
    std::fill(behind, work.data() + work.size(), 0.0);
}
