// SPDX-License-Identifier: MIT
#include "spectral/SpectralKernels.h"

#include "processor/Kernels.h"

namespace Spectral {

const SpectralKernels& spectralKernels() {
#ifdef __x86_64__
    if (Processor::kernels() == Processor::Kernels::Avx2) return Avx2::kSpectralKernels;
#endif
    return Plain::kSpectralKernels;
}

} // namespace Spectral
