// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"

/// Multiplies every element of a sample by a gain.
///
///     output = input * Gain
///
/// No state.
class FilterGain final : public Filter, public RowStepper {
public:
    static constexpr const char* kTypeName = "FilterGain";

    explicit FilterGain(const std::string& instanceName);
    ~FilterGain() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }
    Eigen::Index getRowWidth(Eigen::Index columns) override;
    void stepRows(const double* rows, double* results, std::size_t count, Eigen::Index columns) override;

private:
    InputPin<MatrixXd> input;
    OutputPin<MatrixXd> output;
    ValueProperty<double> gain;
};
