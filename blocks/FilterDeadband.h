// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"

/// Sets the elements of a sample that lie inside a dead band to zero and passes all others.
///
///     out = mask * in,  mask = 1.0 where  |in| >= Threshold   (Absolute)
///                                          in  >= Threshold   (not Absolute: all below is removed)
///                              and 0.0 else;  > instead of >= if Strict
///
/// Any shape; the output's shape follows the input's at every sample, and an empty sample is sent on. Input,
/// output and threshold share one unit. Nothing is remembered from sample to sample. Kept as is: the mask is
/// multiplied in. A removed element becomes zero with its own sign, a removed infinity becomes not-a-number,
/// and a not-a-number stays one.
class FilterDeadband final : public Filter {
public:
    static constexpr const char* kTypeName = "FilterDeadband";

    explicit FilterDeadband(const std::string& instanceName);
    ~FilterDeadband() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }

private:
    InputPin<MatrixXd> input;
    OutputPin<MatrixXd> output;
    ValueProperty<bool> absolute;
    ValueProperty<bool> strict;
    ValueProperty<double> threshold;
};
