// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"

/// Compares the first element of a sample with a threshold: 1 by 1, 1.0 beyond it and 0.0 else.
///
///     High Level:  Output = x > Threshold
///     Low Level:   Output = x < Threshold
///
/// No state.
class FilterThreshold final : public Filter {
public:
    static constexpr const char* kTypeName = "FilterThreshold";

    explicit FilterThreshold(const std::string& instanceName);
    ~FilterThreshold() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }

private:
    EnumProperty<std::string> mode;
    ValueProperty<double> threshold;
    InputPin<MatrixXd> input;
    OutputPin<MatrixXd> output;
};
