// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/AbstractInputPin.h"
#include "framework/core/AbstractOutputPin.h"
#include "framework/core/Api.h"

#include <span>

namespace Quillmere::Host {

/// The types of blocks that pass samples of every shape on in the shape in which they came. A test holds them
/// against living blocks.
QUILLMERE_API std::span<const char* const> getShapeKeepers();

/// The output of a source whose samples have the shape in which they come to `input`, since they come
/// straight from there or through blocks that keep it; null where there is none.
const Core::AbstractOutputPin* shapeGiverOf(const Core::AbstractInputPin& input);

} // namespace Quillmere::Host
