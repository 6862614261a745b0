// SPDX-License-Identifier: MIT
#include "blocks/FilterResample.h"

#include <algorithm>
#include <cmath>

namespace {
void pickRows(const MatrixXd& sample, int rows, MatrixXd& picked) {
    const double ratio = rows > 1 ? static_cast<double>(sample.rows() - 1) / (rows - 1) : 0.0;
    const Eigen::Index cols = sample.cols();
    resizeSample(picked, rows, cols);
    for (Eigen::Index i = 0; i < rows; ++i) {
        const auto source = static_cast<Eigen::Index>(std::floor(static_cast<double>(i) * ratio + 0.5));
        std::copy_n(sample.data() + source * cols, cols, picked.data() + i * cols);
    }
}
} // namespace

FilterResample::FilterResample(const std::string& instanceName)
    : Filter(instanceName, true), output("out", this), input("in", this),
      matrixSize("Matrix size", &getPropertyBag()) {
    matrixSize.setRange(1, 10000, 1);
    matrixSize.setValue(900);
}

FilterResample::~FilterResample() = default;

void FilterResample::process() {
    if (!input.hasData()) return;
    const MatrixXd& sample = input.take();
    const int rows = matrixSize.getValue();
    if (rows >= sample.rows())
        copySample(output.data.value, sample);
    else
        pickRows(sample, rows, output.data.value);
    output.send(input.getTimeStamp());
}
