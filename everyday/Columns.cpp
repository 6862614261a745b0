// SPDX-License-Identifier: MIT
#include "everyday/Columns.h"

#include <Poco/Exception.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace {
constexpr double kMostColumns = 1e6;

bool isColumn(double number) {
    return number >= 0.0 && number < kMostColumns && number == std::floor(number);
}

bool areColumns(const MatrixXd& numbers) {
    return std::all_of(numbers.data(), numbers.data() + numbers.size(), isColumn);
}
} // namespace

Columns::Columns(const std::string& instanceName)
    : Filter(instanceName, true), in("in", this), out("out", this), pick("Pick", &getPropertyBag()),
      ranges("Ranges", &getPropertyBag()) {
    pick.setValidator(this, &Columns::checkPick);
    ranges.setValidator(this, &Columns::checkRanges);
    for (ValueProperty<MatrixXd>* const setting : {&pick, &ranges})
        setting->setChangeHandler(this, &Columns::onChange);
}

Columns::~Columns() = default;

void Columns::process() {
    if (!in.hasData()) return;
    if (hasChanged) readSettings();
    const MatrixXd& sample = in.take();
    ++came;
    if (sample.cols() < needed) return drop(sample);
    MatrixXd& picked = out.data.value;
    if (columns.empty()) {
        copySample(picked, sample);
        return out.send(in.getTimeStamp());
    }
    resizeSample(picked, sample.rows(), static_cast<Eigen::Index>(columns.size()));
    pickRows(sample.data(), picked.data(), static_cast<std::size_t>(sample.rows()), sample.cols());
    out.send(in.getTimeStamp());
}

Eigen::Index Columns::getRowWidth(Eigen::Index width) {
    if (hasChanged) readSettings();
    if (columns.empty() || width < needed) return kOneByOne; // passed on as it is, or dropped
    return static_cast<Eigen::Index>(columns.size());
}

void Columns::stepRows(const double* rows, double* results, std::size_t count, Eigen::Index width) {
    came += count;
    pickRows(rows, results, count, width);
}

void Columns::pickRows(const double* rows, double* results, std::size_t count, Eigen::Index width) const {
    const std::size_t taken = columns.size();
    for (std::size_t row = 0; row < count; ++row, rows += width, results += taken)
        for (std::size_t i = 0; i < taken; ++i)
            results[i] = rows[columns[i]];
}

void Columns::drop(const MatrixXd& sample) {
    if (dropped++ > 0 && sample.cols() == droppedColumns) return;
    droppedColumns = sample.cols();
    droppedRows = sample.rows();
}

std::vector<std::string> Columns::getLosses() const {
    if (dropped == 0) return {};
    std::string text = std::to_string(dropped) + " of " + std::to_string(came);
    text += (came == 1 ? " sample" : " samples");
    text += " of 'in' were dropped, since column " + std::to_string(needed - 1) + " was asked for of ";
    text += std::to_string(droppedRows) + " by " + std::to_string(droppedColumns) + ", counted from 0";
    return {text};
}

void Columns::readSettings() {
    const MatrixXd wanted = pick.getValue();
    const MatrixXd spans = ranges.getValue();
    columns.clear();
    needed = 0;
    for (Eigen::Index i = 0; i < wanted.size(); ++i)
        append(static_cast<Eigen::Index>(wanted(i)));
    const Eigen::Index count = spans.size() / 2; // one without columns may have rows
    for (Eigen::Index row = 0; row < count; ++row) {
        const auto first = static_cast<Eigen::Index>(spans(row, 0));
        const auto last = static_cast<Eigen::Index>(spans(row, 1));
        for (Eigen::Index i = 0; i <= std::abs(last - first); ++i)
            append(first < last ? first + i : first - i);
    }
    hasChanged = false;
}

void Columns::append(Eigen::Index column) {
    columns.push_back(column);
    needed = std::max(needed, column + 1);
}

void Columns::checkPick(const MatrixXd& value) {
    if (areColumns(value)) return;
    throw Poco::InvalidArgumentException("columns are whole numbers from 0 to 999999, the first being 0");
}

void Columns::checkRanges(const MatrixXd& value) {
    if (value.size() == 0) return;
    if (value.cols() != 2 || !areColumns(value))
        throw Poco::InvalidArgumentException("ranges are rows of a first and a last column, whole numbers "
                                             "from 0 to 999999, as in [[0, 2], [6, 8]]");
    double count = 0.0;
    for (Eigen::Index row = 0; row < value.rows(); ++row)
        count += std::abs(value(row, 1) - value(row, 0)) + 1.0;
    if (count > kMostColumns) throw Poco::InvalidArgumentException("ranges hold 1000000 columns at most");
}
