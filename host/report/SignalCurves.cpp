// SPDX-License-Identifier: MIT
#include "host/report/SignalCurves.h"

#include "host/picture/Curve.h"

#include <algorithm>
#include <cmath>

namespace Quillmere::Host {

namespace {
constexpr std::size_t kFewestPieces = 256; // of a thousand columns; by which a course can still be seen
} // namespace

SignalCurves::SignalCurves(std::vector<Column> gathered, std::uint64_t sampleCount)
    : columns(std::move(gathered)), samples(sampleCount) {
    bool isFirst = true;
    for (const Column& column : columns) {
        const std::vector<Envelope::Piece>& pieces = column.envelope.getPieces();
        if (pieces.empty()) continue;
        begin = isFirst ? pieces.front().firstTime : std::min(begin, pieces.front().firstTime);
        end = isFirst ? pieces.back().lastTime : std::max(end, pieces.back().lastTime);
        isFirst = false;
    }
}

void SignalCurves::take(double time, const Core::MatrixXd& sample) {
    if (!std::isfinite(time)) return;
    const auto all = static_cast<std::size_t>(sample.size());
    const std::size_t elements = std::min(all, kMostColumns);
    leftOut = std::max(leftOut, all - elements);
    if (elements > columns.size()) {
        const std::size_t pieces = std::max(most / elements, kFewestPieces);
        while (columns.size() < elements)
            columns.emplace_back(pieces);
    }
    const auto width = static_cast<std::size_t>(sample.cols());
    for (std::size_t i = 0; i < elements; ++i) {
        const double value =
            sample(static_cast<Eigen::Index>(i / width), static_cast<Eigen::Index>(i % width));
        columns[i].envelope.take(time, value);
        if (std::isfinite(value)) columns[i].sum += value;
    }
    begin = samples == 0 ? time : std::min(begin, time);
    end = samples == 0 ? time : std::max(end, time);
    ++samples;
}

double SignalCurves::getPeriod() const {
    return columns.empty() ? 0.0 : columns.front().envelope.getUsualStep().value_or(0.0);
}

SignalCurves::Kind SignalCurves::getKind(std::uint64_t rounds, const std::string& unit) const {
    if (columns.size() > kMostCurves) return Kind::Map;
    const auto fullest =
        std::max_element(columns.begin(), columns.end(), [](const Column& one, const Column& other) {
            return one.envelope.getCount() < other.envelope.getCount();
        });
    if (fullest == columns.end() || !Curve::getIsRare(fullest->envelope, rounds)) return Kind::Curves;
    const bool areEvents = std::all_of(columns.begin(), columns.end(), [&](const Column& column) {
        return Curve::getIsLevel(column.envelope, unit) && Curve::getIsConstant(column.envelope);
    });
    if (areEvents) return Kind::Marks;
    // Spectra and their like are rare, too, but even.
    return Curve::getIsEven(fullest->envelope) ? Kind::Curves : Kind::Points;
}

} // namespace Quillmere::Host
