// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"

/// Measures how fast samples arrive: the mean rate over each interval of a number of samples, as 1 by 1.
///
///     out = SampleNbr / (t(last) - t(first)),  -1 where the two time stamps are equal
///
/// State: the time stamp that began the interval, which is the one that ended the last; "reset" and a new
/// "SampleNbr" forget it.
class FilterFrequency final : public Filter {
public:
    static constexpr const char* kTypeName = "FilterFrequency";

    explicit FilterFrequency(const std::string& instanceName);
    ~FilterFrequency() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }

private:
    InputPin<MatrixXd> input;
    OutputPin<MatrixXd> output;
    RangeProperty<int> sampleNumber;
    CommandProperty resetCommand;

    void requestReset();

    int sampleCount = 0;         ///< samples since the interval began; 0 after a reset
    int intervalLength = 100;    ///< the "SampleNbr" in force
    double intervalStart = -1.0; ///< time stamp at which the interval began
    bool resetRequested = false; ///< begin anew at the next sample
};
