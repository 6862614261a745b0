// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"

/// Turns a scalar signal into a level, 1.0 or 0.0, that rises above one threshold and falls below another.
///
///     level rises if x > high, falls if x < low;  high and low are swapped if high < low
///
/// State: the level. "Reset" drops it: the command silently, the pin inside its step, so that the fall is
/// sent. A sample on a threshold's pin counts for one step. Kept as is: without "Impulse" every step sends,
/// also one without an input, which then repeats the last time stamp; a sample that isn't 1 by 1 ends the
/// step unsent.
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
