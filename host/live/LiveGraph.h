// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/ends/Onlooker.h"
#include "host/graph/Finishers.h"
#include "host/graph/Graph.h"
#include "host/live/LiveBlocks.h"
#include "host/live/LiveLayout.h"
#include "host/live/LiveStatistics.h"
#include "host/live/OverflowRules.h"
#include "host/run/RunEnd.h"
#include "host/run/RunOutcome.h"

#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// The blocks of a live run by name, dealt out to the layouts of the graph, and what of that may be changed
/// while it runs.
///
/// Requires of everything that changes links or layouts: the caller is not inside a step, a handler or an
/// observer, which hold a gate already.
class QUILLMERE_API LiveGraph {
public:
    /// All layouts stand still as long as it lives, and nobody else changes anything. A change and what the
    /// layouts know of it are one: a layout that was told later would step, in its own thread, what another
    /// one holds by now.
    class QUILLMERE_API Standstill {
    public:
        explicit Standstill(LiveGraph& graph);

    private:
        const std::lock_guard<std::mutex> structure;
        const std::lock_guard<std::mutex> timeline;
        std::deque<Core::Synchronizer::DisablerLocker> guards;
    };

    /// Deals the graph's blocks out. Neither is owned. Links that say nothing of their overflow have
    /// `standardOverflow`; without one they wait where recordings alone drive the run as fast as it can.
    /// [setup]
    LiveGraph(Graph& graph, LiveDrive& drive, std::optional<Overflow> standardOverflow);
    /// Requires: no thread runs.
    ~LiveGraph();

    /// Who looks on from now on, each in the layout of the output that it is linked to; none is owned.
    /// Requires: no thread runs. [setup]
    void setOnlookers(std::vector<Onlooker*> looking);
    void forgetOnlookers() noexcept;

    /// Reads what each recording begins with, for the time of the start, and starts a thread for each layout;
    /// cuts the run where that fails. [setup]
    void start();
    /// Whether, the run being over, nothing moves in any layout. [any]
    bool getIsAtRest();
    /// Wakes all layouts for a look. [any]
    void stir();
    /// Wakes all layouts for good and waits until their threads have ended. [setup]
    /// A run that is over and at rest: the blocks that hold something back as long as more may come, and the
    /// command to send it, for one of them after the other. [any]
    const std::vector<Finisher>& findFinishers();
    void finish(const Finisher& finisher);
    void stop();
    /// Ends all results, as whole ones or as what is left; the ending says why they aren't whole that were to
    /// be. Requires: no thread runs. [any]
    RunEnding endSinks(bool isWhole);
    /// What the run has done. Requires: no thread runs. [any]
    RunOutcome getOutcome(RunProgress progress, const RunEnding& ending) const;
    /// The stream time that a block has come to, in seconds: that of its layout's last round, or, where
    /// rounds are begun elsewhere, of the layout that has come furthest. Nothing before the first. [any]
    std::optional<double> getTimeOf(const Core::Filter& block);
    /// Rounds of all layouts. [any]
    std::uint64_t getRounds() const;

    /// [any]
    const LiveBlocks& getBlocks() const { return blocks; }
    /// The number that a frequency or a time is for a setting, by the rate that comes to its block just now.
    /// Complains where there is none. Waits for who changes links, who waits for the layouts' steps: must not
    /// be called from within a step or a handler. [any]
    std::optional<Value> withRate(const LiveBlocks::Setting& setting, const Value& value,
                                  Complaints& complaints);
    /// The layout that runs a block looks at it again. [any]
    void lookAgain(const Core::Filter& block);
    /// [any]
    LiveStatistics getStatistics();

    /// What changes are made of. Requires: all layouts stand still. [any, guarded]
    /// Raises `ControlException` when there is none of that name.
    LiveLayout& getLayout(const std::string& id);
    /// Null for a block that none holds.
    LiveLayout* layoutOf(const Core::Filter& block);
    /// What somebody wants of the link that an input has, or is about to have.
    void setOverflow(const Core::AbstractInputPin& input, std::optional<Overflow> overflow) {
        overflows.set(input, overflow);
    }
    /// Whether samples of one layout may come to another.
    bool getIsLeading(const LiveLayout& from, const LiveLayout& to) const {
        return overflows.getIsLeading(blocks.getAll(), layouts, from, to);
    }
    /// Takes the block over and gives it to the layout.
    void add(BlockPtr block, LiveLayout& to);
    /// Tells the layouts what has changed.
    void rearrange();

private:
    void dealOut();
    void placeTimeline();
    void placeOnlookers();
    std::vector<Core::Filter*> getStepped() const;
    bool anchorClock();
    double getStreamTime() const;
    void arrangeAll();
    void arrange(LiveLayout& layout, const FollowerSet& followers);
    std::uint64_t getMostDrainRounds() const;

    Graph& graph;
    LiveDrive& drive;
    std::deque<RunSource> sources;
    std::deque<Core::LayoutManager> managers;
    std::deque<LiveLayout> layouts; ///< One for each manager.
    LiveBlocks blocks;              ///< Changed under `structure`.
    /// Taken before any gate by who changes links, layouts or the set of blocks.
    mutable std::mutex structure;
    OverflowRules overflows;          ///< Under `structure`.
    std::vector<BlockPtr> added;      ///< Blocks that the graph doesn't own. Under `structure`.
    std::vector<Onlooker*> onlookers; ///< Under `structure`.
    std::vector<Finisher> finishers;
};

} // namespace Quillmere::Host
