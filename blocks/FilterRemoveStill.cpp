// SPDX-License-Identifier: MIT
#include "blocks/FilterRemoveStill.h"

#include <algorithm>
#include <cmath>

namespace {
constexpr Eigen::Index kAxes = 3;
} // namespace

FilterRemoveStill::FilterRemoveStill(const std::string& instanceName)
    : Filter(instanceName, true), input("signal", this), output("signalDecimated", this),
      distanceX("distancex", &getPropertyBag()), distanceY("distancey", &getPropertyBag()),
      distanceZ("distancez", &getPropertyBag()) {
    distanceX.setValue(0.1);
    distanceY.setValue(0.1);
    distanceZ.setValue(0.1);
}

FilterRemoveStill::~FilterRemoveStill() = default;

void FilterRemoveStill::process() {
    if (!input.hasData()) return;
    const MatrixXd& trajectory = input.take();
    if (trajectory.cols() != kAxes) return;
    keptRows.clear();
    if (trajectory.rows() > 0) findMovingRows(trajectory);
    MatrixXd& thinned = output.data.value;
    resizeSample(thinned, static_cast<Eigen::Index>(keptRows.size()), kAxes);
    double* to = thinned.data();
    for (const Eigen::Index row : keptRows)
        to = std::copy_n(trajectory.data() + row * kAxes, kAxes, to);
    output.send(input.getTimeStamp());
}

void FilterRemoveStill::findMovingRows(const MatrixXd& trajectory) {
    const double farX = distanceX.getValue();
    const double farY = distanceY.getValue();
    const double farZ = distanceZ.getValue();
    const double* kept = trajectory.data();
    keptRows.push_back(0);
    for (Eigen::Index row = 1; row < trajectory.rows(); ++row) {
        const double* const point = trajectory.data() + row * kAxes;
        const bool hasMoved = std::abs(point[0] - kept[0]) > farX || std::abs(point[1] - kept[1]) > farY ||
                              std::abs(point[2] - kept[2]) > farZ;
        if (!hasMoved) continue;
        keptRows.push_back(row);
        kept = point;
    }
}
