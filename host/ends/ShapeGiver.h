// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/AbstractInputPin.h"
#include "framework/core/AbstractOutputPin.h"

namespace Quillmere::Host {

/// The output of a source whose samples have the shape in which they come to `input`, since they come
/// straight from there or through blocks that keep it; null where there is none.
const Core::AbstractOutputPin* shapeGiverOf(const Core::AbstractInputPin& input);

} // namespace Quillmere::Host
