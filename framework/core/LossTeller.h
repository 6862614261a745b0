// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"

#include <string>
#include <vector>

namespace Quillmere::Core {

/// What a block may be besides: one that leaves out some of what comes to it, or can't wait for it, and says
/// so to a host that asks, since it never prints itself. A sentence begins with a count and names the input:
/// `3 of 10 samples of 'in1' were given up, since …`. Where there was nothing of a kind, nothing is told.
class QUILLMERE_API LossTeller {
public:
    virtual ~LossTeller();

    /// What is lost, or not what it would have been: a host warns of it. Requires of both: the block isn't in
    /// a step. [any, guarded]
    virtual std::vector<std::string> getLosses() const { return {}; }
    /// What made nothing since the data are so: a host tells it beside its results.
    virtual std::vector<std::string> getNotes() const { return {}; }
};

} // namespace Quillmere::Core
