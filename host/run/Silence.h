// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/AbstractInputPin.h"

#include <string>

namespace Quillmere::Host {

/// Why nothing came to `input`: the last block on the way to it that received something and sent nothing, as
/// in `'spectrum' (FilterFFT) received 60 samples and sent none`. Requires: something is linked to the input
/// and has sent nothing to it, and no block is in a step. [any]
std::string reasonOfSilence(const Core::AbstractInputPin& input);

} // namespace Quillmere::Host
