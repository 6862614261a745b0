// SPDX-License-Identifier: MIT
#pragma once

#include "framework/transport/MatrixXd.h"

#include <vector>

namespace Quillmere::Host {

/// Who looks at the rows of a result while it is written, wherever that goes: what went through a pipe can't
/// be read again.
class RowWatcher {
public:
    virtual ~RowWatcher() = default;
    /// A row that was written: of each pin its sample, null where nothing came. Called on the thread that
    /// writes.
    virtual void takeRow(double time, const std::vector<const Core::MatrixXd*>& samples) = 0;
};

} // namespace Quillmere::Host
