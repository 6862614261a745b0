// SPDX-License-Identifier: MIT
#include "FilterAbsolute.h"

#include <cmath>

FilterAbsolute::FilterAbsolute(const std::string& instanceName)
    : Filter(instanceName, true), input("input", this), output("output", this) {}

void FilterAbsolute::process() {
    if (!input.hasData()) return;
    const MatrixXd& sample = input.take();
    resizeSample(output.data.value, sample.rows(), sample.cols());
    for (Eigen::Index i = 0; i < sample.size(); ++i)
        output.data.value(i) = std::fabs(sample(i));
    output.send(input.getTimeStamp());
}
