// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"
#include "blocks/FilterButterworth.h"

/// Passes the band between two edges: what a high-pass at the low edge and then a low-pass at the high edge
/// leave.
///
///     out = lowpass(in - lowpass(in, low edge), high edge)
///
/// The two are whole `FilterButterworth` blocks of one order, which this block owns, wires and runs within
/// its own step, so it adds no delay and "out" has the time stamp of "in". Any shape in, the same shape out;
/// an empty sample is sent on. Both edges are fractions of half the sample rate, and nothing asks the low one
/// to be below the high one. All that is remembered lies in the two blocks; they start in steady state, so
/// the first output is zero. A change of a setting restarts those of the two that it changes.
///
/// Kept as is: until one of the three settings is first written with a new value, both inner blocks run on
/// their own defaults, order 1 and 0.05, whatever is shown. "Order" 0 bypasses both, so the output is the
/// input and no band. A low edge of 0.0 makes every output non-finite.
class FilterBandPass final : public Filter {
public:
    static constexpr const char* kTypeName = "FilterBandPass";

    explicit FilterBandPass(const std::string& instanceName);
    ~FilterBandPass() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }

private:
    OutputPin<MatrixXd> out;
    InputPin<MatrixXd> in;
    RangeProperty<double> lowEdge;
    RangeProperty<double> highEdge;
    RangeProperty<int> order;

    void forwardSettings();

    OutputPin<MatrixXd> toInner;
    InputPin<MatrixXd> fromInner;
    FilterButterworth innerHighPass;
    FilterButterworth innerLowPass;
};
