// SPDX-License-Identifier: MIT
#include "host/response/ResponseReport.h"

#include "host/text/ShortestText.h"

#include <cmath>

namespace Quillmere::Host {

namespace {
using Complex = std::complex<double>;

std::string cells(Complex response) {
    if (!std::isfinite(std::abs(response))) return ",,";
    std::string text = ",";
    text += shortestText(std::abs(response)) + ",";
    text += shortestText(getDegrees(response));
    return text;
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

} // namespace Quillmere::Host
