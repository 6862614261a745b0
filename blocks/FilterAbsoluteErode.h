// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"

/// Crops a sample by counts: rows off its top and bottom, columns off its left and right, but not below a
/// minimum size.
///
///     rows kept = max(rows - TopErode - BottomErode, min(MinRows, rows)),  columns likewise
///
/// Any shape. Where the crop leaves fewer than "MinRows" rows the block grows back, half on each side, with
/// an odd one at the top; where it would then leave the sample it is pushed against the end (the first row,
/// if it would leave it there or at both). Where nothing is left, an empty sample included, a 0 by 0 sample
/// is sent if "FwdEmptyMat" is set, and nothing else. Nothing is remembered from sample to sample. Kept as
/// is: a block that grew beyond one end lies against that end, not merely shifted by what stood out.
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
