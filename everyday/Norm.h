// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"

/// Turns each row into the length of its vector, or of several vectors that stand side by side in it.
///
///     out(r, g) = sqrt(x(r, a)^2 + ... + x(r, b)^2),  a to b being the g-th "Columns" columns
///
/// The squares are added from left to right. "Columns" 0 takes the whole row for one vector; where the
/// columns can't be divided by it, the last vector has those that are left. Any shape; a row without
/// columns has no vector, so its result has no column. Nothing is remembered.
class Norm final : public Filter, public RowStepper {
public:
    static constexpr const char* kTypeName = "Norm";

    explicit Norm(const std::string& instanceName);
    ~Norm() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }
    Eigen::Index getRowWidth(Eigen::Index width) override;
    void stepRows(const double* rows, double* results, std::size_t count, Eigen::Index width) override;

private:
    InputPin<MatrixXd> in;
    OutputPin<MatrixXd> out;
    RangeProperty<int> columns;
};
