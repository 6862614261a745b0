// SPDX-License-Identifier: MIT
#include "host/response/ResponseReport.h"

#include "host/text/ShortestText.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <numbers>
#include <optional>

namespace Quillmere::Host {

namespace {
using Complex = std::complex<double>;
using Getter = std::function<Complex(const ResponsePoint&)>;

double degrees(Complex response) {
    return std::arg(response) * 180.0 / std::numbers::pi;
}

std::string cells(Complex response) {
    if (!std::isfinite(std::abs(response))) return ",,";
    std::string text = ",";
    text += shortestText(std::abs(response)) + ",";
    text += shortestText(degrees(response));
    return text;
}

// ---- The picture; lengths in pixels.

constexpr double kWidth = 720.0;
constexpr double kLeft = 64.0;
constexpr double kRight = 700.0;

/// A plot of values over the relative frequency, `bottom` to `top`.
struct Panel {
    double above, below; ///< where the edges are
    double bottom, top;  ///< what they stand for
    double tick;
    const char* unit;
    double jump; ///< neighbours that differ by this much are not joined

    double x(double frequency) const { return kLeft + frequency * (kRight - kLeft); }
    double y(double value) const { return below - (value - bottom) / (top - bottom) * (below - above); }
};

std::string number(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.4g", value);
    return text;
}

std::string escaped(const std::string& text) {
    std::string result;
    for (const char c : text)
        result += c == '<' ? "&lt;" : c == '>' ? "&gt;" : c == '&' ? "&amp;" : std::string(1, c);
    return result;
}

std::string text(double x, double y, const char* anchor, const std::string& content) {
    return "<text x=\"" + number(x) + "\" y=\"" + number(y) + "\" text-anchor=\"" + anchor + "\">" +
           escaped(content) + "</text>\n";
}

std::string line(double x1, double y1, double x2, double y2) {
    return "<path class=\"grid\" d=\"M" + number(x1) + " " + number(y1) + "L" + number(x2) + " " +
           number(y2) + "\"/>\n";
}

std::string axes(const Panel& panel) {
    std::string svg;
    for (double value = panel.bottom; value <= panel.top + panel.tick / 2; value += panel.tick) {
        svg += line(kLeft, panel.y(value), kRight, panel.y(value));
        svg += text(kLeft - 6, panel.y(value) + 4, "end", number(value) + panel.unit);
    }
    for (int tenth = 0; tenth <= 10; tenth += 2) {
        svg += line(panel.x(tenth / 10.0), panel.above, panel.x(tenth / 10.0), panel.below);
        svg += text(panel.x(tenth / 10.0), panel.below + 16, "middle", number(tenth / 10.0));
    }
    return svg;
}

/// The points that the panel can show, joined; a gap where there is none, and where an angle starts over.
std::string curve(const Panel& panel, const char* style, const FrequencyResponse& response,
                  const std::function<std::optional<double>(const ResponsePoint&)>& value) {
    std::string path;
    std::optional<double> former;
    for (const ResponsePoint& point : response.points) {
        const std::optional<double> shown = value(point);
        if (shown) {
            const bool isJoined = former && std::fabs(*shown - *former) < panel.jump;
            path += isJoined ? "L" : "M";
            path += number(panel.x(point.frequency)) + " " +
                    number(panel.y(std::clamp(*shown, panel.bottom, panel.top)));
        }
        former = shown;
    }
    return "<path class=\"" + std::string(style) + "\" d=\"" + path + "\"/>\n";
}

// By these a picture is known again.
const std::string kBegin = "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 ";
const std::string kStyle = "path{fill:none;stroke-linejoin:round}.grid{stroke:#ddd}";

std::optional<double> decibels(Complex response) {
    const double size = std::abs(response);
    if (!std::isfinite(size)) return std::nullopt;
    return size > 0.0 ? 20.0 * std::log10(size) : -1000.0;
}

/// The phase of next to nothing is noise.
std::optional<double> visiblePhase(Complex response) {
    const double size = std::abs(response);
    if (!std::isfinite(size) || size < 1e-9) return std::nullopt;
    return degrees(response);
}

/// The highest gain, rounded up to a tick, within what a picture can show.
double topDecibels(const FrequencyResponse& response) {
    double top = 0.0;
    for (const ResponsePoint& point : response.points)
        for (const Complex value : {point.sine, point.design})
            top = std::max(top, decibels(value).value_or(0.0));
    return std::min(20.0 * std::ceil((top - 1e-6) / 20.0), 120.0);
}

} // namespace

std::string responseAsCsv(const FrequencyResponse& response) {
    std::string csv = "relative_frequency,sine_gain,sine_phase,impulse_gain,impulse_phase";
    csv += response.hasDesign ? ",design_gain,design_phase\n" : "\n";
    for (const ResponsePoint& point : response.points) {
        csv += shortestText(point.frequency) + cells(point.sine) + cells(point.impulse);
        csv += response.hasDesign ? cells(point.design) + "\n" : "\n";
    }
    return csv;
}

std::string responseAsSvg(const FrequencyResponse& response, const std::string& title) {
    const Panel gain{.above = 48,
                     .below = 268,
                     .bottom = -80,
                     .top = topDecibels(response),
                     .tick = 20,
                     .unit = " dB",
                     .jump = 1e9};
    const Panel phase{
        .above = 318, .below = 478, .bottom = -180, .top = 180, .tick = 90, .unit = "°", .jump = 180};
    // Letters are a little over half as wide as they are high.
    const double titleSize = std::min(15.0, (kRight - kLeft) / 0.58 / static_cast<double>(title.size() + 1));
    std::string svg = kBegin + number(kWidth) +
                      " 540\" font-family=\"sans-serif\" font-size=\"12\">\n"
                      "<style>" +
                      kStyle +
                      ".design{stroke:#d80;stroke-width:1.5;stroke-dasharray:6 "
                      "4}.impulse{stroke:#9bd;stroke-width:5}.sine{stroke:#024;stroke-width:"
                      "1.5}</style>\n<rect width=\"100%\" height=\"100%\" fill=\"#fff\"/>\n";
    svg += "<text x=\"" + number(kLeft) + "\" y=\"24\" font-size=\"" + number(titleSize) + "\">" +
           escaped(title) + "</text>\n";
    const auto add = [&](const char* style, const Getter& get) {
        svg += curve(gain, style, response, [&](const ResponsePoint& point) { return decibels(get(point)); });
        svg += curve(phase, style, response,
                     [&](const ResponsePoint& point) { return visiblePhase(get(point)); });
    };
    svg += axes(gain) + axes(phase);
    add("impulse", [](const ResponsePoint& point) { return point.impulse; });
    if (response.hasDesign) add("design", [](const ResponsePoint& point) { return point.design; });
    add("sine", [](const ResponsePoint& point) { return point.sine; });
    svg += text(kLeft, 530, "start",
                std::string("dark: measured with sines; pale: with an impulse") +
                    (response.hasDesign ? "; dashed: what the design promises" : ""));
    svg += text(kRight, 512, "end", "frequency / Nyquist frequency");
    return svg + "</svg>\n";
}

bool getIsResponseSvg(std::string_view head) {
    return head.starts_with(kBegin) && head.find(kStyle) != std::string_view::npos;
}

} // namespace Quillmere::Host
