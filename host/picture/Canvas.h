// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// What a picture is drawn on, in units of a pixel of an ordinary screen, from the upper left.
class Canvas {
public:
    using Colour = std::uint32_t; ///< 0xRRGGBB.

    struct Point {
        double x = 0.0;
        double y = 0.0;
    };
    struct Box {
        double x = 0.0;
        double y = 0.0;
        double width = 0.0;
        double height = 0.0;
    };
    struct Pen {
        Colour colour = 0;
        double width = 1.0;
        std::vector<double> dashes = {}; ///< Lengths of strokes and gaps in turn; none: a whole line.
    };
    struct Letters {
        enum class Anchor { Start, Middle, End };

        double size = 12.0;
        Anchor anchor = Anchor::Start;
        Colour colour = 0x222222;
        bool isBold = false;
        bool isUpward = false; ///< Turned to be read from below.
    };

    Canvas() = default;
    Canvas(const Canvas&) = delete;
    Canvas& operator=(const Canvas&) = delete;
    virtual ~Canvas() = default;

    /// What is drawn until `endGroup` belongs together. `kind` is one word, `label` for people, or empty.
    virtual void beginGroup(const std::string& kind, const std::string& label) = 0;
    virtual void endGroup() = 0;

    virtual void drawLine(const std::vector<Point>& points, const Pen& pen) = 0;
    virtual void drawDots(const std::vector<Point>& points, double radius, Colour colour) = 0;
    virtual void fillBoxes(const std::vector<Box>& boxes, Colour colour) = 0;
    /// The line that letters stand on begins, ends or has its middle there. Requires: UTF-8.
    virtual void write(Point place, const std::string& text, const Letters& letters) = 0;
};

/// How wide a text will be, about: fonts differ, and the page must not.
double widthOf(const std::string& text, double size);

} // namespace Quillmere::Host
