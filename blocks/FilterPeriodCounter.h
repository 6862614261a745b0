// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"

/// Counts the periods of a signal, up to a number: the rises through a band around a threshold, less the
/// first.
///
///     below the band:  Threshold - Absolute Tolerance > x
///     above the band:  else, Threshold + Absolute Tolerance < x
///     a rise:          above the band, having been below it since the last rise
///
/// "Nb Period" is sent at each rise, "Is Counting" for every sample; before the first rise both are sent as
/// 0. State: the count and the side, which the command "Reset" forgets when it starts the count; the block is
/// idle before it and behind the last period. Kept as is: with a negative tolerance a value can be on both
/// sides of the band; it counts as below.
class FilterPeriodCounter final : public Filter {
public:
    static constexpr const char* kTypeName = "FilterPeriodCounter";

    explicit FilterPeriodCounter(const std::string& instanceName);
    ~FilterPeriodCounter() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }

private:
    enum class Side { Below, Inside, Above };

    OutputPin<MatrixXd> periods;
    OutputPin<MatrixXd> isCounting;
    InputPin<MatrixXd> input;
    CommandProperty resetCommand;
    RangeProperty<int> periodLimit;
    RangeProperty<double> threshold;
    RangeProperty<double> tolerance;

    void follow(double x);
    Side sideOf(double x) const;
    void judge();
    void reset();

    // `reset` arms nothing, counts from -1 and lets the count begin.
    bool armed = false;   ///< the signal has been below the band since the last rise
    int count = -1;       ///< rises less one
    bool finished = true; ///< the count is complete, or hasn't begun
};
