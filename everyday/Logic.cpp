// SPDX-License-Identifier: MIT
#include "everyday/Logic.h"

#include <algorithm>

namespace {
bool isOn(double level) {
    return level > 0.0;
}

void invert(const double* from, double* to, Eigen::Index size) {
    for (Eigen::Index i = 0; i < size; ++i)
        to[i] = isOn(from[i]) ? 0.0 : 1.0;
}

/// Whether any level, or every one, is on.
double sum(const double* levels, Eigen::Index size, bool isAny) {
    const auto on = std::count_if(levels, levels + size, isOn);
    return (isAny ? on > 0 : on == size) ? 1.0 : 0.0;
}

/// Writes `rule(a(i), b(i))` for each element; of one element in `b` the same for all.
template <class Rule>
void combineEach(const MatrixXd& a, const MatrixXd& b, double* to, Rule rule) {
    const double* const left = a.data();
    const double* const right = b.data();
    const Eigen::Index size = a.size();
    if (b.size() == 1) {
        const bool isRight = isOn(right[0]);
        for (Eigen::Index i = 0; i < size; ++i)
            to[i] = rule(isOn(left[i]), isRight) ? 1.0 : 0.0;
    } else {
        for (Eigen::Index i = 0; i < size; ++i)
            to[i] = rule(isOn(left[i]), isOn(right[i])) ? 1.0 : 0.0;
    }
}
} // namespace

Logic::Logic(const std::string& instanceName)
    : Filter(instanceName, true), a("a", this), b("b", this), out("out", this),
      operation("Operation", &getPropertyBag()) {
    b.setIsBlocking(false);
    for (const char* const label : {"And", "Or", "Not", "Any", "All"})
        operation.addLabel(label);
    operation.setValue(static_cast<unsigned>(Operation::And));
}

Logic::~Logic() = default;

void Logic::process() {
    if (b.hasData()) {
        copySample(other, b.take());
        hasOther = true;
    }
    if (!a.hasData()) return;
    const auto wanted = static_cast<Operation>(operation.getValue());
    const MatrixXd& sample = a.take();
    switch (wanted) {
    case Operation::And:
    case Operation::Or:
        if (!combine(sample, wanted == Operation::And)) return;
        break;
    case Operation::Not:
        resizeSample(out.data.value, sample.rows(), sample.cols());
        invert(sample.data(), out.data.value.data(), sample.size());
        break;
    case Operation::Any:
    case Operation::All:
        resizeSample(out.data.value, 1, 1);
        out.data.value(0) = sum(sample.data(), sample.size(), wanted == Operation::Any);
        break;
    }
    out.send(a.getTimeStamp());
}

Eigen::Index Logic::getRowWidth(Eigen::Index columns) {
    switch (static_cast<Operation>(operation.getValue())) {
    case Operation::Not:
        return b.hasData() ? kOneByOne : columns;
    case Operation::Any:
    case Operation::All:
        return b.hasData() ? kOneByOne : 1;
    case Operation::And:
    case Operation::Or:
        break;
    }
    return kOneByOne;
}

void Logic::stepRows(const double* rows, double* results, std::size_t count, Eigen::Index columns) {
    const auto wanted = static_cast<Operation>(operation.getValue());
    if (wanted == Operation::Not) return invert(rows, results, static_cast<Eigen::Index>(count) * columns);
    for (std::size_t row = 0; row < count; ++row, rows += columns)
        results[row] = sum(rows, columns, wanted == Operation::Any);
}

bool Logic::combine(const MatrixXd& sample, bool isAnd) {
    const bool fits = other.size() == 1 || (other.rows() == sample.rows() && other.cols() == sample.cols());
    if (!hasOther || !fits) return false;
    resizeSample(out.data.value, sample.rows(), sample.cols());
    double* const to = out.data.value.data();
    // Both sides are looked at, without a branch for each element.
    if (isAnd)
        combineEach(sample, other, to, [](bool left, bool right) { return left & right; });
    else
        combineEach(sample, other, to, [](bool left, bool right) { return left | right; });
    return true;
}
