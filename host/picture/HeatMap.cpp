// SPDX-License-Identifier: MIT
#include "host/picture/HeatMap.h"

#include "host/picture/HeatScale.h"
#include "host/picture/Palette.h"
#include "host/picture/PanelPainter.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Quillmere::Host {

namespace {

using Piece = Envelope::Piece;

constexpr std::size_t kMostColumns = 400;
constexpr std::size_t kMostRows = 150; // some of which share a place in a panel
constexpr double kColours = 48.0;

HeatScale scaleOf(const Picture& picture, const Panel& panel) {
    const auto extremes = extremesOf(picture, panel);
    return extremes ? HeatScale(extremes->first, extremes->second) : HeatScale(1.0, 0.0);
}

/// Where columns begin and end, by the times of a row: each reaches halfway to its neighbours, but not across
/// a gap.
std::vector<std::pair<double, double>> columnsOf(const Envelope& row) {
    const Envelope coarse = row.getCoarser(kMostColumns);
    const std::vector<Piece>& pieces = coarse.getPieces();
    const double most = coarse.getUsualStep().value_or(1.0) * 2.0;
    std::vector<std::pair<double, double>> columns;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        const auto half = [&](double step) {
            return std::min(step, std::max(most, coarse.getWidth())) / 2.0;
        };
        const double before = i > 0 ? half(pieces[i].firstTime - pieces[i - 1].lastTime) : -1.0;
        const double behind =
            i + 1 < pieces.size() ? half(pieces[i + 1].firstTime - pieces[i].lastTime) : -1.0;
        const double alone = pieces.size() > 1 ? 0.0 : 0.5;
        const double begin = before >= 0.0 ? before : behind >= 0.0 ? behind : alone;
        const double end = behind >= 0.0 ? behind : before >= 0.0 ? before : alone;
        columns.emplace_back(pieces[i].firstTime - begin, pieces[i].lastTime + end);
    }
    return columns;
}

} // namespace

void paintHeat(Canvas& canvas, const Picture& picture, const Panel& panel, const Scale& across,
               const Scale& up) {
    const HeatScale scale = scaleOf(picture, panel);
    const auto columns = columnsOf(picture.getCurve(panel.curves.front()).envelope);
    if (columns.empty()) return;
    const std::size_t count = panel.curves.size();
    const std::size_t together = (count + kMostRows - 1) / kMostRows;
    std::map<int, std::vector<Canvas::Box>> boxes; // by colour, so that the page stays small
    for (std::size_t first = 0; first < count; first += together) {
        std::vector<std::optional<double>> values(columns.size());
        const std::size_t behind = std::min(first + together, count);
        for (std::size_t i = first; i < behind; ++i)
            for (const Piece& piece : picture.getCurve(panel.curves[i]).envelope.getPieces()) {
                const double time = piece.firstTime + (piece.lastTime - piece.firstTime) / 2.0;
                const auto found = std::upper_bound(
                    columns.begin(), columns.end(), time,
                    [](double wanted, const auto& column) { return wanted < column.second; });
                if (found == columns.end() || time < found->first) continue;
                std::optional<double>& value = values[static_cast<std::size_t>(found - columns.begin())];
                value = std::max(value.value_or(piece.largest), piece.largest);
            }
        const double top = up.getPlace(static_cast<double>(behind));
        const double bottom = up.getPlace(static_cast<double>(first));
        for (std::size_t i = 0; i < columns.size(); ++i) {
            if (!values[i]) continue;
            const double x = std::max(across.getPlace(columns[i].first), across.from);
            const double end = std::min(across.getPlace(columns[i].second), across.to);
            const auto colour = static_cast<int>(std::lround(scale.getPart(*values[i]) * kColours));
            std::vector<Canvas::Box>& row = boxes[colour];
            // Neighbours of one colour are one box.
            if (!row.empty() && row.back().y == top && std::fabs(row.back().x + row.back().width - x) < 0.05)
                row.back().width = end - row.back().x;
            else
                row.push_back({x, top, end - x, bottom - top});
        }
    }
    for (const auto& [colour, places] : boxes)
        canvas.fillBoxes(places, Palette::heatOf(colour / kColours));
}

void paintHeatLegend(Canvas& canvas, const Picture& picture, const Panel& panel, double right, double line) {
    constexpr double kLength = 120.0;
    constexpr double kSize = 11.0;
    const HeatScale scale = scaleOf(picture, panel);
    const auto label = [&](double value) {
        char text[40];
        std::snprintf(text, sizeof text, "%.3g", value);
        return text + (panel.unit.empty() ? "" : " " + panel.unit);
    };
    const std::string highest = label(scale.getHigh());
    const double end = right - widthOf(highest, kSize) - 6.0;
    constexpr int kSteps = 24;
    for (int i = 0; i < kSteps; ++i)
        canvas.fillBoxes({{end - kLength + i * kLength / kSteps, line - 9.0, kLength / kSteps, 9.0}},
                         Palette::heatOf(static_cast<double>(i) / (kSteps - 1)));
    canvas.write({right, line}, highest, {.size = kSize, .anchor = Canvas::Letters::Anchor::End});
    char depth[40];
    std::snprintf(depth, sizeof depth, "%.0f dB below", HeatScale::kDepth);
    canvas.write({end - kLength - 6.0, line}, scale.getIsDecibels() ? depth : label(scale.getLow()),
                 {.size = kSize, .anchor = Canvas::Letters::Anchor::End});
}

} // namespace Quillmere::Host
