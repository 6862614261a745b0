// SPDX-License-Identifier: MIT
#pragma once

#include "framework/transport/MatrixXd.h"

/// The closed-form low-pass that the Butterworth computers share: second-order sections of a Butterworth prototype under
/// the bilinear mapping with a prewarped cut-off.
namespace Design {

/// The rows of a coefficient matrix; section k is column k. With s1 and s2 the section's delayed values, a section is
/// w = u + a1 s1 + a2 s2, y = (b1 s1 + w + b2 s2) g.
enum SectionRow : int { kA1 = 0, kA2 = 1, kB1 = 2, kB2 = 3, kGain = 4, kSectionRows = 5 };

/// Fills `coefficients` (5 rows, a column a section) with the low-pass of `order` at `cutOff`, a fraction of the Nyquist
/// frequency, and returns the number of sections: a second-order one for each pair of poles, and a first-order one at
/// the end when the order is odd. Any cut-off is taken as it is: 0 gives gains of 0, NaN gives NaN.
/// Requires: `order` at least 0. [any]
int designButterworthSections(Quillmere::Core::MatrixXd& coefficients, double cutOff, int order);

} // namespace Design
