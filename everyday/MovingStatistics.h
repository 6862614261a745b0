// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"
#include "everyday/MovingWindow.h"
#include "everyday/SortedWindow.h"

/// Turns a signal into a statistic of its last samples, element by element.
///
///     out(n) = Kind of in(n - Samples + 1) ... in(n)
///     scaled(n) = in(n) / out(n), and 0 where both are 0
///
/// Any shape, the unit of the input. While fewer samples than "Samples" have come, the statistic is that of
/// those; with "OnlyFull" nothing is sent before. Standard deviation and RMS divide by the number of
/// samples. A not-a-number among the samples gives not-a-number until it has left. "Reset", another shape
/// and another "Kind" or "Samples" start anew. `MovingWindow` tells how sums stay exact. An empty sample is
/// dropped.
class MovingStatistics final : public Filter, public RowStepper {
public:
    static constexpr const char* kTypeName = "MovingStatistics";
    enum class Kind { Mean, StandardDeviation, Rms, Minimum, Maximum, Median, Range };

    explicit MovingStatistics(const std::string& instanceName);
    ~MovingStatistics() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }
    Eigen::Index getRowWidth(Eigen::Index columns) override;
    void stepRows(const double* rows, double* results, std::size_t count, Eigen::Index columns) override;

private:
    InputPin<MatrixXd> in;
    OutputPin<MatrixXd> out;
    OutputPin<MatrixXd> scaled; ///< reckoned only where somebody takes it
    RangeProperty<int> samples;
    EnumEnumProperty<Kind, std::string> kind;
    ValueProperty<bool> onlyFull;
    CommandProperty resetCommand;

    void begin(const MatrixXd& sample);
    void take(const double* sample, double* result);
    bool getIsFilling() const;
    void sendScaled(const MatrixXd& sample, double time);
    void startAnew() { isNew = true; }

    bool isNew = true;      ///< the next sample is the first
    Kind kindNow = {};      ///< that of the window in force
    std::size_t length = 0; ///< "Samples" in force
    Everyday::MovingWindow window;
    Everyday::SortedWindow sorted; ///< in place of `window` for the median
};
