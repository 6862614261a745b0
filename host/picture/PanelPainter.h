// SPDX-License-Identifier: MIT
#pragma once

#include "host/picture/Canvas.h"
#include "host/picture/CurveLine.h"
#include "host/picture/Picture.h"
#include "host/picture/Ticks.h"

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace Quillmere::Host {

/// Where a panel is: its title, then curves, then lanes, then an axis if it has one.
struct PanelPlace {
    double title = 0.0; ///< The line that its letters stand on.
    double top = 0.0;   ///< Of the curves,
    double bottom = 0.0;
    double lanes = 0.0; ///< and of the lanes, which end where the curves do if there are none.
    double lanesEnd = 0.0;
    Scale across;
    double low = 0.0; ///< Of the values.
    double high = 1.0;
    bool hasAxis = false; ///< Numbers stand below it.
};

/// Draws one panel of a picture.
class PanelPainter {
public:
    static constexpr double kSize = 11.0; ///< Of letters; lengths are in units of the page.
    static constexpr double kLane = 18.0;

    PanelPainter(Canvas& page, const Picture& whatIsDrawn, const Panel& which, const PanelPlace& where)
        : canvas(page), picture(whatIsDrawn), panel(which), place(where) {}

    void paint() const;

    /// The numbers beside a panel so high whose values go from `low` to `high`: as many as fit.
    static std::vector<AxisTick> ticksUp(const Panel& panel, double low, double high, double height);

private:
    void paintTitle() const;
    double paintLegend() const;
    void paintNumbers() const;
    void paintAxis() const;
    void paintCurves() const;
    void paintLanes() const;
    Scale scaleUp() const { return {place.low, place.high, place.bottom, place.top}; }

    Canvas& canvas;
    const Picture& picture;
    const Panel& panel;
    const PanelPlace& place;
};

/// The smallest and the largest value of a panel's curves; nothing of none.
std::optional<std::pair<double, double>> extremesOf(const Picture& picture, const Panel& panel);

/// `text` as far as it fits.
std::string fitted(const std::string& text, double size, double width);

} // namespace Quillmere::Host
