// SPDX-License-Identifier: MIT
#include "host/picture/Curve.h"

#include <algorithm>

namespace Quillmere::Host {

namespace {
constexpr std::size_t kMostPiecesOfAll = std::size_t{1} << 18; // 16 MB
constexpr std::size_t kFewestPieces = 512;
} // namespace

Curve::Style Curve::getStyle(std::uint64_t rows) const {
    if (envelope.getIsLevel() && unit.empty()) return Style::Level;
    const bool isSparse = 5 * envelope.getCount() < rows;
    if (!isSparse) return Style::Line;
    const auto usual = envelope.getUsualStep();
    const bool isEven = usual && *envelope.getStep(0.9) < 2.0 * *usual && envelope.getCount() > 9;
    return isEven ? Style::Line : Style::Marks;
}

std::size_t mostPiecesOf(std::size_t curves) {
    return std::clamp(kMostPiecesOfAll / std::max<std::size_t>(curves, 1), kFewestPieces,
                      Envelope::kMostPieces);
}

} // namespace Quillmere::Host
