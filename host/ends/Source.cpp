// SPDX-License-Identifier: MIT
#include "host/ends/Source.h"

#include "framework/core/AbstractOutputPin.h"

#include <algorithm>

namespace Quillmere::Host {

std::uint64_t Source::getRows() const {
    std::uint64_t rows = 0;
    for (const Core::AbstractOutputPin* const output : getOutputPins())
        rows = std::max(rows, output->getSentCount());
    return rows;
}

} // namespace Quillmere::Host
