// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"

/// Multiplies every element of a sample by a gain.
///
///     output = input * Gain
///
/// Any shape; the output's shape follows the input's at every sample, and an empty sample is sent on. The
/// unit of the output is that of the input times that of the gain. Nothing is remembered from sample to
/// sample.
class FilterGain final : public Filter {
public:
    static constexpr const char* kTypeName = "FilterGain";

    explicit FilterGain(const std::string& instanceName);
    ~FilterGain() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }

private:
    InputPin<MatrixXd> input;
    OutputPin<MatrixXd> output;
    ValueProperty<double> gain;
};
