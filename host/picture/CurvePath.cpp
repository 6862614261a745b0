// SPDX-License-Identifier: MIT
#include "host/picture/CurvePath.h"

#include <algorithm>
#include <cmath>

namespace Quillmere::Host {

void CurvePath::take(double x, double y) {
    const bool isBreak = !std::isfinite(x) || !std::isfinite(y);
    if (isBreak && (points.empty() || std::isnan(points.back().y))) return;
    points.push_back({x, isBreak ? std::nan("") : y});
    if (points.size() > 2 * most) thin();
}

void CurvePath::thin() {
    Point low = points.front();
    Point high = low;
    for (const Point& point : points) {
        if (std::isnan(point.y)) continue;
        low = {std::min(low.x, point.x), std::min(low.y, point.y)};
        high = {std::max(high.x, point.x), std::max(high.y, point.y)};
    }
    leaveOut(part * (high.x - low.x), part * (high.y - low.y));
    while (points.size() > most && part < 1.0) {
        part *= 2.0;
        leaveOut(part * (high.x - low.x), part * (high.y - low.y));
    }
    // What is all breaks is a cloud of points.
    std::size_t kept = 0;
    for (std::size_t i = 0; points.size() > most && i < points.size(); i += 2)
        points[kept++] = points[i];
    if (kept > 0) points.resize(kept);
}

/// Breaks stay, and so do the points beside them.
void CurvePath::leaveOut(double wide, double tall) {
    std::size_t kept = 1;
    for (std::size_t i = 1; i < points.size(); ++i) {
        const Point& last = points[kept - 1];
        const Point& point = points[i];
        const bool isBeside = std::isnan(point.y) || std::isnan(last.y) ||
                              (i + 1 < points.size() && std::isnan(points[i + 1].y));
        if (isBeside || std::fabs(point.x - last.x) > wide || std::fabs(point.y - last.y) > tall)
            points[kept++] = point;
    }
    points.resize(kept);
}

} // namespace Quillmere::Host
