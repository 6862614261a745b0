// SPDX-License-Identifier: MIT
#include "blocks/FilterAbsoluteErode.h"

#include "blocks/CropSample.h"

#include <algorithm>

namespace {
/// What is asked along one direction: lines off the front and the back, and the lines to keep at least.
struct Crop {
    Eigen::Index front;
    Eigen::Index back;
    Eigen::Index least;
};

bool leavesNothing(const Crop& crop, Eigen::Index lines) {
    return lines <= crop.front + crop.back && crop.least == 0;
}

Eigen::Index firstLine(const Crop& crop, Eigen::Index lines) {
    const Eigen::Index last = lines - crop.back - 1;
    if (last - crop.front >= crop.least - 1) return crop.front;
    // Grow back by half on each side; of an odd number the front gets the larger half.
    const Eigen::Index missing = crop.front + crop.least - last - 1;
    const Eigen::Index grownLast = last + missing / 2;
    const Eigen::Index grownFirst = crop.front - (missing - missing / 2);
    if (grownFirst < 0) return 0;
    if (grownLast > lines - 1) return lines - std::min(crop.least, lines);
    return grownFirst;
}

Span spanOf(const Crop& crop, Eigen::Index lines) {
    const Eigen::Index least = std::min(crop.least, lines);
    return {firstLine(crop, lines), std::max(lines - crop.back - crop.front, least)};
}
} // namespace

FilterAbsoluteErode::FilterAbsoluteErode(const std::string& instanceName)
    : Filter(instanceName, true), output("out", this), input("in", this),
      leftErode("LeftErode", &getPropertyBag()), rightErode("RightErode", &getPropertyBag()),
      topErode("TopErode", &getPropertyBag()), bottomErode("BottomErode", &getPropertyBag()),
      minRows("MinRows", &getPropertyBag()), minCols("MinCols", &getPropertyBag()),
      forwardEmpty("FwdEmptyMat", &getPropertyBag()) {
    for (RangeProperty<int>* const lines :
         {&leftErode, &rightErode, &topErode, &bottomErode, &minRows, &minCols}) {
        lines->setRange(0, 200000, 1);
        lines->setValue(0);
    }
    forwardEmpty.setValue(false);
}

FilterAbsoluteErode::~FilterAbsoluteErode() = default;

void FilterAbsoluteErode::process() {
    if (!input.hasData()) return;
    Crop columns{};
    Crop rows{};
    columns.front = leftErode.getValue();
    columns.back = rightErode.getValue();
    rows.front = topErode.getValue();
    rows.back = bottomErode.getValue();
    rows.least = minRows.getValue();
    columns.least = minCols.getValue();
    const bool sendsEmpty = forwardEmpty.getValue();
    const MatrixXd& sample = input.take();
    const bool isEmpty =
        sample.size() == 0 || leavesNothing(rows, sample.rows()) || leavesNothing(columns, sample.cols());
    if (isEmpty && !sendsEmpty) return;
    const Span rowSpan = isEmpty ? Span{} : spanOf(rows, sample.rows());
    const Span columnSpan = isEmpty ? Span{} : spanOf(columns, sample.cols());
    cropSample(sample, rowSpan, columnSpan, output.data.value);
    output.send(input.getTimeStamp());
}
