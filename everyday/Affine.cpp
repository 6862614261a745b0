// SPDX-License-Identifier: MIT
#include "everyday/Affine.h"

#include <Poco/Exception.h>

#include <algorithm>
#include <string>

namespace {
std::string shapeText(const MatrixXd& value) {
    return std::to_string(value.rows()) + " by " + std::to_string(value.cols());
}

void requireVector(const MatrixXd& value) {
    if (value.size() > 0 && value.rows() != 1 && value.cols() != 1)
        throw Poco::InvalidArgumentException("an offset is one row or one column, not " + shapeText(value));
}

void requireAgreement(const MatrixXd& matrix, const MatrixXd& offset) {
    if (matrix.size() == 0 || offset.size() == 0 || matrix.rows() == offset.size()) return;
    throw Poco::InvalidArgumentException("a matrix of " + shapeText(matrix) + " has an offset of " +
                                         std::to_string(matrix.rows()) + " numbers, not of " +
                                         std::to_string(offset.size()));
}
} // namespace

Affine::Affine(const std::string& instanceName)
    : Filter(instanceName, true), in("in", this), out("out", this), matrix("Matrix", &getPropertyBag()),
      offset("Offset", &getPropertyBag()) {
    matrix.setValidator(this, &Affine::checkMatrix);
    offset.setValidator(this, &Affine::checkOffset);
    matrix.setChangeHandler(this, &Affine::onChange);
    offset.setChangeHandler(this, &Affine::onChange);
}

Affine::~Affine() = default;

void Affine::process() {
    if (!in.hasData()) return;
    if (hasChanged) readSettings();
    const MatrixXd& sample = in.take();
    const Eigen::Index columns = sample.cols();
    if (width > 0 && columns != width) return;
    MatrixXd& result = out.data.value;
    if (width == 0) {
        copySample(result, sample);
        return out.send(in.getTimeStamp());
    }
    resizeSample(result, sample.rows(), hasMatrix ? height : columns);
    transformRows(sample.data(), result.data(), sample.rows());
    out.send(in.getTimeStamp());
}

Eigen::Index Affine::getRowWidth(Eigen::Index columns) {
    if (hasChanged) readSettings();
    if (width != columns) return kOneByOne; // passed on as it is, or dropped
    return hasMatrix ? height : columns;
}

void Affine::stepRows(const double* rows, double* results, std::size_t count, Eigen::Index) {
    transformRows(rows, results, static_cast<Eigen::Index>(count));
}

void Affine::readSettings() {
    const MatrixXd given = matrix.getValue();
    const MatrixXd added = offset.getValue();
    hasMatrix = given.size() > 0;
    height = given.rows();
    width = hasMatrix ? given.cols() : added.size();
    factors.resize(static_cast<std::size_t>(given.size()));
    double* next = factors.data();
    for (Eigen::Index column = 0; column < given.cols(); ++column)
        for (Eigen::Index row = 0; row < given.rows(); ++row)
            *next++ = given(row, column);
    summands.assign(added.data(), added.data() + added.size());
    hasChanged = false;
}

void Affine::transformRows(const double* row, double* to, Eigen::Index rows) const {
    const Eigen::Index results = hasMatrix ? height : width;
    for (Eigen::Index r = 0; r < rows; ++r, row += width, to += results)
        transform(row, to);
}

/// Order matters: each sum takes its products from left to right, whichever sum grows first.
void Affine::transform(const double* row, double* to) const {
    const Eigen::Index results = hasMatrix ? height : width;
    const double* factor = factors.data();
    if (hasMatrix) {
        for (Eigen::Index i = 0; i < results; ++i)
            to[i] = factor[i] * row[0];
        for (Eigen::Index column = 1; column < width; ++column) {
            factor += results;
            const double x = row[column];
            for (Eigen::Index i = 0; i < results; ++i)
                to[i] += factor[i] * x;
        }
    }
    const double* const from = hasMatrix ? to : row;
    const auto count = static_cast<Eigen::Index>(summands.size());
    for (Eigen::Index i = 0; i < count; ++i)
        to[i] = from[i] + summands[static_cast<std::size_t>(i)];
}

void Affine::checkMatrix(const MatrixXd& value) {
    requireAgreement(value, offset.getValue());
}

void Affine::checkOffset(const MatrixXd& value) {
    requireVector(value);
    requireAgreement(matrix.getValue(), value);
}
