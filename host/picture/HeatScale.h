// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

namespace Quillmere::Host {

/// Which colour of a map a value has, on pictures and on pages: by decibels where no value is negative, as of
/// amplitudes, of which most would be dark else; as they are where some are.
class QUILLMERE_API HeatScale {
public:
    static constexpr double kDepth = 60.0; ///< Decibels from the largest value down to where all is dark.

    /// Of values between the two; without any, low is above high.
    HeatScale(double lowest, double highest);

    bool getIsDecibels() const { return isDecibels; }
    double getLow() const { return low; }
    double getHigh() const { return high; }
    /// From 0, the darkest, to 1. Requires: a number between the two.
    double getPart(double value) const;

private:
    double low = 0.0; ///< What is the darkest, with everything below it,
    double high = 1.0;
    bool isDecibels = false;
};

} // namespace Quillmere::Host
