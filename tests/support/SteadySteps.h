// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Filter.h"
#include "framework/transport/MatrixXd.h"

#include <cstdint>
#include <string>

namespace Support {

/// The heap allocations of a hundred steps that are fed `sample`, with time stamps that rise, after two that
/// warm up. All outputs of the block are linked and read as inside a layout.
std::uint64_t allocationsOfAHundredSteps(Quillmere::Core::Filter& block, const std::string& inputPin,
                                         const Quillmere::Core::MatrixXd& sample);

} // namespace Support
