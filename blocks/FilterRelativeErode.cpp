// SPDX-License-Identifier: MIT
#include "blocks/FilterRelativeErode.h"

#include "blocks/CropSample.h"

#include <algorithm>
#include <cmath>

namespace {
/// The lines that are left of `lines` without `front` and `back` percent; a length below 1 where none is.
Span spanOf(Eigen::Index lines, double front, double back) {
    const auto all = static_cast<double>(lines);
    const double kept = all * (100.0 - front - back) / 100.0;
    const auto length = static_cast<Eigen::Index>(std::floor(kept + 0.5));
    auto first = static_cast<Eigen::Index>(std::floor(all * front / 100.0 + 0.5));
    const bool isTie = kept - std::floor(kept) == 0.5;
    if (isTie) first = std::max<Eigen::Index>(first - 1, 0);
    // Off a tie the rounding of the percentages can still round start and length up.
    if (first + length > lines) first = lines - length;
    return {first, length};
}
} // namespace

FilterRelativeErode::FilterRelativeErode(const std::string& instanceName)
    : Filter(instanceName, true), output("out", this), input("in", this),
      leftErode("LeftErode (%)", &getPropertyBag()), rightErode("RightErode (%)", &getPropertyBag()),
      topErode("TopErode (%)", &getPropertyBag()), bottomErode("BottomErode (%)", &getPropertyBag()),
      forwardEmpty("FwdEmptyMat", &getPropertyBag()) {
    for (RangeProperty<double>* const percentage : {&leftErode, &rightErode, &topErode, &bottomErode}) {
        percentage->setRange(0.0, 100.0, 0.001);
        percentage->setValue(0.0);
    }
    forwardEmpty.setValue(false);
}

FilterRelativeErode::~FilterRelativeErode() = default;

void FilterRelativeErode::process() {
    if (!input.hasData()) return;
    const double left = leftErode.getValue();
    const double right = rightErode.getValue();
    const double top = topErode.getValue();
    const double bottom = bottomErode.getValue();
    const bool sendsEmpty = forwardEmpty.getValue();
    const MatrixXd& sample = input.take();
    Span rows = spanOf(sample.rows(), top, bottom);
    Span columns = spanOf(sample.cols(), left, right);
    const bool isEmpty = sample.size() == 0 || rows.length < 1 || columns.length < 1;
    if (isEmpty && !sendsEmpty) return;
    if (isEmpty) rows = columns = Span{};
    cropSample(sample, rows, columns, output.data.value);
    output.send(input.getTimeStamp());
}
