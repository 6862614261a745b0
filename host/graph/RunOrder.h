// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Filter.h"

#include <vector>

namespace Quillmere::Host {

/// The blocks with senders first: again and again the first of `blocks` all of whose senders among them are
/// placed; where a loop leaves none such, the first that is left. Requires: the blocks' links don't change
/// meanwhile.
QUILLMERE_API std::vector<Core::Filter*> runOrder(const std::vector<Core::Filter*>& blocks);

/// Whether links lead from one of `blocks` through others of them back to it. Requires: as above.
QUILLMERE_API bool hasLoop(const std::vector<Core::Filter*>& blocks);

} // namespace Quillmere::Host
