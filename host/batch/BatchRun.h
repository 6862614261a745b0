// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/batch/BatchPlan.h"
#include "host/batch/BatchTally.h"
#include "host/batch/WorkerPool.h"

#include <cstddef>
#include <map>
#include <stop_token>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// How a worker answers: what became of a recording, in a letter.
namespace WorkerAnswer {
inline constexpr const char* kDone = "done";
inline constexpr const char* kKept = "kept"; ///< It was done before.
inline constexpr const char* kWouldRun = "would run";
inline constexpr const char* kFailed = "failed";
inline constexpr const char* kInterrupted = "interrupted";
} // namespace WorkerAnswer

struct BatchOptions {
    std::vector<std::string> worker; ///< The program of a worker, and its words.
    std::size_t jobs = 1;
    std::vector<std::string> words{}; ///< Each recording's call gets besides.
    /// The SHA-256 of graph files, by name: a call whose graph has another one meanwhile is refused.
    std::map<std::string, std::string> graphs{};
};

/// The line of words that runs an entry: its own, and what each gets besides. [any]
QUILLMERE_API std::string callOf(const BatchPlan::Entry& entry, const BatchOptions& options);

/// Runs a plan: each recording by itself, as many at once as there are jobs. What happens to one is no matter
/// of the others.
class QUILLMERE_API BatchRun {
public:
    /// The plan must outlive it.
    BatchRun(const BatchPlan& plan, BatchOptions options);

    /// To the end, or until a stop is requested: then those that run are asked to end, and no other begins.
    /// The handler hears each end, and at least every tenth of a second. [run]
    void run(const std::stop_token& stop, const BatchProgressHandler& onProgress);

    const BatchTally& getTally() const { return tally; }
    const BatchProgress& getProgress() const { return tally.getProgress(); }
    /// One for each entry of the plan.
    const std::vector<BatchEnd>& getEnds() const { return tally.getEnds(); }

private:
    bool start(std::size_t task, WorkerPool& pool);
    bool failToStart(std::size_t task, const std::string& reason);
    void take(const WorkerPool::Ended& ended, bool isStopped);
    BatchEnd::State stateOf(const WorkerPool::Ended& ended, bool isStopped) const;

    const BatchPlan& plan;
    BatchOptions options;
    BatchTally tally;
    std::vector<std::string> begins; ///< When each was given to a worker.
};

} // namespace Quillmere::Host
