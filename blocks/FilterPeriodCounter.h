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
/// Element 0 of a sample of any shape counts, in the unit of the threshold. Both outputs are 1 by 1: "Nb
/// Period", sent at each rise, holds the whole periods so far (the first rise sends 0), and "Is Counting",
/// sent for every sample, is 1.0 from the first rise up to and including the sample that completes the last
/// period. Before the first rise both are sent as 0. The block is idle until the command "Reset", which
/// forgets everything and starts the count; a finished count stays until then. An empty sample is used up
/// while the block counts, changes nothing and sends nothing. Kept as is: with a negative tolerance a value
/// can be on both sides of the band; it counts as below.
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
