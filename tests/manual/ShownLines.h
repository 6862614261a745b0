// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace Support {

/// Whether a text is what a page shows of it. A line `...` of what is shown stands for any lines, also none.
/// Cells of a line are equal as texts or as numbers, these but for what C libraries may differ by.
bool isShown(const std::string& shown, const std::string& text);

} // namespace Support
