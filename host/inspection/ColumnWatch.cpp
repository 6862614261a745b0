// SPDX-License-Identifier: MIT
#include "host/inspection/ColumnWatch.h"

#include <algorithm>
#include <cmath>

namespace Quillmere::Host {

namespace {

constexpr std::uint64_t kFewestClipped = 10;
constexpr std::uint64_t kOneOf = 1000; // rows
constexpr std::uint64_t kTimesTheNext = 5;

/// From the outer side in: `sign` is 1 for the largest, -1 for the smallest.
template <class Extreme>
void takeInto(Extreme& extreme, double number, double sign) {
    if (sign * number > sign * extreme.number) {
        extreme.next = extreme.number;
        extreme.nextCount = extreme.count;
        extreme.number = number;
        extreme.count = 1;
    } else if (number == extreme.number) {
        ++extreme.count;
    } else if (sign * number > sign * extreme.next) {
        extreme.next = number;
        extreme.nextCount = 1;
    } else if (number == extreme.next) {
        ++extreme.nextCount;
    }
}

} // namespace

void ColumnWatch::takeExtreme(double number) {
    takeInto(low, number, -1.0);
    takeInto(high, number, 1.0);
}

void ColumnWatch::takeKind(double number) {
    const auto seen = kinds.begin() + static_cast<std::ptrdiff_t>(kindsSeen);
    if (std::find(kinds.begin(), seen, number) != seen) return;
    kinds[kindsSeen++] = number;
    hasMany = kindsSeen == kinds.size();
}

bool ColumnWatch::getIsClipped(const Extreme& extreme) const {
    return hasMany && extreme.number != 0.0 && extreme.count >= kFewestClipped &&
           extreme.count >= finite / kOneOf && extreme.count > kTimesTheNext * extreme.nextCount;
}

void ColumnWatch::endPiece() {
    pieces.push_back(piece);
    piece = {};
    rowsOfPiece = 0;
    if (pieces.size() < 2 * kPieces) return;
    for (std::size_t i = 0; i < kPieces; ++i) {
        NumberRange both = pieces[2 * i];
        both.take(pieces[2 * i + 1]);
        pieces[i] = both;
    }
    pieces.resize(kPieces);
    rowsPerPiece *= 2;
}

std::optional<double> ColumnWatch::getSmallest() const {
    return finite > 0 ? std::optional(low.number) : std::nullopt;
}

std::optional<double> ColumnWatch::getLargest() const {
    return finite > 0 ? std::optional(high.number) : std::nullopt;
}

std::vector<NumberRange> ColumnWatch::getPicture() const {
    std::vector<NumberRange> all = pieces;
    if (keepsPicture && rowsOfPiece > 0) all.push_back(piece);
    return all;
}

namespace {

/// The pieces as at most so many, neighbours put together.
std::vector<NumberRange> fewer(const std::vector<NumberRange>& pieces, std::size_t most) {
    const std::size_t count = std::min(pieces.size(), most);
    std::vector<NumberRange> merged(count);
    for (std::size_t i = 0; i < pieces.size(); ++i)
        merged[i * count / pieces.size()].take(pieces[i]);
    return merged;
}

/// From 0 to below `heights`.
int heightOf(double number, const NumberRange& whole, int heights) {
    // Halved, since the range of the largest numbers is none.
    const double range = whole.largest / 2 - whole.smallest / 2;
    if (!(range > 0.0)) return heights / 2;
    const double part = (number / 2 - whole.smallest / 2) / range;
    return std::clamp(static_cast<int>(part * heights), 0, heights - 1);
}

/// A bit for each height that a piece goes through, the lowest first.
unsigned barOf(const NumberRange& piece, const NumberRange& whole, int heights) {
    if (piece.getIsEmpty()) return 0;
    unsigned bar = 0;
    for (int i = heightOf(piece.smallest, whole, heights); i <= heightOf(piece.largest, whole, heights); ++i)
        bar |= 1U << static_cast<unsigned>(i);
    return bar;
}

/// A character of U+2800 to U+28FF: its dots are numbered down the left side, then down the right one, but
/// for the lowest row, which came later.
std::string brailleOf(unsigned left, unsigned right) {
    constexpr std::array<unsigned, 4> kLeft{0x40, 0x04, 0x02, 0x01}; // from below
    constexpr std::array<unsigned, 4> kRight{0x80, 0x20, 0x10, 0x08};
    unsigned dots = 0;
    for (unsigned i = 0; i < kLeft.size(); ++i) {
        if ((left >> i & 1U) != 0) dots |= kLeft[i];
        if ((right >> i & 1U) != 0) dots |= kRight[i];
    }
    return {'\xE2', static_cast<char>(0xA0U | dots >> 6U), static_cast<char>(0x80U | (dots & 0x3FU))};
}

} // namespace

std::string pictureText(const std::vector<NumberRange>& pieces, std::size_t width, bool isUtf8) {
    constexpr std::string_view kBars = " _-,\"|'|"; // low and high without the middle there isn't
    constexpr int kDots = 4;
    constexpr int kLetters = 3;
    NumberRange whole;
    for (const NumberRange& piece : pieces)
        if (!piece.getIsEmpty()) whole.take(piece);
    std::string text;
    const std::vector<NumberRange> shown = fewer(pieces, isUtf8 ? 2 * width : width);
    if (!isUtf8) {
        for (const NumberRange& piece : shown)
            text += kBars[barOf(piece, whole, kLetters)];
        return text;
    }
    for (std::size_t i = 0; i < shown.size(); i += 2)
        text += brailleOf(barOf(shown[i], whole, kDots),
                          i + 1 < shown.size() ? barOf(shown[i + 1], whole, kDots) : 0);
    return text;
}

} // namespace Quillmere::Host
