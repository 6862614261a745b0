// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/picture/Canvas.h"
#include "host/picture/Curve.h"

#include <limits>
#include <vector>

namespace Quillmere::Host {

/// From numbers to places on a page, along one axis.
struct Scale {
    double low = 0.0;  ///< What stands at `from`,
    double high = 1.0; ///< and what at `to`. Not the same.
    double from = 0.0;
    double to = 1.0;

    double getPlace(double value) const {
        const double part = (value - low) / (high - low);
        return from + part * (to - from);
    }
};

/// What of a curve is to be drawn: lines with gaps between them, and points without neighbours.
struct CurveLine {
    std::vector<std::vector<Canvas::Point>> lines;
    std::vector<Canvas::Point> points;
};

/// A step so many times as long as the usual one is a gap, as a look into a recording has it.
inline constexpr double kGapInSteps = 10.0;

/// Seconds behind which no line is drawn to the next sample.
QUILLMERE_API double gapLimitOf(const Envelope& envelope);

/// A line through everything a column of the page holds, from its smallest to its largest value, and through
/// each sample where there are few. Nothing is drawn across a gap; where `style` is marks, nothing is joined.
QUILLMERE_API CurveLine lineOf(const Envelope& envelope, Curve::Style style, const Scale& across,
                               const Scale& up);

/// The line of a curve of a table with so many rows: through its envelope, or along its path.
QUILLMERE_API CurveLine lineOf(const Curve& curve, std::uint64_t rows, const Scale& across, const Scale& up);

/// The times at which a level is on, as boxes of `height` from `top` down: a pulse is as wide as can be seen.
/// What has no zeros and isn't there in each of `rows` are events, which last no time.
QUILLMERE_API std::vector<Canvas::Box> boxesOf(const Envelope& envelope, std::uint64_t rows,
                                               const Scale& across, double top, double height);

} // namespace Quillmere::Host
