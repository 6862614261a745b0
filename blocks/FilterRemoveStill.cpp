// SPDX-License-Identifier: MIT
#include "blocks/FilterRemoveStill.h"

#include <algorithm>
#include <cmath>

namespace {
constexpr Eigen::Index kAxes = 3;

/// Copies a row and returns where the next one goes. Three moves: a call to copy so little would cost more.
inline double* copyRow(const double* from, double* to) {
    to[0] = from[0];
    to[1] = from[1];
    to[2] = from[2];
    return to + kAxes;
}
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
    const Eigen::Index count = trajectory.rows() > 0 ? gatherMovingRows(trajectory) : 0;
    resizeSample(output.data.value, count, kAxes);
    std::copy_n(gathered.data(), count * kAxes, output.data.value.data());
    output.send(input.getTimeStamp());
}

Eigen::Index FilterRemoveStill::gatherMovingRows(const MatrixXd& trajectory) {
    const double farX = distanceX.getValue();
    const double farY = distanceY.getValue();
    const double farZ = distanceZ.getValue();
    if (gathered.rows() < trajectory.rows()) resizeSample(gathered, trajectory.rows(), kAxes);
    const double* kept = trajectory.data();
    const double* const end = kept + trajectory.size();
    double* next = copyRow(kept, gathered.data());
    for (const double* point = kept + kAxes; point != end; point += kAxes) {
        const bool hasMoved = std::abs(point[0] - kept[0]) > farX || std::abs(point[1] - kept[1]) > farY ||
                              std::abs(point[2] - kept[2]) > farZ;
        if (!hasMoved) continue;
        next = copyRow(point, next);
        kept = point;
    }
    return (next - gathered.data()) / kAxes;
}
