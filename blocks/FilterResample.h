// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"

/// Shrinks a sample to at most a number of rows by picking rows; all columns stay.
///
///     out row i = in row floor(i * ratio + 0.5),  ratio = (rows - 1) / (n - 1), 0 where n is 1;
///     n = Matrix size
///
/// No state. Kept as is: rows are picked, not averaged.
class FilterResample final : public Filter {
public:
    static constexpr const char* kTypeName = "FilterResample";

    explicit FilterResample(const std::string& instanceName);
    ~FilterResample() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }

private:
    OutputPin<MatrixXd> output;
    InputPin<MatrixXd> input;
    RangeProperty<int> matrixSize;
};
