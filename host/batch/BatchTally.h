// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/batch/BatchPlan.h"
#include "host/batch/RunStatus.h"

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// How far a batch has come.
struct BatchProgress {
    std::size_t all = 0;
    std::size_t done = 0; ///< Those that were done before as well.
    std::size_t kept = 0; ///< Those alone.
    std::size_t failed = 0;
    std::size_t interrupted = 0;
    std::size_t running = 0;

    /// What was begun here and has ended.
    std::size_t getRun() const { return done - kept + failed; }
};

/// What became of one recording.
struct BatchEnd {
    enum class State { Waiting, Done, Kept, WouldRun, Failed, Interrupted };

    State state = State::Waiting;
    std::string text; ///< Why it failed, or would run.
};

/// What became of the recordings of a plan, whoever runs them.
class QUILLMERE_API BatchTally {
public:
    explicit BatchTally(std::size_t recordings) : ends(recordings), began(timeText()) {
        progress.all = recordings;
    }

    /// Requires: it is the first word on that recording.
    void take(std::size_t recording, BatchEnd::State state, std::string text = {});
    void setRunning(std::size_t count) { progress.running = count; }

    const BatchProgress& getProgress() const { return progress; }
    /// One for each entry of the plan.
    const std::vector<BatchEnd>& getEnds() const { return ends; }
    /// When it was made, which is before the first recording is begun; as a status has it.
    const std::string& getBegan() const { return began; }

private:
    BatchProgress progress;
    std::vector<BatchEnd> ends;
    std::string began;
};

/// Hears how far a batch is.
using BatchProgressHandler = std::function<void(const BatchProgress&)>;

/// What a command has said, without its name and its last line's end.
QUILLMERE_API std::string saidIn(std::string printed);

/// The line of it that tells why, behind those of warnings.
QUILLMERE_API std::string failureIn(const std::string& said);

/// What is known of a recording that has failed, whose status the run itself couldn't write.
QUILLMERE_API RunStatus failedStatus(const BatchPlan::Entry& entry, const std::string& began,
                                     const std::string& failure);

/// Writes the status of a recording whose process is gone, which would have done so. Where a status is, it
/// hadn't begun: a run takes that of an earlier one away first.
QUILLMERE_API void tellCrash(const BatchPlan::Entry& entry, const std::string& began,
                             const std::string& text);

} // namespace Quillmere::Host
