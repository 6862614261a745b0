// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"

/// Follows a signal with a mean that forgets: any shape, the unit of the input.
///
///     y(n) = y(n-1) + (x(n) - y(n-1)) / Window,  element by element
///
/// The first sample is its own mean. "Reset", a first value other than 0.0 on "reset", another shape and
/// another window start anew.
class FilterRunningMean final : public Filter {
public:
    static constexpr const char* kTypeName = "FilterRunningMean";

    explicit FilterRunningMean(const std::string& instanceName);

    void process() override;
    const char* getTypeName() const override { return kTypeName; }

private:
    void startAnew() { isFirst = true; }

    InputPin<MatrixXd> in;
    InputPin<MatrixXd> resetPin;
    OutputPin<MatrixXd> out;
    RangeProperty<double> window;
    CommandProperty resetCommand;

    bool isFirst = true; ///< The next sample is the mean.
};
