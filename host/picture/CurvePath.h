// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <cstddef>
#include <vector>

namespace Quillmere::Host {

/// A way through points in the order in which they came, at a bounded size: what a picture couldn't show of
/// it is left out, more and more of it as it gets longer. Not-a-number is a break.
class QUILLMERE_API CurvePath {
public:
    struct Point {
        double x = 0.0;
        double y = 0.0;
    };

    /// Requires: at least 16 points.
    explicit CurvePath(std::size_t mostPoints) : most(mostPoints) {}

    void take(double x, double y);
    void clear() { points.clear(); }

    bool getIsEmpty() const { return points.empty(); }
    const std::vector<Point>& getPoints() const { return points; }

private:
    void thin();
    void leaveOut(double wide, double tall);

    std::size_t most;
    std::vector<Point> points;
    double part = 0x1p-11; ///< Of the whole range, that a point has to be away from the one before.
};

} // namespace Quillmere::Host
