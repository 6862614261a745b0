// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/description/Value.h"
#include "host/graph/RateConversion.h"
#include "host/graph/RateFinder.h"

#include <optional>
#include <string>

namespace Quillmere::Host {

/// Makes the numbers that blocks take of frequencies and times, as `5 Hz` and `0.2 s`, with the rate of the
/// samples that come to a block. Requires: as `RateFinder`.
class RateValues {
public:
    RateValues(const std::vector<GraphParts::Node>& nodes, const SourceRates& sources,
               const BlockCatalogue& catalogue)
        : finder(nodes, sources, catalogue) {}

    /// Whose number it is.
    struct Target {
        const Core::Filter& block;
        std::string type; ///< Of the block, as graphs name it.
        std::string name; ///< Of the setting or of the input pin.
        bool isInput = false;

        /// What messages quote of a value for it.
        std::string describe(const Value& value) const;
    };

    /// The number; nothing, and a complaint, where there is none. Requires: `value` is a quantity.
    std::optional<RateConversion> convert(const Target& target, const Value& value, Complaints& complaints);

    RateFinder& getFinder() { return finder; }

private:
    RateFinder finder;
};

} // namespace Quillmere::Host
