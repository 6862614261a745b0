// SPDX-License-Identifier: MIT
#include "design/CascadeKernels.h"

#include "processor/Kernels.h"

namespace Design {

const CascadeKernels& cascadeKernels([[maybe_unused]] std::ptrdiff_t elements) {
#ifdef __x86_64__
    if (elements >= kOctetLanes && Processor::kernels() == Processor::Kernels::Avx2)
        return Avx2::kCascadeKernels;
#endif
    return Plain::kCascadeKernels;
}

} // namespace Design
