// SPDX-License-Identifier: MIT
#include "host/picture/HeatScale.h"

#include <cmath>

namespace Quillmere::Host {

namespace {
double decibels(double ratio) {
    return 20.0 * std::log10(ratio);
}
} // namespace

HeatScale::HeatScale(double lowest, double highest) {
    if (!(lowest <= highest)) return;
    isDecibels = lowest >= 0.0 && highest > 0.0;
    high = highest;
    low = isDecibels ? highest * std::pow(10.0, -kDepth / 20.0) : lowest;
    if (!(low < high)) high = low + 1.0;
}

double HeatScale::getPart(double value) const {
    if (value <= low) return 0.0;
    if (isDecibels) return 1.0 + decibels(value / high) / kDepth;
    if (std::isfinite(high - low)) return (value - low) / (high - low);
    return (value / 2.0 - low / 2.0) / (high / 2.0 - low / 2.0);
}

} // namespace Quillmere::Host
