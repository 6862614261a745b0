// SPDX-License-Identifier: MIT
#pragma once

#include "host/picture/Canvas.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace Quillmere::Host::Palette {

/// For curves: colours that people tell apart who see some of them otherwise (M. Okabe, K. Ito, "Color
/// universal design", 2008), without the yellow, which is hard to see on white.
inline constexpr std::array<Canvas::Colour, 7> kCurves{0x0072B2, 0xD55E00, 0x009E73, 0xCC79A7,
                                                       0xE69F00, 0x56B4E9, 0x000000};

/// For heat maps: cividis, from low to high, whose lightness grows evenly and which looks the same to those
/// who don't tell red from green (J. Nunez, C. Anderton, R. Renslow, PLOS ONE 13, 2018).
inline constexpr std::array<Canvas::Colour, 9> kHeat{0x00224E, 0x123570, 0x3B496C, 0x575D6D, 0x707173,
                                                     0x8A8678, 0xA59C74, 0xC3B369, 0xFEE838};

inline constexpr Canvas::Colour kGrid = 0xDDDDDD;
inline constexpr Canvas::Colour kFrame = 0x999999;
inline constexpr Canvas::Colour kText = 0x222222;
inline constexpr Canvas::Colour kFaint = 0x666666;

/// Of the heat map, from 0 to 1.
inline Canvas::Colour heatOf(double part) {
    const double place = std::clamp(part, 0.0, 1.0) * static_cast<double>(kHeat.size() - 1);
    const auto below = std::min(static_cast<std::size_t>(place), kHeat.size() - 2);
    const double rest = place - static_cast<double>(below);
    Canvas::Colour colour = 0;
    for (const unsigned shift : {16u, 8u, 0u}) {
        const double from = (kHeat[below] >> shift) & 0xFFu;
        const double to = (kHeat[below + 1] >> shift) & 0xFFu;
        colour |= static_cast<Canvas::Colour>(std::lround(from + rest * (to - from))) << shift;
    }
    return colour;
}

} // namespace Quillmere::Host::Palette
