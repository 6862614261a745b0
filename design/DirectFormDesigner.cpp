// SPDX-License-Identifier: MIT
#include "design/DirectFormDesigner.h"

#include <algorithm>
#include <cmath>

using Quillmere::Core::MatrixXd;

DirectFormDesigner::DirectFormDesigner(std::int32_t designMode, std::int32_t prototypeOrder, double low,
                                       double high)
    : order(prototypeOrder), mode(designMode), lowCutOff(low), highCutOff(high) {}

DirectFormDesigner::~DirectFormDesigner() = default;

void DirectFormDesigner::resetHistory(Eigen::Index rows, Eigen::Index cols) {
    if (rows < 1 || cols < 1) {
        rows = xHistory.newest.rows();
        cols = xHistory.newest.cols();
    }
    xHistory.entries = countXEntries();
    yHistory.entries = countYEntries();
    xHistory.fill(rows, cols, 0.0);
    yHistory.fill(rows, cols, 0.0);
}

void DirectFormDesigner::step(const MatrixXd& input) {
    const MatrixXd& newest = yHistory.newest;
    if (newest.rows() != input.rows() || newest.cols() != input.cols()) needsDesign = true;
    if (needsDesign) {
        resetHistory(input.rows(), input.cols());
        design();
        needsDesign = false;
    }
    run(input);
}

std::size_t DirectFormDesigner::countXEntries() const {
    if (mode == Design::kLowPass) return 1;
    if (mode == Design::kBandStop) return countYEntries();
    return static_cast<std::size_t>(order) + 1;
}

std::size_t DirectFormDesigner::countYEntries() const {
    const auto poles = static_cast<std::size_t>(order);
    return (getIsBand() ? 2 * poles : poles) + 1;
}

/// A gain that is not-a-number means that the design has no solution; coefficients that look sound would hide
/// it.
void DirectFormDesigner::spreadNaNGain() {
    if (!std::isnan(gain)) return;
    std::fill(xCoeffs.begin(), xCoeffs.end(), gain);
    std::fill(yCoeffs.begin(), yCoeffs.end(), gain);
}
