// SPDX-License-Identifier: MIT
#include "host/ends/SampleSeries.h"

#include "host/text/Complaint.h"
#include "host/text/Counted.h"
#include "host/text/HostException.h"

#include <algorithm>

namespace Quillmere::Host {

SampleSeries SampleSeries::ofRows(const Core::MatrixXd& rows) {
    SampleSeries series;
    if (rows.rows() == 0) return series;
    series.values.assign(rows.data(), rows.data() + rows.size());
    series.runs.push_back({0, 0, {1, rows.cols()}});
    series.size = static_cast<std::size_t>(rows.rows());
    return series;
}

SampleSeries SampleSeries::ofSamples(const std::vector<Core::MatrixXd>& samples) {
    SampleSeries series;
    for (const Core::MatrixXd& sample : samples)
        series.append(sample);
    return series;
}

void SampleSeries::append(const Core::MatrixXd& sample) {
    const Shape shape{sample.rows(), sample.cols()};
    if (runs.empty() || runs.back().shape != shape) runs.push_back({size, values.size(), shape});
    values.insert(values.end(), sample.data(), sample.data() + sample.size());
    ++size;
}

std::optional<SampleSeries::Shape> SampleSeries::getShape() const {
    return runs.size() == 1 ? std::optional(runs.front().shape) : std::nullopt;
}

SampleSeries::Found SampleSeries::find(std::size_t index) const {
    const auto behind =
        std::upper_bound(runs.begin(), runs.end(), index,
                         [](std::size_t wanted, const Run& candidate) { return wanted < candidate.first; });
    const Run& run = *(behind - 1);
    const auto elements = static_cast<std::size_t>(run.shape.rows * run.shape.columns);
    return {values.data() + run.offset + (index - run.first) * elements, run.shape};
}

Core::MatrixXd SampleSeries::getSample(std::size_t index) const {
    Core::MatrixXd sample;
    copySample(index, sample);
    return sample;
}

void SampleSeries::copySample(std::size_t index, Core::MatrixXd& to) const {
    const Found found = find(index);
    Core::resizeSample(to, found.shape.rows, found.shape.columns);
    std::copy_n(found.values, to.size(), to.data());
}

Core::MatrixXd SampleSeries::getRows() const {
    if (size == 0) return {};
    const Eigen::Index columns = runs.front().shape.rows * runs.front().shape.columns;
    for (const Run& run : runs) {
        const Eigen::Index others = run.shape.rows * run.shape.columns;
        if (others != columns)
            throw HostException(Complaint{{},
                                          "a sample of " +
                                              counted(static_cast<std::uint64_t>(others), "element") +
                                              " behind those of " + std::to_string(columns),
                                          "samples of one size, as the rows of a matrix have"});
    }
    Core::MatrixXd rows(static_cast<Eigen::Index>(size), columns);
    std::copy(values.begin(), values.end(), rows.data());
    return rows;
}

SampleSeries SampleSeries::getTail(std::size_t first) const {
    SampleSeries tail;
    if (first >= size) return tail;
    const auto offset = static_cast<std::size_t>(find(first).values - values.data());
    tail.values.assign(values.begin() + static_cast<std::ptrdiff_t>(offset), values.end());
    tail.size = size - first;
    for (const Run& run : runs) {
        const bool isLater = run.first > first;
        if (!isLater) tail.runs.clear(); // the one before begins before the tail
        tail.runs.push_back({isLater ? run.first - first : 0, isLater ? run.offset - offset : 0, run.shape});
    }
    return tail;
}

} // namespace Quillmere::Host
