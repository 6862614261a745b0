// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/picture/Canvas.h"

#include <initializer_list>
#include <string>
#include <string_view>

namespace Quillmere::Host {

/// Writes a picture as SVG: texts are texts, and the same picture gives the same bytes everywhere.
class QUILLMERE_API SvgCanvas final : public Canvas {
public:
    /// `description` is for who can't see it.
    SvgCanvas(double width, double height, const std::string& title, const std::string& description);

    void beginGroup(const std::string& kind, const std::string& label) override;
    void endGroup() override;
    void drawLine(const std::vector<Point>& points, const Pen& pen) override;
    void drawDots(const std::vector<Point>& points, double radius, Colour colour) override;
    void fillBoxes(const std::vector<Box>& boxes, Colour colour) override;
    void write(Point place, const std::string& text, const Letters& letters) override;

    /// The whole picture. Requires: every group has ended.
    std::string getText() const { return svg + "</svg>\n"; }

    /// Whether a file that begins so is one of these.
    static bool getIsOwn(std::string_view head);

private:
    void add(std::initializer_list<std::string_view> pieces);

    std::string svg;
};

} // namespace Quillmere::Host
