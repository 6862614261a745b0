// SPDX-License-Identifier: MIT
#pragma once

#include "design/SectionRow.h"
#include "framework/transport/MatrixXd.h"

/// The closed-form low-pass that the Butterworth computers share: second-order sections of a Butterworth
/// prototype under the bilinear mapping with a prewarped cut-off.
namespace Design {

/// Fills `coefficients` (5 rows, a column a section) with the low-pass of `order` at `cutOff`, a fraction of
/// the Nyquist frequency, and returns the number of sections: a second-order one for each pair of poles, and
/// a first-order one at the end when the order is odd. Any cut-off is taken as it is: 0 gives gains of 0, NaN
/// gives NaN. Requires: `order` at least 0. [any]
int designButterworthSections(Quillmere::Core::MatrixXd& coefficients, double cutOff, int order);

} // namespace Design
