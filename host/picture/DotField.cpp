// SPDX-License-Identifier: MIT
#include "host/picture/DotField.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Quillmere::Host {

namespace {
// Unicode counts the dots of braille down the left and the right side, those of the lowest row last.
constexpr std::array<std::array<unsigned char, 2>, 4> kBrailleBits{{{1, 8}, {2, 16}, {4, 32}, {64, 128}}};
constexpr std::array kPlain{' ', '\'', '.', '|'};
} // namespace

DotField::DotField(std::size_t fieldColumns, std::size_t fieldRows, bool isUtf8)
    : columns(fieldColumns), rows(fieldRows), isBraille(isUtf8), cells(columns * rows, 0) {}

void DotField::set(const Canvas::Point& point) {
    const double x = std::clamp(std::round(point.x), 0.0, static_cast<double>(getWidth() - 1));
    const double y = std::clamp(std::round(point.y), 0.0, static_cast<double>(getHeight() - 1));
    const auto column = static_cast<std::size_t>(x);
    const auto row = static_cast<std::size_t>(y);
    if (isBraille)
        cells[row / 4 * columns + column / 2] |= kBrailleBits[row % 4][column % 2];
    else
        cells[row / 2 * columns + column] |= static_cast<unsigned char>(1u << (row % 2));
}

void DotField::join(const Canvas::Point& from, const Canvas::Point& to) {
    const double length = std::max(std::fabs(to.x - from.x), std::fabs(to.y - from.y));
    const auto steps =
        static_cast<int>(std::clamp(std::ceil(length), 1.0, static_cast<double>(getWidth() + getHeight())));
    for (int i = 0; i <= steps; ++i) {
        const double part = static_cast<double>(i) / steps;
        set({from.x + part * (to.x - from.x), from.y + part * (to.y - from.y)});
    }
}

std::string DotField::getRow(std::size_t row) const {
    std::string text;
    for (std::size_t column = 0; column < columns; ++column) {
        const unsigned char cell = cells[row * columns + column];
        if (!isBraille) {
            text += kPlain[cell];
            continue;
        }
        if (cell == 0) { // the empty pattern is wider than a space in some fonts
            text += ' ';
            continue;
        }
        text += '\xE2'; // U+2800 and the dots
        text += static_cast<char>(0xA0 + (cell >> 6));
        text += static_cast<char>(0x80 + (cell & 0x3F));
    }
    return text;
}

} // namespace Quillmere::Host
