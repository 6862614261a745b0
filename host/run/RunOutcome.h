// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "framework/core/Filter.h"
#include "host/text/Complaint.h"
#include "host/graph/Graph.h"
#include "host/run/FiniteWatch.h"
#include "host/run/RunEnd.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// What a run has done, whole or failed midway: a value, which outlives the run and its graph.
struct RunOutcome {
    /// What a source has read.
    struct Recording {
        std::string id;
        std::string path; ///< `-` for standard input; empty for a source that reads no file.
        std::uint64_t rows = 0;
        std::uint64_t processedRows = 0; ///< Up to the one that was sent last.
        SourceAccount account;
        std::uint64_t nonFiniteValues = 0; ///< That it sent, beside those that are declared to be missing.
    };
    /// What a sink has written.
    struct Result {
        std::string id;
        std::string path; ///< `-` for standard output; empty, as the other, for a sink that writes no file.
        std::string partialPath; ///< Where it is as long as it isn't whole.
        std::uint64_t rows = 0;
        bool isComplete = false; ///< It has its final name.
        ResultAccount account;
        /// Of a result with rows, for each pin to which nothing came its name and why.
        std::vector<std::string> silentPins;
    };
    /// A link that samples went over; ends are `block.pin`.
    struct Link {
        std::string from; ///< Empty when the input is linked no more.
        std::string to;
        std::uint64_t received = 0;
        std::uint64_t taken = 0;
        std::uint64_t lost = 0;
        Place where; ///< Of the connection in the graph file; nowhere when somebody made it later.
    };

    /// A block to which something happened.
    struct Spot {
        std::string block;
        std::string type;
        double time = 0.0; ///< Seconds of stream time.
    };

    std::string graph;               ///< Its name.
    std::string failure;             ///< Why it failed; empty when the results are whole.
    std::optional<Spot> failedBlock; ///< What raised the failure; nothing when it was no block.
    RunProgress progress;
    double seconds = 0.0;              ///< That the run took, of a clock on the wall.
    std::vector<Recording> recordings; ///< In file order, as the others.
    std::vector<Result> results;
    std::vector<Link> links;
    /// What first made an infinity or not-a-number out of finite input.
    std::optional<Spot> firstMaker;
    std::vector<RateConversion> conversions; ///< Numbers that were made of hertz and seconds.
    std::vector<Warning> doubts;             ///< What was doubtful before it ran.
    std::vector<Warning> warnings; ///< What went well in form and may well not be what the user meant.

    bool getIsWhole() const { return failure.empty(); }
};

/// How a run ended.
struct RunEnding {
    std::string failure; ///< Why it failed; empty when the results are whole.
    /// Whether it failed midway; else it failed by its results or by its warnings only.
    bool isCutShort = false;
    std::optional<RunOutcome::Spot> block = {}; ///< Whose step failed.
};

/// What a run of `graph` has done so far, and how it ended. `blocks` are those that take part, the graph's
/// own and later ones, `nonFinite` what was found of them. Requires: none of them is in a step. [any]
QUILLMERE_API RunOutcome outcomeOf(const Graph& graph, const std::vector<Core::Filter*>& blocks,
                                   const std::vector<FirstNonFinite>& nonFinite, const RunProgress& progress,
                                   const RunEnding& ending);

/// Why a run is a failure that ended with these warnings and takes them for errors.
QUILLMERE_API std::string strictFailureText(const std::vector<Warning>& warnings);

} // namespace Quillmere::Host
