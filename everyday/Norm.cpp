// SPDX-License-Identifier: MIT
#include "everyday/Norm.h"

#include <algorithm>
#include <cmath>

namespace {
double lengthOf(const double* vector, Eigen::Index size) {
    double sum = 0.0;
    for (Eigen::Index i = 0; i < size; ++i)
        sum += vector[i] * vector[i];
    return std::sqrt(sum);
}

Eigen::Index vectorSizeOf(Eigen::Index width, Eigen::Index wanted) {
    return wanted == 0 ? std::max<Eigen::Index>(width, 1) : wanted;
}

Eigen::Index vectorsOf(Eigen::Index width, Eigen::Index size) {
    return (width + size - 1) / size;
}

void measureRows(const double* row, double* to, Eigen::Index rows, Eigen::Index width, Eigen::Index size) {
    for (Eigen::Index r = 0; r < rows; ++r, row += width)
        for (Eigen::Index first = 0; first < width; first += size)
            *to++ = lengthOf(row + first, std::min(size, width - first));
}
} // namespace

Norm::Norm(const std::string& instanceName)
    : Filter(instanceName, true), in("in", this), out("out", this), columns("Columns", &getPropertyBag()) {
    columns.setRange(0, 10000, 1);
    columns.setValue(0);
}

Norm::~Norm() = default;

void Norm::process() {
    if (!in.hasData()) return;
    const Eigen::Index wanted = columns.getValue();
    const MatrixXd& sample = in.take();
    const Eigen::Index width = sample.cols();
    const Eigen::Index size = vectorSizeOf(width, wanted);
    resizeSample(out.data.value, sample.rows(), vectorsOf(width, size));
    measureRows(sample.data(), out.data.value.data(), sample.rows(), width, size);
    out.send(in.getTimeStamp());
}

Eigen::Index Norm::getRowWidth(Eigen::Index width) {
    return vectorsOf(width, vectorSizeOf(width, columns.getValue()));
}

void Norm::stepRows(const double* rows, double* results, std::size_t count, Eigen::Index width) {
    measureRows(rows, results, static_cast<Eigen::Index>(count), width,
                vectorSizeOf(width, columns.getValue()));
}
