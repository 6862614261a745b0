// SPDX-License-Identifier: MIT
#include "blocks/FilterPeriodCounter.h"

namespace {
void makeScalar(MatrixXd& matrix) {
    if (matrix.rows() == 1 && matrix.cols() == 1) return;
    resizeSample(matrix, 1, 1);
    matrix(0) = 0.0;
}
} // namespace

FilterPeriodCounter::FilterPeriodCounter(const std::string& instanceName)
    : Filter(instanceName, true), periods("Nb Period", this), isCounting("Is Counting", this),
      input("in", this), resetCommand("Reset", &getPropertyBag()),
      periodLimit("Nb Period", &getPropertyBag()), threshold("Threshold", &getPropertyBag()),
      tolerance("Absolute Tolerance", &getPropertyBag()) {
    resetCommand.setChangeHandler(this, &FilterPeriodCounter::reset);
    periodLimit.setRange(0, 200, 1);
    periodLimit.setValue(0);
    threshold.setRange(-5000.0, 5000.0, 0.1);
    threshold.setValue(0.0);
    tolerance.setRange(-100.0, 100.0, 0.01);
    tolerance.setValue(0.0);
}

FilterPeriodCounter::~FilterPeriodCounter() = default;

void FilterPeriodCounter::process() {
    if (!input.hasData()) return;
    const MatrixXd& sample = input.take();
    if (!finished && sample.size() == 0) return;
    makeScalar(periods.data.value);
    makeScalar(isCounting.data.value);
    if (finished)
        isCounting.data.value(0) = 0.0;
    else
        follow(sample(0));
    if (count == -1) {
        periods.data.value(0) = 0.0;
        isCounting.data.value(0) = 0.0;
        periods.send(input.getTimeStamp());
    }
    isCounting.send(input.getTimeStamp());
}

void FilterPeriodCounter::follow(double x) {
    const Side side = sideOf(x);
    const bool isRise = armed && side == Side::Above;
    armed = side == Side::Below || (armed && side != Side::Above);
    if (isRise) {
        ++count;
        periods.data.value(0) = count;
        periods.send(input.getTimeStamp());
    }
    judge();
}

FilterPeriodCounter::Side FilterPeriodCounter::sideOf(double x) const {
    const double center = threshold.getValue();
    const double reach = tolerance.getValue();
    if (center - reach > x) return Side::Below;
    return center + reach < x ? Side::Above : Side::Inside;
}

void FilterPeriodCounter::judge() {
    // The limit is read twice, so a write in between counts; above it, "Is Counting" stays what it was.
    if (count == periodLimit.getValue()) {
        finished = true;
        isCounting.data.value(0) = 1.0;
    }
    if (count < periodLimit.getValue()) {
        finished = false;
        isCounting.data.value(0) = 1.0;
    }
}

void FilterPeriodCounter::reset() {
    armed = false;
    count = -1;
    finished = false;
}
