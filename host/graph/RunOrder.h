// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Filter.h"

#include <vector>

namespace Quillmere::Host {

/// The blocks with senders first: again and again the first of `blocks` all of whose senders among them are placed; where a
/// loop leaves none such, the first that is left. Requires: the blocks' links don't change meanwhile.
std::vector<Core::Filter*> runOrder(const std::vector<Core::Filter*>& blocks);

} // namespace Quillmere::Host
