// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/ends/Sink.h"
#include "host/text/HostException.h"

#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// A run that ended midway. The text says which block, at what stream time, and why.
class QUILLMERE_API RunException : public HostException {
public:
    using HostException::HostException;
};

/// What ends the run of a graph without sources; without either of them it ends at once, and a live one when
/// it is told.
struct RunLimit {
    std::optional<std::uint64_t> rounds;
    /// Of stream time, from its begin: 0, where a generator has a time of its own, or the start of the run,
    /// where it stamps the wall clock. The round that reaches it is the last.
    std::optional<double> seconds;

    bool getIsAny() const { return rounds || seconds; }
};

/// How far a run has come.
struct RunProgress {
    std::uint64_t rounds = 0;    ///< Before the sources had ended, or the limit was reached.
    std::uint64_t rows = 0;      ///< Read by all sources.
    std::uint64_t bytesRead = 0; ///< Of all recordings.
    std::uint64_t bytes = 0;     ///< Of all recordings; 0 when unknown.
    double streamTime = 0.0;     ///< Seconds, of the last round.
};

/// `block 'smooth' (FilterButterworth) at 12.5 s: reason`, or without the block (null) between two steps.
QUILLMERE_API std::string failureText(const Core::Filter* block, double streamTime,
                                      const std::exception& exception);

/// Ends every result: whole, or kept under its partial name. A failure of one must not keep the others from
/// being ended, and makes none of those behind it look whole; then it is raised as a `RunException`.
QUILLMERE_API void endSinks(const std::vector<Sink*>& sinks, bool isWhole);

} // namespace Quillmere::Host
