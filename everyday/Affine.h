// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/Block.h"

#include <vector>

/// Multiplies each row by a matrix and adds an offset: axes turned, calibrated, scaled, mixed.
///
///     out(r, i) = ((M(i, 0) x(r, 0) + M(i, 1) x(r, 1)) + ...) + Offset(i)
///
/// Products are added from left to right and the offset last. "Offset" is a row or a column. An empty
/// "Matrix" leaves the row as it is and reckons with no product; an empty "Offset" adds nothing. A sample
/// whose columns aren't as many as the matrix has, or, without one, as the offset has numbers, is dropped.
/// Nothing is remembered.
class Affine final : public Filter, public RowStepper {
public:
    static constexpr const char* kTypeName = "Affine";

    explicit Affine(const std::string& instanceName);
    ~Affine() override;

    void process() override;
    const char* getTypeName() const override { return kTypeName; }
    Eigen::Index getRowWidth(Eigen::Index columns) override;
    void stepRows(const double* rows, double* results, std::size_t count, Eigen::Index columns) override;

private:
    InputPin<MatrixXd> in;
    OutputPin<MatrixXd> out;
    ValueProperty<MatrixXd> matrix;
    ValueProperty<MatrixXd> offset;

    void readSettings();
    void transformRows(const double* row, double* to, Eigen::Index rows) const;
    void transform(const double* row, double* to) const;

    void checkMatrix(const MatrixXd& value);
    void checkOffset(const MatrixXd& value);
    void onChange() { hasChanged = true; }

    bool hasChanged = true; ///< the copies below are those of other settings
    bool hasMatrix = false;
    Eigen::Index width = 0;       ///< columns of the matrix, or numbers of the offset without one; 0 for any
    Eigen::Index height = 0;      ///< columns of a result, where there is a matrix
    std::vector<double> factors;  ///< the matrix by columns, so that a row's sums grow side by side
    std::vector<double> summands; ///< the offset, empty for none
};
