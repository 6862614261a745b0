// SPDX-License-Identifier: MIT
#pragma once

#include "host/picture/Canvas.h"
#include "host/picture/CurveLine.h"
#include "host/picture/Picture.h"

namespace Quillmere::Host {

/// Draws the curves of a panel as rows of colours, the first below. Where two values share a place, the
/// larger one shows.
void paintHeat(Canvas& canvas, const Picture& picture, const Panel& panel, const Scale& across,
               const Scale& up);

/// What its colours mean: from `right` to the left, on the line `place`.
void paintHeatLegend(Canvas& canvas, const Picture& picture, const Panel& panel, double right, double line);

} // namespace Quillmere::Host
