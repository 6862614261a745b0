// SPDX-License-Identifier: MIT
#include "design/CascadeKernels.h"

#include "processor/Kernels.h"

namespace Design {

namespace {
constexpr std::ptrdiff_t kWorthWideRows = 3;

const CascadeKernels& kernelsInForce() {
#ifdef __x86_64__
    if (Processor::kernels() == Processor::Kernels::Avx2) return Avx2::kCascadeKernels;
#endif
    return Plain::kCascadeKernels;
}
} // namespace

const CascadeKernels& cascadeKernels(std::ptrdiff_t elements) {
    return elements >= kOctetLanes ? kernelsInForce() : Plain::kCascadeKernels;
}

const CascadeKernels& cascadeKernelsOfRows(std::ptrdiff_t elements) {
    return elements >= kWorthWideRows ? kernelsInForce() : Plain::kCascadeKernels;
}

} // namespace Design
