// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/picture/Canvas.h"
#include "host/picture/PanelPainter.h"
#include "host/picture/Picture.h"

#include <string>
#include <utility>
#include <vector>

namespace Quillmere::Host {

/// Where everything of a picture is on its page: the panels one below the other, above the one axis that they
/// share.
class QUILLMERE_API PagePainter {
public:
    /// Requires: the picture outlives it.
    explicit PagePainter(const Picture& whatIsDrawn);

    double getWidth() const { return kWidth; }
    double getHeight() const { return height; }
    const std::vector<PanelPlace>& getPlaces() const { return places; }
    /// What the picture shows, for who can't see it.
    std::string getDescription() const;

    void paint(Canvas& canvas) const;

private:
    static constexpr double kWidth = 960.0;

    void findLeft();
    double plotHeight() const;
    PanelPlace placeOf(const Panel& panel, double y) const;

    const Picture& picture;
    std::vector<PanelPlace> places; ///< For each panel.
    double left = 0.0;              ///< Of the curves.
    double right = 0.0;
    double height = 0.0;
};

/// What a panel's horizontal axis goes from and to, and they aren't the same.
std::pair<double, double> timesOf(const Picture& picture, const Panel& panel);

/// What a panel's vertical axis goes from and to: its values with room around them, or the rows of a heat
/// map.
std::pair<double, double> verticalOf(const Picture& picture, const Panel& panel);

} // namespace Quillmere::Host
