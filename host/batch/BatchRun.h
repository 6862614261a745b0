// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/batch/BatchPlan.h"
#include "host/batch/WorkerPool.h"

#include <cstddef>
#include <functional>
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

/// Runs a plan: each recording by itself, as many at once as there are jobs. What happens to one is no matter
/// of the others.
class QUILLMERE_API BatchRun {
public:
    using ProgressHandler = std::function<void(const BatchProgress&)>;

    /// The plan must outlive it.
    BatchRun(const BatchPlan& plan, BatchOptions options);

    /// To the end, or until a stop is requested: then those that run are asked to end, and no other begins.
    /// The handler hears each end, and at least every tenth of a second. [run]
    void run(const std::stop_token& stop, const ProgressHandler& onProgress);

    const BatchProgress& getProgress() const { return progress; }
    /// One for each entry of the plan.
    const std::vector<BatchEnd>& getEnds() const { return ends; }

private:
    std::string lineOf(std::size_t task) const;
    bool start(std::size_t task, WorkerPool& pool);
    bool failToStart(std::size_t task, const std::string& reason);
    void take(const WorkerPool::Ended& ended, bool isStopped);
    BatchEnd::State stateOf(const WorkerPool::Ended& ended, bool isStopped) const;
    void tellCrash(const WorkerPool::Ended& ended, const std::string& text) const;

    const BatchPlan& plan;
    BatchOptions options;
    BatchProgress progress;
    std::vector<BatchEnd> ends;
    std::vector<std::string> begins; ///< When each was given to a worker.
};

} // namespace Quillmere::Host
