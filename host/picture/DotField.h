// SPDX-License-Identifier: MIT
#pragma once

#include "host/picture/Canvas.h"

#include <cstddef>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// Dots in characters: 2 by 4 to one of braille, 1 by 2 to one of ASCII, from the upper left.
class DotField {
public:
    DotField(std::size_t columns, std::size_t rows, bool isUtf8);

    /// So many dots it is wide and high.
    std::size_t getWidth() const { return columns * (isBraille ? 2 : 1); }
    std::size_t getHeight() const { return rows * (isBraille ? 4 : 2); }

    void set(const Canvas::Point& point);
    /// Every dot between two.
    void join(const Canvas::Point& from, const Canvas::Point& to);

    std::string getRow(std::size_t row) const;

private:
    std::size_t columns;
    std::size_t rows;
    bool isBraille;
    std::vector<unsigned char> cells; ///< The dots of each character, as bits.
};

} // namespace Quillmere::Host
