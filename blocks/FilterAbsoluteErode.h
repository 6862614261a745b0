// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"

/// Crops a sample by counts: rows off its top and bottom, columns off its left and right, but not below a
/// minimum size.
///
///     rows kept = max(rows - TopErode - BottomErode, min(MinRows, rows)),  columns likewise
///
/// Below the minimum the block grows back, half on each side, an odd one at the top; beyond an end it is
/// pushed against that end. No state. Kept as is: it lies against that end, not merely shifted by what stood
/// out.
class FilterAbsoluteErode final : public Filter {
public:
    static constexpr const char* kTypeName = "FilterAbsoluteErode";

    explicit FilterAbsoluteErode(const std::string& instanceName);
    ~FilterAbsoluteErode() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }

private:
    OutputPin<MatrixXd> output;
    InputPin<MatrixXd> input;
    RangeProperty<int> leftErode;
    RangeProperty<int> rightErode;
    RangeProperty<int> topErode;
    RangeProperty<int> bottomErode;
    RangeProperty<int> minRows;
    RangeProperty<int> minCols;
    ValueProperty<bool> forwardEmpty;
};
