// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>

namespace Quillmere::Host {

/// What ends the run of a graph without sources; without either of them it ends at once, and a live one when
/// it is told.
struct RunLimit {
    std::optional<std::uint64_t> rounds;
    /// Of stream time, from its begin: 0, where a generator has a time of its own, or the start of the run,
    /// where it stamps the wall clock. The round that reaches it is the last.
    std::optional<double> seconds;

    bool getIsAny() const { return rounds || seconds; }
};

} // namespace Quillmere::Host
