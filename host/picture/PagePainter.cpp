// SPDX-License-Identifier: MIT
#include "host/picture/PagePainter.h"

#include "host/picture/Ticks.h"
#include "host/text/Counted.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <optional>
#include <tuple>

namespace Quillmere::Host {

namespace {

// Lengths in units of the page.
constexpr double kTitleSize = 15.0;
constexpr double kAbovePanels = 40.0;
constexpr double kPanelTitle = 28.0; // what a panel's title takes
constexpr double kAboveLanes = 8.0;
constexpr double kAxis = 44.0; // numbers and what they are
constexpr double kBelow = 12.0;
constexpr double kRightMargin = 22.0;
constexpr double kUnitRoom = 24.0;
constexpr double kWidestLaneName = 150.0;

std::string rangeText(const char* words, double low, double high) {
    char text[120];
    std::snprintf(text, sizeof text, words, low, high);
    return text;
}

} // namespace

std::pair<double, double> timesOf(const Picture& picture, const Panel& panel) {
    const auto times = panel.axis.empty() ? picture.getTimes() : picture.getTimes(panel);
    const auto [from, to] = times.value_or(std::pair(0.0, 1.0));
    if (from < to) return {from, to};
    const double room = std::max(0.5, 1e-9 * std::fabs(from));
    return {from - room, to + room};
}

std::pair<double, double> verticalOf(const Picture& picture, const Panel& panel) {
    constexpr double kLargest = 4e307; // twice that is still a number
    if (panel.kind == Panel::Kind::Heat)
        return {panel.rowsBegin - panel.rowsApart / 2.0,
                panel.rowsBegin + (static_cast<double>(panel.curves.size()) - 0.5) * panel.rowsApart};
    const auto extremes = panel.range ? panel.range : extremesOf(picture, panel);
    if (!extremes) return {0.0, 1.0};
    const double low = std::clamp(extremes->first, -kLargest, kLargest);
    const double high = std::clamp(extremes->second, -kLargest, kLargest);
    const double size = std::max(std::fabs(low), std::fabs(high));
    double room = 0.04 * (high - low);
    // A constant has its line in the middle.
    if (!(room > 1e-12 * size)) room = size > 1e-300 ? 0.1 * size : 1.0;
    return {low - room, high + room};
}

PagePainter::PagePainter(const Picture& whatIsDrawn) : picture(whatIsDrawn), right(kWidth - kRightMargin) {
    findLeft();
    double y = kAbovePanels;
    for (std::size_t i = 0; i < picture.panels.size(); ++i) {
        const Panel& panel = picture.panels[i];
        PanelPlace& place = places.emplace_back(placeOf(panel, y));
        const bool isLastOfAll = i + 1 == picture.panels.size() || !picture.panels[i + 1].axis.empty();
        place.hasAxis = isLastOfAll || !panel.axis.empty();
        y = place.lanesEnd + (place.hasAxis ? kAxis : kBelow);
    }
    height = y + kBelow;
}

PanelPlace PagePainter::placeOf(const Panel& panel, double y) const {
    PanelPlace place;
    place.title = y + 17.0;
    place.top = y + kPanelTitle;
    place.bottom = place.top + (panel.curves.empty() ? 0.0 : plotHeight());
    place.lanes = place.bottom + (panel.levels.empty() || panel.curves.empty() ? 0.0 : kAboveLanes);
    place.lanesEnd = place.lanes + PanelPainter::kLane * static_cast<double>(panel.levels.size());
    std::tie(place.low, place.high) = verticalOf(picture, panel);
    const auto [from, to] = timesOf(picture, panel);
    place.across = {from, to, left, right};
    return place;
}

double PagePainter::plotHeight() const {
    const std::size_t panels = picture.panels.size();
    return panels == 1 ? 300.0 : panels == 2 ? 220.0 : panels <= 5 ? 160.0 : 110.0;
}

/// As far from the edge as the widest number, or the widest name of a lane, needs.
void PagePainter::findLeft() {
    double widest = 24.0;
    for (const Panel& panel : picture.panels) {
        const auto [low, high] = verticalOf(picture, panel);
        if (!panel.curves.empty())
            for (const AxisTick& tick : PanelPainter::ticksUp(panel, low, high, plotHeight()))
                widest = std::max(widest, widthOf(tick.label, PanelPainter::kSize) + kUnitRoom);
        for (const Panel::Item& item : panel.levels)
            widest = std::max(widest, std::min(widthOf(item.label, PanelPainter::kSize), kWidestLaneName));
    }
    left = widest + 14.0;
}

std::string PagePainter::getDescription() const {
    std::string text = counted(picture.panels.size(), "panel");
    if (const auto times = picture.getTimes())
        text += rangeText(", from %.6g to %.6g ", times->first, times->second) + picture.getClock();
    for (const Panel& panel : picture.panels) {
        text += ". " + (panel.title.empty() ? std::string("Panel") : panel.title) + ": ";
        std::string names;
        for (const std::vector<Panel::Item>* const items : {&panel.curves, &panel.levels})
            for (const Panel::Item& item : *items)
                names += (names.empty() ? "" : ", ") + item.label;
        text += panel.kind == Panel::Kind::Heat ? "a heat map of " + counted(panel.curves.size(), "column")
                                                : names;
        if (const auto extremes = extremesOf(picture, panel))
            text += rangeText(", between %.4g and %.4g", extremes->first, extremes->second) +
                    (panel.unit.empty() ? "" : " " + panel.unit);
    }
    return text + ".";
}

void PagePainter::paint(Canvas& canvas) const {
    canvas.write({left, 26.0}, fitted(picture.title, kTitleSize, right - left),
                 {.size = kTitleSize, .isBold = true});
    for (std::size_t i = 0; i < places.size(); ++i)
        PanelPainter(canvas, picture, picture.panels[i], places[i]).paint();
}

} // namespace Quillmere::Host
