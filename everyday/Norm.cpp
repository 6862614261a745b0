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
    const Eigen::Index size = wanted == 0 ? std::max<Eigen::Index>(width, 1) : wanted;
    const Eigen::Index vectors = (width + size - 1) / size;
    resizeSample(out.data.value, sample.rows(), vectors);
    const double* row = sample.data();
    double* to = out.data.value.data();
    for (Eigen::Index r = 0; r < sample.rows(); ++r, row += width)
        for (Eigen::Index first = 0; first < width; first += size)
            *to++ = lengthOf(row + first, std::min(size, width - first));
    out.send(in.getTimeStamp());
}
