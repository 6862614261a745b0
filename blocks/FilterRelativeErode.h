// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"

/// Crops a sample by percentages of its size: rows off its top and bottom, columns off its left and right.
///
///     rows kept = floor(rows * (100 - Top - Bottom) / 100 + 0.5),  from row floor(rows * Top / 100 + 0.5) on
///
/// and columns likewise. Where the rows to keep fall half-way between two numbers the block starts one row
/// earlier (not before row 0), since start and size would both round up; where rounding alone makes the block
/// one row too late it ends at the last row. No state.
class FilterRelativeErode final : public Filter {
public:
    static constexpr const char* kTypeName = "FilterRelativeErode";

    explicit FilterRelativeErode(const std::string& instanceName);
    ~FilterRelativeErode() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }

private:
    OutputPin<MatrixXd> output;
    InputPin<MatrixXd> input;
    RangeProperty<double> leftErode;
    RangeProperty<double> rightErode;
    RangeProperty<double> topErode;
    RangeProperty<double> bottomErode;
    ValueProperty<bool> forwardEmpty;
};
