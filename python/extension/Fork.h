// SPDX-License-Identifier: MIT
#pragma once

namespace Python {

/// From now on a forked child, which has the one thread that forked and no other, begins without what the
/// others of its parent were about.
void watchForks();

} // namespace Python
