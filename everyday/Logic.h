// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"

/// Combines levels, as thresholds send them, into 1 and 0.
///
///     a level is on where it is greater than 0:  not at 0, below it, or where it is not a number
///     And, Or:   out(i) = a(i) and b(i), a(i) or b(i)        element by element
///     Not:       out(i) = not a(i)
///     Any, All:  out = whether any, or every element of a is on
///
/// What came last at "b" counts for every sample of "a", which clocks the block; one element of "b" counts
/// for all elements of "a". And and Or send nothing before "b" has come, and nothing while the two have
/// other shapes. Of an empty sample no element is on and every one is; Any and All send 1 by 1, the others
/// the shape of "a".
class Logic final : public Filter, public RowStepper {
public:
    static constexpr const char* kTypeName = "Logic";
    enum class Operation { And, Or, Not, Any, All };

    explicit Logic(const std::string& instanceName);
    ~Logic() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }
    Eigen::Index getRowWidth(Eigen::Index columns) override;
    void stepRows(const double* rows, double* results, std::size_t count, Eigen::Index columns) override;

private:
    InputPin<MatrixXd> a;
    InputPin<MatrixXd> b;
    OutputPin<MatrixXd> out;
    EnumEnumProperty<Operation, std::string> operation;

    bool combine(const MatrixXd& sample, bool isAnd);

    MatrixXd other;        ///< what came last at "b"
    bool hasOther = false; ///< anything has
};
