// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/ends/ResultAccount.h"
#include "host/ends/SourceAccount.h"
#include "host/graph/RateConversion.h"
#include "host/text/Complaint.h"
#include "host/text/HostException.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// A run that ended midway. The text says which block, at what stream time, and why.
class QUILLMERE_API RunException : public HostException {
public:
    using HostException::HostException;
};

/// How far a run has come.
struct RunProgress {
    std::uint64_t rounds = 0;    ///< Before the sources had ended, or the limit was reached.
    std::uint64_t rows = 0;      ///< Read by all sources.
    std::uint64_t bytesRead = 0; ///< Of all recordings.
    std::uint64_t bytes = 0;     ///< Of all recordings; 0 when unknown.
    double streamTime = 0.0;     ///< Seconds, of the last round.
};

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

        /// Where it is, whole or not; empty for a sink that writes no file.
        const std::string& getWhere() const { return isComplete || path.empty() ? path : partialPath; }
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

    /// What a block says of what came to it and made nothing, as the data are.
    struct Note {
        std::string block;
        std::string text;
    };

    /// A block to which something happened.
    struct Spot {
        std::string block;
        std::string type;
        double time = 0.0; ///< Seconds of stream time.
    };

    /// A setting that somebody turned while a live run ran, or a command that he fired.
    struct Change {
        std::optional<double> time; ///< Stream time of its block, in seconds; nothing before the first round.
        std::string target;         ///< `block.Setting`.
        std::string value;          ///< As a graph file has it; nothing of a command.
        bool isCommand = false;
    };

    std::string graph;     ///< Its name.
    std::string graphFile; ///< Empty for a graph of which there is none.
    std::string failure;   ///< Why it failed; empty when the results are whole.
    /// The failure part by part, also of warnings that count as errors; empty of a run that was interrupted.
    std::vector<Complaint> complaints;
    std::optional<Spot> failedBlock; ///< What raised the failure; nothing when it was no block.
    /// False of a run that is refused: nothing has run, and no result was touched.
    bool hasBegun = true;
    bool isInterrupted = false; ///< Somebody has ended it: nothing need be wrong.
    RunProgress progress;
    double seconds = 0.0;              ///< That the run took, of a clock on the wall.
    std::vector<Recording> recordings; ///< In file order, as the others.
    std::vector<Result> results;
    std::vector<Link> links;
    /// What first made an infinity or not-a-number out of finite input.
    std::optional<Spot> firstMaker;
    std::vector<RateConversion> conversions; ///< Numbers that were made of hertz and seconds.
    std::vector<Change> changes;             ///< In the order in which they were made.
    std::uint64_t changesLeftOut = 0;        ///< Behind these, which were too many.
    std::vector<Warning> doubts;             ///< What was doubtful before it ran.
    std::vector<Note> notes;
    std::vector<Warning> warnings; ///< What went well in form and may well not be what the user meant.

    bool getIsWhole() const { return failure.empty(); }
    /// The date, or the time of day, that times count from; empty where recordings say nothing, or not the
    /// same.
    std::string getOrigin() const {
        if (recordings.empty()) return {};
        for (const Recording& recording : recordings)
            if (recording.account.origin != recordings.front().account.origin) return {};
        return recordings.front().account.origin;
    }
};

} // namespace Quillmere::Host
