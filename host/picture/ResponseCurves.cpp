// SPDX-License-Identifier: MIT
#include "host/picture/ResponseCurves.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <limits>
#include <utility>

namespace Quillmere::Host {

namespace {

using Complex = std::complex<double>;

// Decibels.
constexpr double kLowest = -80.0;
constexpr double kHighest = 120.0;
constexpr double kStep = 20.0;

/// A way of measuring, and what its curve looks like.
struct Way {
    Complex ResponsePoint::*value;
    const char* label;
    Canvas::Pen pen;
};

const std::array<Way, 3>& ways() {
    static const std::array<Way, 3> all{
        {{&ResponsePoint::impulse, "measured with an impulse", {.colour = 0x99BBDD, .width = 5.0}},
         {&ResponsePoint::sine, "measured with sines", {.colour = 0x002244, .width = 1.5}},
         {&ResponsePoint::design,
          "what the design promises",
          {.colour = 0xDD8800, .width = 1.5, .dashes = {6.0, 6.0}}}}};
    return all;
}

/// Not-a-number where nothing could be measured.
double decibels(Complex response) {
    const double size = std::abs(response);
    return std::isfinite(size) ? 20.0 * std::log10(size) : std::numeric_limits<double>::quiet_NaN();
}

/// The phase of next to nothing is noise.
double visibleDegrees(Complex response) {
    const double size = std::abs(response);
    return std::isfinite(size) && size >= 1e-9 ? getDegrees(response)
                                               : std::numeric_limits<double>::quiet_NaN();
}

/// The highest gain, rounded up to a step.
double topOf(const FrequencyResponse& response) {
    double top = 0.0;
    for (const ResponsePoint& point : response.points)
        for (const Complex value : {point.sine, point.design})
            top = std::fmax(top, decibels(value));
    return std::min(kStep * std::ceil((top - 1e-6) / kStep), kHighest);
}

/// With a gap where an angle starts over.
void takePhases(Envelope& envelope, const FrequencyResponse& response, Complex ResponsePoint::*value) {
    double former = std::numeric_limits<double>::quiet_NaN();
    for (const ResponsePoint& point : response.points) {
        const double phase = visibleDegrees(point.*value);
        if (std::fabs(phase - former) >= 180.0)
            envelope.take(point.frequency, std::numeric_limits<double>::quiet_NaN());
        envelope.take(point.frequency, phase);
        former = phase;
    }
}

Panel panelOf(const char* title, const char* unit, double low, double high, double step) {
    Panel panel;
    panel.title = title;
    panel.unit = unit;
    panel.range.emplace(low, high);
    panel.step = step;
    return panel;
}

Envelope& addCurve(CurveTable& table, Panel& panel, const Way& way) {
    Panel::Item& item = panel.curves.emplace_back();
    item.curve = table.curves.size();
    item.label = way.label;
    item.pen = way.pen;
    return table.curves.emplace_back(way.label, panel.unit, Envelope::kMostPieces).envelope;
}

} // namespace

Picture pictureOf(const FrequencyResponse& response, const std::string& title) {
    const double top = topOf(response);
    Panel gain = panelOf("gain", "dB", kLowest, top, kStep);
    Panel phase = panelOf("phase", "degrees", -180.0, 180.0, 90.0);
    CurveTable table;
    table.clock = "frequency / Nyquist frequency";
    table.rows = response.points.size();
    for (const Way& way : ways()) {
        if (way.value == &ResponsePoint::design && !response.hasDesign) continue;
        Envelope& gains = addCurve(table, gain, way);
        for (const ResponsePoint& point : response.points) {
            const double decibel = decibels(point.*way.value);
            gains.take(point.frequency, std::isnan(decibel) ? decibel : std::clamp(decibel, kLowest, top));
        }
        takePhases(addCurve(table, phase, way), response, way.value);
    }
    Picture picture;
    picture.title = title;
    picture.tables.push_back(std::move(table));
    picture.panels.push_back(std::move(gain));
    picture.panels.push_back(std::move(phase));
    return picture;
}

} // namespace Quillmere::Host
