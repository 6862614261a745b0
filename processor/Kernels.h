// SPDX-License-Identifier: MIT
#pragma once

/// Loops that are worth it stand in files of their own, `kernels/`, which are compiled twice: as everything
/// else is, and for processors with AVX2 (`velmarind_kernels` in cmake/Rooms.cmake). Both do the same
/// operations in the same order, so both give the same bits; only the number of elements that one instruction
/// takes differs. Such a file includes nothing that brings inline functions along: the linker keeps one copy
/// of those, and it might keep the one that old processors can't run. A check looks at that.
namespace Processor {

enum class Kernels { Plain, Avx2 };

/// The fastest kernels that were built and that this processor runs.
inline Kernels fastestKernels() {
#ifdef __x86_64__
    if (__builtin_cpu_supports("avx2")) return Kernels::Avx2;
#endif
    return Kernels::Plain;
}

/// The kernels in force, settled at the first call. Engines ask when they start anew. Tests and benchmarks
/// may change it to measure the others, as long as no engine runs meanwhile; nothing else does. [any]
inline Kernels& kernels() {
    static Kernels inForce = fastestKernels();
    return inForce;
}

} // namespace Processor
