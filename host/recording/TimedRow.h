// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace Quillmere::Host {

/// A row of a recording: what its pins have at one time. The elements of all pins stand one behind the other.
struct TimedRow {
    double time = 0.0; ///< Seconds.
    std::vector<double> values;
    std::vector<char> isMissing; ///< For each value, whether the graph declares it to be a missing one,
    std::vector<char> hasSample; ///< and for each pin, whether it has one. Without it its values say nothing.
    std::uint64_t row = 0;       ///< As in `SourceAccount::Spot`; of a row that was made, nothing.
    std::uint64_t line = 0;

    /// Room for `pins` pins with `count` elements in all.
    void resize(std::size_t pins, std::size_t count) {
        values.resize(count);
        isMissing.resize(count);
        hasSample.resize(pins);
    }
};

} // namespace Quillmere::Host
