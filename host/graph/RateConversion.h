// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/description/Value.h"

#include <optional>
#include <string>

namespace Quillmere::Host {

/// A number that was made of a frequency or a time.
struct RateConversion {
    std::string target;            ///< `block.Setting` or `block.input`.
    std::string written;           ///< `5 Hz`.
    double number = 0.0;           ///< What the block got.
    std::string meaning;           ///< `of half the rate`, `s`.
    std::string rate;              ///< `100 samples/s, as measured in walk.csv`; empty where none was needed.
    std::optional<double> at = {}; ///< Seconds of stream time, where the timeline gives it.
    std::string source = {};       ///< `block.output` of the recording whose rate it is; else empty.

    /// `5 Hz is 0.1 of half the rate (100 samples/s, as measured in walk.csv)`, `400 ms is 0.4 s`.
    QUILLMERE_API std::string getText() const;
    /// The number as a graph file would have it in place of `quantity`.
    Value getValue(const Value& quantity) const;
};

} // namespace Quillmere::Host
