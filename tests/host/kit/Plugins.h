// SPDX-License-Identifier: MIT
#pragma once

namespace Support {

/// The file of this project's plug-in of everyday blocks.
const char* everydayPlugin();

} // namespace Support
