// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/text/Complaint.h"
#include "host/description/GraphDescription.h"

#include <cstddef>
#include <vector>

namespace Quillmere::Host {

/// Which layouts feed which, by number.
class QUILLMERE_API LayoutLinks {
public:
    explicit LayoutLinks(std::size_t layouts = 0) : feeds(layouts, std::vector<bool>(layouts, false)) {}

    void add(std::size_t from, std::size_t to) { feeds[from][to] = true; }
    std::size_t getCount() const { return feeds.size(); }
    bool getIsFeeding(std::size_t from, std::size_t to) const { return feeds[from][to]; }
    /// Whether samples of one may come to the other, through however many between them. Where that is so both
    /// ways, they feed each other in a loop.
    bool getIsLeading(std::size_t from, std::size_t to) const;

private:
    std::vector<std::vector<bool>> feeds; ///< The one by the other.
};

/// Complains of connections that would have layouts wait for each other, and warns of those that say
/// something of no meaning. Requires: `description` is resolved.
void checkOverflows(const GraphDescription& description, Complaints& complaints);

} // namespace Quillmere::Host
