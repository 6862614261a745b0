// SPDX-License-Identifier: MIT
#pragma once

namespace Design {

/// The rows of a coefficient matrix of second-order sections; section k is column k. With s1 and s2 the
/// section's delayed values, a section is w = u + a1 s1 + a2 s2, y = (b1 s1 + w + b2 s2) g.
enum SectionRow : int { kA1 = 0, kA2 = 1, kB1 = 2, kB2 = 3, kGain = 4, kSectionRows = 5 };

} // namespace Design
