// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/response/FrequencyResponse.h"

#include <string>
#include <string_view>

namespace Quillmere::Host {

/// A response as CSV with a header row: the frequency as a fraction of the Nyquist frequency, then gain (1
/// passes unchanged) and phase (degrees, -180 to 180) by sines, by the impulse and, if there is one, by the
/// design. What could not be measured is an empty cell.
QUILLMERE_API std::string responseAsCsv(const FrequencyResponse& response);

/// A response as an SVG picture: gain in decibels above, phase in degrees below, over the relative frequency.
QUILLMERE_API std::string responseAsSvg(const FrequencyResponse& response, const std::string& title);

/// Whether a file that begins so is such a picture.
QUILLMERE_API bool getIsResponseSvg(std::string_view head);

} // namespace Quillmere::Host
