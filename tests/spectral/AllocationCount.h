// SPDX-License-Identifier: MIT
#pragma once

namespace Support {

/// How often this program has called `operator new` so far; whoever names it links the counting operators.
long allocationCount();

} // namespace Support
