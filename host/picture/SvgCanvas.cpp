// SPDX-License-Identifier: MIT
#include "host/picture/SvgCanvas.h"

#include "host/recording/ContentSeal.h"
#include "host/text/Printable.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>

namespace Quillmere::Host {

namespace {

// By this a picture is known again.
constexpr std::string_view kBegin = "<svg xmlns=\"http://www.w3.org/2000/svg\" class=\"quillmere-plot\" ";

/// To a tenth of a unit, without zeros that say nothing.
std::string number(double value) {
    const double tenths = std::round(value * 10.0);
    char text[32];
    if (tenths == std::floor(tenths / 10.0) * 10.0)
        std::snprintf(text, sizeof text, "%.0f", tenths / 10.0 + 0.0);
    else
        std::snprintf(text, sizeof text, "%.1f", tenths / 10.0);
    return text;
}

std::string colourText(Canvas::Colour colour) {
    char text[16];
    std::snprintf(text, sizeof text, "#%06x", static_cast<unsigned>(colour));
    return text;
}

/// XML has no control characters, and nothing but UTF-8.
std::string escaped(const std::string& text) {
    std::string result;
    for (const char c : printable(text.empty() ? " " : text, std::numeric_limits<std::size_t>::max())) {
        switch (c) {
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        case '&':
            result += "&amp;";
            break;
        case '"':
            result += "&quot;";
            break;
        default:
            result += c;
        }
    }
    return result;
}

} // namespace

double widthOf(const std::string& text, double size) {
    constexpr std::string_view kNarrow = "ijlt.,:;|![]()' ";
    constexpr std::string_view kWide = "mwMW%@";
    double width = 0.0;
    for (const char c : text) {
        if ((static_cast<unsigned char>(c) & 0xC0u) == 0x80u) continue; // behind the first byte of a letter
        width += kNarrow.find(c) != std::string_view::npos ? 0.36
                 : kWide.find(c) != std::string_view::npos ? 0.92
                 : c >= 'A' && c <= 'Z'                    ? 0.69
                                                           : 0.6;
    }
    return width * size;
}

SvgCanvas::SvgCanvas(double width, double height, const std::string& title, const std::string& description)
    : svg(kBegin) {
    svg += "role=\"img\" viewBox=\"0 0 " + number(width) + " " + number(height) + "\" width=\"" +
           number(width) + "\" height=\"" + number(height) +
           "\" font-family=\"DejaVu Sans, Verdana, Arial, sans-serif\">\n<!-- " + ContentSeal::getBlank() +
           " -->\n<title>" + escaped(title) + "</title>\n<desc>" + escaped(description) +
           "</desc>\n<rect width=\"100%\" height=\"100%\" fill=\"#ffffff\"/>\n";
}

void SvgCanvas::beginGroup(const std::string& kind, const std::string& label) {
    svg += "<g class=\"" + kind + "\">\n";
    if (!label.empty()) svg += "<title>" + escaped(label) + "</title>\n";
}

void SvgCanvas::endGroup() {
    svg += "</g>\n";
}

/// Piece by piece: of a sum of texts whose first is a letter long GCC 12 says that it copies out of bounds.
void SvgCanvas::add(std::initializer_list<std::string_view> pieces) {
    for (const std::string_view piece : pieces)
        svg += piece;
}

void SvgCanvas::drawLine(const std::vector<Point>& points, const Pen& pen) {
    if (points.size() < 2) return;
    svg += "<path fill=\"none\" stroke=\"" + colourText(pen.colour) + "\" stroke-width=\"" +
           number(pen.width) + "\" stroke-linejoin=\"round\" stroke-linecap=\"round\"";
    if (!pen.dashes.empty()) {
        svg += " stroke-dasharray=\"";
        for (const double dash : pen.dashes)
            add({svg.back() == '"' ? "" : " ", number(dash)});
        svg += "\"";
    }
    svg += " d=\"M";
    for (std::size_t i = 0; i < points.size(); ++i)
        add({i == 0 ? "" : i == 1 ? "L" : " ", number(points[i].x), " ", number(points[i].y)});
    svg += "\"/>\n";
}

/// Lines of no length with round ends.
void SvgCanvas::drawDots(const std::vector<Point>& points, double radius, Colour colour) {
    if (points.empty()) return;
    svg += "<path class=\"dots\" stroke=\"" + colourText(colour) + "\" stroke-width=\"" +
           number(2.0 * radius) + "\" stroke-linecap=\"round\" d=\"";
    for (const Point& point : points)
        add({"M", number(point.x), " ", number(point.y), "h0"});
    svg += "\"/>\n";
}

void SvgCanvas::fillBoxes(const std::vector<Box>& boxes, Colour colour) {
    if (boxes.empty()) return;
    // Without the blur at the edges boxes side by side have no seam.
    svg += "<path shape-rendering=\"crispEdges\" fill=\"" + colourText(colour) + "\" d=\"";
    for (const Box& box : boxes)
        add({"M", number(box.x), " ", number(box.y), "h", number(box.width), "v", number(box.height), "h",
             number(-box.width), "z"});
    svg += "\"/>\n";
}

void SvgCanvas::write(Point place, const std::string& text, const Letters& letters) {
    constexpr std::array kAnchors{"start", "middle", "end"};
    svg += "<text x=\"" + number(place.x) + "\" y=\"" + number(place.y) + "\" font-size=\"" +
           number(letters.size) + "\" fill=\"" + colourText(letters.colour) + "\" text-anchor=\"" +
           kAnchors[static_cast<std::size_t>(letters.anchor)] + "\"";
    if (letters.isBold) svg += " font-weight=\"bold\"";
    if (letters.isUpward) svg += " transform=\"rotate(-90 " + number(place.x) + " " + number(place.y) + ")\"";
    add({">", escaped(text), "</text>\n"});
}

bool SvgCanvas::getIsOwn(std::string_view head) {
    return head.starts_with(kBegin);
}

} // namespace Quillmere::Host
