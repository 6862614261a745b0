// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/text/Complaint.h"

#include <cstddef>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// The one of `known` that somebody who wrote `name` may have meant, or an empty text when none is near: the
/// fewest letters left out, added, changed or swapped, at most a third of the longer name; else the only one
/// that begins with it, or the only one that ends with it. Case, blanks, `_` and `-` count little. Of two
/// equally near the first is taken.
QUILLMERE_API std::string nearestName(const std::string& name, const std::vector<std::string>& known);

/// So many names are listed at most.
inline constexpr std::size_t kMostNames = 12;

/// `a, b and c`, for messages that list what there is; `nothing` for an empty list, and no more than `most`
/// names.
QUILLMERE_API std::string listOfNames(const std::vector<std::string>& names, std::size_t most = kMostNames);

/// Complains of a name that isn't among those that there are: `expected` and their list, or `otherwise` when
/// there is none, and the nearest of them. `known` gives them, and is called only when somebody will read it:
/// there may be a hundred thousand such names, and as many that are known.
template <class Names>
void refuseName(Complaints& complaints, const Place& where, const std::string& name, const std::string& found,
                const std::string& expected, const Names& known, const std::string& otherwise = {}) {
    if (complaints.getIsFull()) return complaints.add(where, {}, {});
    complaints.add(Complaint::unknown(where, found, name, known(), expected, otherwise));
}

} // namespace Quillmere::Host
