// SPDX-License-Identifier: MIT
#include "host/report/SignalCurves.h"

#include <algorithm>
#include <cmath>

namespace Quillmere::Host {

namespace {
constexpr std::size_t kFewestPieces = 256; // of a thousand columns; by which a course can still be seen
constexpr std::uint64_t kSparse = 5;       // rounds for each sample, at least
constexpr double kUneven = 2.0;            // times the usual step
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

SignalCurves::Kind SignalCurves::getKind(std::uint64_t rounds) const {
    if (columns.size() > kMostCurves) return Kind::Map;
    if (columns.empty() || kSparse * samples >= rounds) return Kind::Curves;
    const Envelope& first = columns.front().envelope;
    const auto usual = first.getUsualStep();
    // Spectra and their like are rare, too, but even.
    const bool isEven = usual && samples > 9 && *first.getStep(0.9) < kUneven * *usual;
    return isEven ? Kind::Curves : Kind::Marks;
}

} // namespace Quillmere::Host
