// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "framework/transport/OutputPin.h"
#include "host/graph/Graph.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// A run that ended midway. The text says which block, at what stream time, and why.
class QUILLMERE_API RunException : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What ends the run of a graph without sources; without either of them it ends at once.
struct RunLimit {
    std::optional<std::uint64_t> rounds;
    /// Of stream time, from its begin: 0, where a generator has a time of its own, or the start of the run, where it
    /// stamps the wall clock. The round that reaches it is the last.
    std::optional<double> seconds;
};

/// How far a run has come.
struct RunProgress {
    std::uint64_t rounds = 0;    ///< Before the sources had ended, or the limit was reached.
    std::uint64_t rows = 0;      ///< Read by all sources.
    std::uint64_t bytesRead = 0; ///< Of all recordings.
    std::uint64_t bytes = 0;     ///< Of all recordings; 0 when unknown.
    double streamTime = 0.0;     ///< Seconds, of the last round.
};

/// Runs a graph over its recordings: one thread, as fast as it can, and the same bytes every time.
///
/// The source whose next sample is the earliest lets it go (of equals the first in the file), and one round follows:
/// each block's step once, in the graph's order. When all sources have ended, rounds go on until no link holds a sample
/// that moves; blocks without inputs rest then, since they would never end.
///
/// A graph without sources is driven by its generators, the blocks without inputs, until its limit: the first of them in
/// the graph's order is the clock, which steps first in each round and whose time stamp is the round's time.
///
/// What the graph's timeline has for a time is done before the first round of that time or a later one; in a graph without
/// sources behind the clock's step, which tells the time.
class QUILLMERE_API OfflineRunner {
public:
    /// Requires: the graph has no complaints, its sources and sinks are open, and it outlives the runner.
    explicit OfflineRunner(Graph& graph);

    /// For a graph without sources. Requires: `run` has not been called; rounds above 0, seconds above 0 and finite.
    void setLimit(const RunLimit& newLimit) { limit = newLimit; }

    /// Called now and then with how far the run has come.
    void setProgressHandler(std::function<void(const RunProgress&)> handler) {
        onProgress = std::move(handler);
    }

    /// Runs to the end and completes the results. When a block raises something, or `stop` becomes true, or a result
    /// can't be completed, the results stay under their partial names and `RunException` is raised. [run]
    void run(const std::atomic<bool>& stop);

    RunProgress getProgress() const;

private:
    void runRounds(const std::atomic<bool>& stop);
    void runRecordings(const std::atomic<bool>& stop);
    void runGenerators(const std::atomic<bool>& stop);
    void takeClock();
    void runClockedRound(double startOfRun);
    bool isLimitReached(double startOfRun) const;
    double beginOfTime(double startOfRun) const;
    void countRound();
    Source* earliestSource();
    void runRound();
    void drain(const std::atomic<bool>& stop);
    std::vector<std::uint32_t> queueLengths() const;
    std::uint64_t mostDrainRounds() const;
    std::string whereItStands() const;
    void endSinks(bool isWhole);

    Graph& graph;
    std::function<void(const RunProgress&)> onProgress;
    std::vector<Source*> running;     ///< Sources that have not ended.
    std::vector<Core::Filter*> steps; ///< What a round steps, in order.
    Core::Filter* clock = nullptr;    ///< Steps before them and tells the time, where there are no sources.
    const Core::OutputPin<Core::MatrixXd>* clockPin = nullptr; ///< What the clock stamps.
    RunLimit limit;
    const Core::Filter* current = nullptr; ///< The block that is being stepped or read, for messages.
    std::uint64_t rounds = 0;
    double streamTime = 0.0;
};

} // namespace Quillmere::Host
