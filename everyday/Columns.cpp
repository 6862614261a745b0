// SPDX-License-Identifier: MIT
#include "everyday/Columns.h"

#include <Poco/Exception.h>

#include <algorithm>
#include <cmath>

namespace {
constexpr double kMostColumns = 1e6;

bool isColumn(double number) {
    return number >= 0.0 && number < kMostColumns && number == std::floor(number);
}
} // namespace

Columns::Columns(const std::string& instanceName)
    : Filter(instanceName, true), in("in", this), out("out", this), pick("Pick", &getPropertyBag()) {
    pick.setValidator(this, &Columns::checkPick);
    pick.setChangeHandler(this, &Columns::onChange);
}

Columns::~Columns() = default;

void Columns::process() {
    if (!in.hasData()) return;
    if (hasChanged) readSettings();
    const MatrixXd& sample = in.take();
    if (sample.cols() < needed) return;
    MatrixXd& picked = out.data.value;
    if (columns.empty()) {
        copySample(picked, sample);
        return out.send(in.getTimeStamp());
    }
    const std::size_t count = columns.size();
    resizeSample(picked, sample.rows(), static_cast<Eigen::Index>(count));
    const double* from = sample.data();
    double* to = picked.data();
    for (Eigen::Index row = 0; row < sample.rows(); ++row, from += sample.cols(), to += count)
        for (std::size_t i = 0; i < count; ++i)
            to[i] = from[columns[i]];
    out.send(in.getTimeStamp());
}

void Columns::readSettings() {
    const MatrixXd wanted = pick.getValue();
    columns.clear();
    needed = 0;
    for (Eigen::Index i = 0; i < wanted.size(); ++i) {
        columns.push_back(static_cast<Eigen::Index>(wanted(i)));
        needed = std::max(needed, columns.back() + 1);
    }
    hasChanged = false;
}

void Columns::checkPick(const MatrixXd& value) {
    if (std::all_of(value.data(), value.data() + value.size(), isColumn)) return;
    throw Poco::InvalidArgumentException("columns are whole numbers from 0 to 999999, the first being 0");
}
