// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"

/// Sets the elements of a sample that lie inside a dead band to zero and passes all others.
///
///     out = mask * in,  mask = 1.0 where  |in| >= Threshold   (Absolute)
///                                          in  >= Threshold   (not Absolute)
///                              and 0.0 else;  > instead of >= if Strict
///
/// No state. Kept as is: the mask is multiplied in, so a removed element keeps its sign and a removed
/// infinity becomes not-a-number.
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
