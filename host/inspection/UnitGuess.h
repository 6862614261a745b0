// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <string>

namespace Quillmere::Host {

/// The unit in which three axes of that name could have been taken, by the median of their lengths: that of
/// gravity, or of the earth's magnetic field. Empty where nothing speaks for one. A guess, for people: nobody
/// acts upon it. [any]
QUILLMERE_API std::string guessUnit(const std::string& name, double medianLength);

} // namespace Quillmere::Host
