// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"
#include "blocks/FilterButterworth.h"

/// Passes the band between two edges, by two whole `FilterButterworth` blocks of one order that it owns,
/// wires and runs within its own step.
///
///     out = lowpass(in - lowpass(in, low edge), high edge)
///
/// All state lies in the two; a setting restarts those that it changes. Kept as is: until one of the three
/// settings is first written with a new value, both run on their own defaults, order 1 and 0.05.
class FilterBandPass final : public Filter, public RowStepper {
public:
    static constexpr const char* kTypeName = "FilterBandPass";

    explicit FilterBandPass(const std::string& instanceName);
    ~FilterBandPass() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }
    Eigen::Index getRowWidth(Eigen::Index columns) override;
    void stepRows(const double* rows, double* results, std::size_t count, Eigen::Index columns) override;

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
