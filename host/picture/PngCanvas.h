// SPDX-License-Identifier: MIT
#pragma once

#include "host/picture/Canvas.h"

#include <memory>
#include <string>
#include <string_view>

namespace Quillmere::Host {

/// Draws a picture into pixels, two to a unit, so that it is sharp on paper and on fine screens.
class PngCanvas final : public Canvas {
public:
    /// Raises `std::bad_alloc` where there is no memory.
    PngCanvas(double width, double height);
    ~PngCanvas() override;

    void beginGroup(const std::string&, const std::string&) override {}
    void endGroup() override {}
    void drawLine(const std::vector<Point>& points, const Pen& pen) override;
    void drawDots(const std::vector<Point>& points, double radius, Colour colour) override;
    void fillBoxes(const std::vector<Box>& boxes, Colour colour) override;
    void write(Point place, const std::string& text, const Letters& letters) override;

    /// The whole picture, with a mark by which it is known again.
    std::string getBytes() const;

    /// Whether a file that begins so is one of these.
    static bool getIsOwn(std::string_view head);

private:
    class Surface;
    std::unique_ptr<Surface> surface;
};

} // namespace Quillmere::Host
