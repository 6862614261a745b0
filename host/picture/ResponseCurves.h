// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/picture/Picture.h"
#include "host/response/FrequencyResponse.h"

#include <string>

namespace Quillmere::Host {

/// A response as a picture: gain in decibels above, phase in degrees below, over the relative frequency. The
/// curves lie on each other where a block does what it promises, so the lowest is the widest and the upmost
/// has gaps. [any]
QUILLMERE_API Picture pictureOf(const FrequencyResponse& response, const std::string& title);

} // namespace Quillmere::Host
