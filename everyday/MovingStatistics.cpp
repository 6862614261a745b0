// SPDX-License-Identifier: MIT
#include "everyday/MovingStatistics.h"

namespace {
constexpr int kMostSamples = 100000;

using Everyday::MovingWindow;

/// Requires: no median.
MovingWindow::Kind windowKindOf(MovingStatistics::Kind kind) {
    using Kind = MovingStatistics::Kind;
    switch (kind) {
    case Kind::StandardDeviation:
        return MovingWindow::Kind::StandardDeviation;
    case Kind::Rms:
        return MovingWindow::Kind::Rms;
    case Kind::Minimum:
        return MovingWindow::Kind::Minimum;
    case Kind::Maximum:
        return MovingWindow::Kind::Maximum;
    case Kind::Range:
        return MovingWindow::Kind::Range;
    case Kind::Mean:
    case Kind::Median:
        break;
    }
    return MovingWindow::Kind::Mean;
}
} // namespace

MovingStatistics::MovingStatistics(const std::string& instanceName)
    : Filter(instanceName, true), in("in", this), out("out", this), scaled("scaled", this),
      samples("Samples", &getPropertyBag()), kind("Kind", &getPropertyBag()),
      onlyFull("OnlyFull", &getPropertyBag()), resetCommand("Reset", &getPropertyBag()) {
    samples.setRange(1, kMostSamples, 1);
    samples.setValue(100);
    for (const char* const label :
         {"Mean", "StandardDeviation", "RMS", "Minimum", "Maximum", "Median", "Range"})
        kind.addLabel(label);
    kind.setValue(static_cast<unsigned>(Kind::Mean));
    onlyFull.setValue(false);
    samples.setChangeHandler(this, &MovingStatistics::startAnew);
    kind.setChangeHandler(this, &MovingStatistics::startAnew);
    resetCommand.setChangeHandler(this, &MovingStatistics::startAnew);
}

MovingStatistics::~MovingStatistics() = default;

void MovingStatistics::process() {
    if (!in.hasData()) return;
    const bool waits = onlyFull.getValue();
    const MatrixXd& sample = in.take();
    if (sample.size() == 0) return;
    MatrixXd& result = out.data.value; // what was sent last: it stays until the next sample
    if (isNew || sample.rows() != result.rows() || sample.cols() != result.cols()) begin(sample);
    take(sample.data(), result.data());
    if (waits && getIsFilling()) return;
    out.send(in.getTimeStamp());
    if (scaled.isAttached()) sendScaled(sample, in.getTimeStamp());
}

Eigen::Index MovingStatistics::getRowWidth(Eigen::Index columns) {
    const MatrixXd& result = out.data.value;
    const bool isUnderWay = !isNew && result.rows() == 1 && result.cols() == columns;
    if (!isUnderWay || !scaled.getInputs().empty()) return kOneByOne;
    return onlyFull.getValue() && getIsFilling() ? kOneByOne : columns;
}

void MovingStatistics::stepRows(const double* rows, double* results, std::size_t count,
                                Eigen::Index columns) {
    for (std::size_t row = 0; row < count; ++row, rows += columns, results += columns)
        take(rows, results);
}

inline void MovingStatistics::take(const double* sample, double* result) {
    if (kindNow == Kind::Median)
        sorted.take(sample, result);
    else
        window.take(sample, result);
}

inline bool MovingStatistics::getIsFilling() const {
    return (kindNow == Kind::Median ? sorted.getCount() : window.getCount()) < length;
}

void MovingStatistics::sendScaled(const MatrixXd& sample, double time) {
    const MatrixXd& statistic = out.data.value;
    MatrixXd& parts = scaled.data.value;
    if (parts.rows() != sample.rows() || parts.cols() != sample.cols())
        resizeSample(parts, sample.rows(), sample.cols());
    for (Eigen::Index i = 0; i < sample.size(); ++i)
        parts(i) = sample(i) == 0.0 && statistic(i) == 0.0 ? 0.0 : sample(i) / statistic(i);
    scaled.send(time);
}

void MovingStatistics::begin(const MatrixXd& sample) {
    isNew = true; // until there is memory for everything
    kindNow = static_cast<Kind>(kind.getValue());
    length = static_cast<std::size_t>(samples.getValue());
    const auto elements = static_cast<std::size_t>(sample.size());
    if (kindNow == Kind::Median)
        sorted.begin(length, elements);
    else
        window.begin(windowKindOf(kindNow), length, elements);
    resizeSample(out.data.value, sample.rows(), sample.cols());
    isNew = false;
}
