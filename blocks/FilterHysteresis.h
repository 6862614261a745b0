// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"

/// Turns a scalar signal into a level, 1.0 or 0.0, that rises above one threshold and falls below another.
///
///     level rises if x > high, falls if x < low;  high and low are swapped if high < low
///
/// Input 1 by 1, in the unit of the thresholds; the output is 1 by 1. A sample of another size is used up and
/// ends the step unsent. A sample with an element on pin "HighThreshold" or "LowThreshold" replaces that
/// threshold for one step; the setting stays. The level is remembered; "Reset" drops it: the command
/// silently, the pin (any element but 0) inside its step, so that the fall is sent. With "Impulse" only
/// changes of the level are sent. Kept as is: without "Impulse" every step sends, also one without an input,
/// which then repeats the last time stamp.
class FilterHysteresis final : public Filter {
public:
    static constexpr const char* kTypeName = "FilterHysteresis";

    explicit FilterHysteresis(const std::string& instanceName);
    ~FilterHysteresis() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }

private:
    InputPin<MatrixXd> input;
    InputPin<MatrixXd> highThresholdPin;
    InputPin<MatrixXd> lowThresholdPin;
    InputPin<MatrixXd> resetPin;
    OutputPin<MatrixXd> output;
    ValueProperty<double> highThreshold;
    ValueProperty<double> lowThreshold;
    CommandProperty resetCommand;
    ValueProperty<bool> impulse;

    void follow(double x, double high, double low);
    void reset();

    bool level = false;         ///< cleared by `reset`
    bool previousLevel = false; ///< the level before this step, or before the reset
};
