// SPDX-License-Identifier: MIT
#pragma once

#include "processor/Kernels.h"

#include <cstdlib>
#include <string_view>

namespace Support {

/// Puts the plain kernels in force where the environment says VELMARIND_KERNELS=plain. Test and benchmark
/// programs call it before any engine runs; the libraries know nothing of the variable. Returns whether it
/// says so.
inline bool pickKernels() {
    const char* const wanted = std::getenv("VELMARIND_KERNELS");
    const bool isPlain = wanted != nullptr && std::string_view(wanted) == "plain";
    if (isPlain) Processor::kernels() = Processor::Kernels::Plain;
    return isPlain;
}

} // namespace Support
