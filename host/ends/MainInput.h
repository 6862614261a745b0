// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/AbstractInputPin.h"
#include "framework/core/PinManager.h"

#include <algorithm>

namespace Quillmere::Host {

/// The input that clocks a block: the first that its step waits on; null for a block without inputs.
inline Core::AbstractInputPin* mainInputOf(const Core::PinManager& block) {
    const auto& pins = block.getInputPins();
    const auto found =
        std::find_if(pins.begin(), pins.end(), [](const auto* pin) { return pin->getIsBlocking(); });
    return found == pins.end() ? nullptr : *found;
}

} // namespace Quillmere::Host
