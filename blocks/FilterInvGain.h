// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"

/// Divides every element of a sample by a value.
///
///     output = input / invGain
///
/// Any shape; the output's shape follows the input's at every sample, and an empty sample is sent on. The
/// divisor isn't tested: 0 gives infinities, and not-a-number for elements that are 0. Nothing is remembered
/// from sample to sample. Kept as is: the output carries the wall clock, not the input's time stamp.
class FilterInvGain final : public Filter {
public:
    static constexpr const char* kTypeName = "FilterInvGain";

    explicit FilterInvGain(const std::string& instanceName);
    ~FilterInvGain() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }

private:
    InputPin<MatrixXd> input;
    OutputPin<MatrixXd> output;
    ValueProperty<double> invGain;
};
