// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "framework/core/Filter.h"
#include "host/ends/Sink.h"
#include "host/run/RunOutcome.h"

#include <exception>
#include <optional>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// How a run ended. It can be moved without memory, of which there may be none.
struct RunEnding {
    std::string failure = {};                   ///< Why it failed; empty when the results are whole.
    std::vector<Complaint> complaints = {};     ///< The same part by part, where it has parts.
    std::optional<RunOutcome::Spot> block = {}; ///< Whose step failed.
    /// Whether it failed midway; else it failed by its results or by its warnings only.
    bool isCutShort = false;
    bool isInterrupted = false;

    bool getIsWhole() const { return failure.empty(); }
};

/// What a run is cut short by: `block 'smooth' (FilterButterworth) at 12.5 s: reason`, or without the block
/// (null) between two steps.
QUILLMERE_API RunEnding endingOf(const Core::Filter* block, double streamTime,
                                 const std::exception& exception);

/// What a run is cut short by that somebody ends before its time.
QUILLMERE_API RunEnding interruptionFor(std::string reason);

/// The end of a run that takes these warnings for errors; whole when there are none.
QUILLMERE_API RunEnding endingOf(const std::vector<Warning>& warnings);

/// Starts every result. Where one can't be started, those that could are thrown away, and the ending says
/// why: nothing has run.
QUILLMERE_API RunEnding beginSinks(const std::vector<Sink*>& sinks);

/// Ends every result: whole, or kept under its partial name. A failure of one must not keep the others from
/// being ended, and makes none of those behind it look whole; the ending says why those that were to be
/// whole aren't.
QUILLMERE_API RunEnding endSinks(const std::vector<Sink*>& sinks, bool isWhole, double streamTime);

} // namespace Quillmere::Host
