// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"

/// Takes the absolute value of every element of a sample: any shape, the unit of the input, nothing
/// remembered.
class FilterAbsolute final : public Filter {
public:
    static constexpr const char* kTypeName = "FilterAbsolute";

    explicit FilterAbsolute(const std::string& instanceName);

    void process() override;
    const char* getTypeName() const override { return kTypeName; }

private:
    InputPin<MatrixXd> input;
    OutputPin<MatrixXd> output;
};
