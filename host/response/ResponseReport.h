// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/response/FrequencyResponse.h"

#include <string>

namespace Quillmere::Host {

/// A response as CSV with a header row: the frequency as a fraction of the Nyquist frequency, then gain (1
/// passes unchanged) and phase (degrees, -180 to 180) by sines, by the impulse and, if there is one, by the
/// design. What could not be measured is an empty cell.
QUILLMERE_API std::string responseAsCsv(const FrequencyResponse& response);

} // namespace Quillmere::Host
