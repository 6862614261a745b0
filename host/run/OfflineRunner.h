// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/graph/Graph.h"
#include "host/run/BurstPasses.h"
#include "host/run/FiniteWatch.h"
#include "host/run/RoundChooser.h"
#include "host/run/RunEnd.h"
#include "host/run/RunLimit.h"
#include "host/run/RunObserver.h"
#include "host/run/RunOutcome.h"
#include "host/run/WaitingSamples.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <stop_token>
#include <vector>

namespace Quillmere::Host {

/// Runs a graph over its recordings: one thread, as fast as it can, and the same bytes every time.
///
/// The source whose next sample is the earliest lets it go (of equals the first in the file), and one round
/// follows: each block's step once, in the graph's order. When all sources have ended, rounds go on until no
/// link holds a sample that moves; blocks without inputs rest then, since they would never end. At last
/// blocks with a command "Finish" are told that nothing more comes.
///
/// A graph without sources is driven by its generators, the blocks without inputs, until its limit: the first
/// of them in the graph's order is the clock, which steps first in each round and whose time stamp is the
/// round's time.
///
/// Behind a block that makes times, as one that takes frames apart, a round goes on until everything is
/// through that it has sent: the blocks behind it step as often, and sinks there write by time stamps.
///
/// Where the graph says `clock: stream`, blocks stamp the round's time that stamp the wall clock by their
/// rules.
///
/// What the graph's timeline has for a time is done before the first round of that time or a later one; in a
/// graph without sources behind the clock's step, which tells the time.
class QUILLMERE_API OfflineRunner {
public:
    /// `limit` is for a graph without sources: rounds above 0, seconds above 0 and finite. Of a strict run
    /// that ends with warnings these are a failure. `observer`, if there is one, looks on behind each round;
    /// it isn't owned, and has begun. Requires: the graph has no complaints, its sources and sinks are open,
    /// and it outlives the runner.
    explicit OfflineRunner(Graph& graph, const RunLimit& limit = {}, bool isStrict = false,
                           RunObserver* observer = nullptr);

    /// Runs to the end and completes the results. When a block raises something, or a stop is requested, or a
    /// result can't be completed, the results stay under their partial names, and the outcome says why.
    /// `progressHandler` is called now and then with how far the run has come. Requires: not called before.
    /// [run]
    RunOutcome run(const std::stop_token& stop, std::function<void(const RunProgress&)> progressHandler = {});

    RunProgress getProgress() const;

private:
    /// For messages; null between two steps.
    const Core::Filter* getBlockAtWork() const { return current != nullptr ? current : rounds.getAsked(); }
    RunEnding runToEnd(const std::stop_token& stop);
    RunOutcome gatherOutcome(const RunEnding& ending) const;
    void applyTimeline(double time);
    void runRounds(const std::stop_token& stop);
    void takeUpRounds();
    void beginClockedRound();
    static void requireGoesOn(const std::stop_token& stop);
    void requireStreamTime() const;
    void countRound();
    void runRound();
    void runPass(const std::vector<Core::Filter*>& blocks);
    void findFollowers();
    void runFollowers(const std::stop_token& stop);
    void drain(const std::stop_token& stop);
    void finishBlocks(const std::stop_token& stop);
    void letOut(WaitingSamples& waiting, bool hasPoint, const std::stop_token& stop);

    Graph& graph;
    std::function<void(const RunProgress&)> onProgress;
    std::deque<RunSource> sources;
    RoundChooser rounds;
    std::vector<Core::Filter*> steps; ///< What a round steps, in order.
    BurstPasses bursts;
    std::atomic<std::uint64_t> nonFiniteSeen{0};
    FiniteWatch finite{nonFiniteSeen};
    const RunLimit limit;
    const bool isStrict;
    RunObserver* const observer;
    const Core::Filter* current = nullptr; ///< The block that is being stepped, for messages.
    std::uint64_t roundCount = 0;
    double streamTime = 0.0;
    const double* const stamps; ///< What blocks stamp that stamp the wall clock else; null where they do.
};

} // namespace Quillmere::Host
