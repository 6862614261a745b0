// SPDX-License-Identifier: MIT
#include "blocks/FilterThresholdLeveler.h"

namespace {
enum OnIntersection : unsigned { kUseLowerInterval, kUseUpperInterval, kUseNone };

constexpr Eigen::Index kNoRow = -1;

bool holds(const MatrixXd& intervals, Eigen::Index row, double x) {
    return x >= intervals(row, 0) && x <= intervals(row, 1);
}

/// The row that holds `x`, by the rule for an `x` that two rows hold.
Eigen::Index findRow(const MatrixXd& intervals, double x, unsigned onIntersection) {
    const Eigen::Index rows = intervals.rows();
    Eigen::Index first = 0;
    while (first < rows && !holds(intervals, first, x))
        ++first;
    if (first == rows) return kNoRow;
    Eigen::Index second = first + 1;
    while (second < rows && !holds(intervals, second, x))
        ++second;
    if (second == rows) return first;
    if (onIntersection == kUseNone) return kNoRow;
    // The bound of the second match that lets it go before the first: its upper one for the lower interval.
    const Eigen::Index bound = onIntersection == kUseLowerInterval ? 1 : 0;
    return x == intervals(second, bound) ? second : first;
}

/// Refuses two rows, the first one before the other, of which one reaches into the other.
void checkPair(const MatrixXd& proposed, Eigen::Index i, Eigen::Index j) {
    const double minI = proposed(i, 0);
    const double maxI = proposed(i, 1);
    const double minJ = proposed(j, 0);
    const double maxJ = proposed(j, 1);
    if (minJ <= minI && maxJ > minI)
        throw Poco::DataFormatException(
            "'Thresholds' matrix can't have a min value belonging to another interval");
    if (minJ < maxI && maxJ >= maxI)
        throw Poco::DataFormatException(
            "'Thresholds' matrix can't have a max value belonging to another interval");
}
} // namespace

FilterThresholdLeveler::FilterThresholdLeveler(const std::string& instanceName)
    : Filter(instanceName, true), input("In", this), output("Level", this),
      onIntersectionUse("OnIntersectionUse", &getPropertyBag()), thresholds("Thresholds", &getPropertyBag()),
      levels("Levels", &getPropertyBag()) {
    onIntersectionUse.addLabel("LowerInterval");
    onIntersectionUse.addLabel("UpperInterval");
    onIntersectionUse.addLabel("None");
    onIntersectionUse.setValue(kUseLowerInterval);
    thresholds.setValue(MatrixXd{{0.0, 1.0}});
    levels.setValue(MatrixXd::Ones(1, 1));
    thresholds.setValidator(this, &FilterThresholdLeveler::checkThresholds);
    levels.setValidator(this, &FilterThresholdLeveler::checkLevels);
    resizeSample(output.data.value, 1, 1);
    output.data.value(0) = 0.0;
}

FilterThresholdLeveler::~FilterThresholdLeveler() = default;

void FilterThresholdLeveler::process() {
    if (!input.hasData()) return;
    const unsigned onIntersection = onIntersectionUse.getValue();
    const MatrixXd intervals = thresholds.getValue();
    const MatrixXd values = levels.getValue();
    const MatrixXd& sample = input.take();
    if (sample.size() == 0) return;
    const Eigen::Index row = findRow(intervals, sample(0), onIntersection);
    if (row == kNoRow || row >= values.rows()) return;
    output.data.value(0) = values(row, 0);
    output.send(input.getTimeStamp());
}

void FilterThresholdLeveler::checkThresholds(const MatrixXd& proposed) {
    if (proposed.size() == 0) throw Poco::DataFormatException("'Thresholds' matrix can't be empty");
    if (proposed.cols() != 2)
        throw Poco::DataFormatException("'Thresholds' matrix must have 2 columns: [min; max]");
    for (Eigen::Index i = 0; i < proposed.rows(); ++i) {
        if (proposed(i, 1) <= proposed(i, 0))
            throw Poco::DataFormatException("'Thresholds' matrix first column value (min) must be strictly "
                                            "inferior to second column value (max)");
        for (Eigen::Index j = i + 1; j < proposed.rows(); ++j)
            checkPair(proposed, i, j);
    }
}

void FilterThresholdLeveler::checkLevels(const MatrixXd& proposed) {
    if (proposed.size() == 0) throw Poco::DataFormatException("'Levels' matrix can't be empty");
    if (proposed.cols() != 1) throw Poco::DataFormatException("'Levels' matrix must have 1 column");
}
