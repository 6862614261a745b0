// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"

/// Divides every element of a sample by a value, which isn't tested.
///
///     output = input / invGain
///
/// No state. Kept as is: the output carries the wall clock, not the input's time stamp.
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
