// SPDX-License-Identifier: MIT
#include "design/CascadeKernels.h"

#include "processor/Kernels.h"

namespace Design {

const CascadeKernels& cascadeKernels(std::ptrdiff_t elements) {
    return elements >= kOctetLanes ? cascadeKernelsOfRows() : Plain::kCascadeKernels;
}

const CascadeKernels& cascadeKernelsOfRows() {
#ifdef __x86_64__
    if (Processor::kernels() == Processor::Kernels::Avx2) return Avx2::kCascadeKernels;
#endif
    return Plain::kCascadeKernels;
}

} // namespace Design
