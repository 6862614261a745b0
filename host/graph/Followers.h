// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "framework/core/Filter.h"

#include <unordered_set>
#include <vector>

namespace Quillmere::Host {

/// The blocks among `blocks`, in their order, that samples come to by way of a block that makes times:
/// directly or through others of them, over whatever input.
///
/// A runner steps these as often as it takes until everything is through that such a block has sent in one
/// step, and sinks among them write a row for each time stamp. Requires: links don't change meanwhile.
QUILLMERE_API std::vector<Core::Filter*> followersOf(const std::vector<Core::Filter*>& blocks);

/// The same, for those who ask of one block or another.
using FollowerSet = std::unordered_set<const Core::PinManager*>;
QUILLMERE_API FollowerSet followersAmong(const std::vector<Core::Filter*>& blocks);
/// `first` and those that samples come to by way of it, whatever it makes. Requires: as above.
QUILLMERE_API FollowerSet reachedFrom(const Core::Filter& first, const std::vector<Core::Filter*>& blocks);

} // namespace Quillmere::Host
