// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

/// The inner loops of the Butterworth computers: one element a lane, so the order of operations of each
/// element stays as its formula has it, whatever the number of lanes.
namespace Design {

/// Eight neighbouring elements' values of one delayed quantity, on a cache line of their own.
inline constexpr std::ptrdiff_t kOctetLanes = 8;
struct alignas(64) Octet {
    double lanes[kOctetLanes];
};

/// What a cascade is like; small enough to travel in a register.
struct CascadeShape {
    int sections;
    bool isComplement; ///< The result is the element less the cascade's output.
};

/// Runs the cascade of `ButterworthComputer` over `count` elements once. `coefficients` are five rows
/// (`SectionRow`) with a column a section; `states` are laid out as `ButterworthComputer::states` tells. The
/// input may be the output itself.
using StepCascade = void (*)(const double* coefficients, Octet* states, CascadeShape shape, const double* in,
                             double* out, std::ptrdiff_t count);

/// The same for many samples, `rows` of them one behind the other: each element's values stay in registers
/// from one to the next. Requires: the number of sections for which it was chosen.
using StepCascadeRows = void (*)(const double* coefficients, Octet* states, CascadeShape shape,
                                 const double* in, double* out, std::ptrdiff_t count, std::ptrdiff_t rows);

/// What of a section of `ButterworthComputer_v2` is written: nothing, y1, or u - y1.
enum class Heard { Not, Result, Complement };

/// Runs a section of `ButterworthComputer_v2` over `count` elements once: y1 = a1 y1 + gain (x1 + u), x1 = u.
/// The input may be the output itself.
using StepMoving = void (*)(double a1, double gain, Octet* x1, Octet* y1, const double* in, double* out,
                            std::ptrdiff_t count);

struct CascadeKernels {
    static constexpr int kUnrolled = 5; ///< Sections of order 10.

    /// By number of sections, for which the compiler unrolls; 0 stands for any number.
    StepCascade cascades[kUnrolled + 1];
    StepCascadeRows cascadesOfRows[kUnrolled + 1]; ///< Likewise.
    StepMoving moving[3];                          ///< By `Heard`.
};

namespace Plain {
extern const CascadeKernels kCascadeKernels;
}
namespace Avx2 {
extern const CascadeKernels kCascadeKernels;
}

/// Those of the kernels in force for samples of so many elements; fewer than eight don't fill a wide
/// register. [any]
const CascadeKernels& cascadeKernels(std::ptrdiff_t elements);
/// Likewise for many samples at once, where three elements are enough: a row waits for the one before it, not
/// for room in a register. [any]
const CascadeKernels& cascadeKernelsOfRows(std::ptrdiff_t elements);

} // namespace Design
