// SPDX-License-Identifier: MIT
#pragma once

#include "host/graph/Graph.h"
#include "host/live/ControlException.h"
#include "host/live/LiveLayout.h"
#include "host/live/LiveStatistics.h"
#include "host/live/OverflowRules.h"
#include "host/run/RunOutcome.h"

#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// A link as somebody asks for it: the ends as `block.pin`.
struct LinkRequest {
    std::string from;
    std::string to;
    std::uint32_t buffer = 1;
    bool isNewestFirst = false;
    std::optional<Overflow> overflow{}; ///< What it does between layouts; nothing: as the run has it.
};

/// The blocks of a live run by name, dealt out to the layouts of the graph, and what of that may be changed while it runs.
///
/// Requires of everything that changes links or layouts: the caller is not inside a step, a handler or an observer, which
/// hold a gate already.
class LiveGraph {
public:
    /// Deals the graph's blocks out. None of the three is owned. Links that say nothing of their overflow have
    /// `standardOverflow`; without one they wait where recordings alone drive the run as fast as it can. [setup]
    LiveGraph(Graph& graph, const BlockCatalogue& catalogue, LiveDrive& drive,
              std::optional<Overflow> standardOverflow);
    /// Requires: no thread runs.
    ~LiveGraph();

    /// Reads what each recording begins with, for the time of the start, and starts a thread for each layout. [setup]
    void start();
    /// Whether, the run being over, nothing moves in any layout. [any]
    bool getIsAtRest();
    /// Wakes all layouts for a look. [any]
    void stir();
    /// Wakes all layouts for good and waits until their threads have ended. [setup]
    void stop();
    /// Ends all results, as whole ones or as what is left. Raises `RunException`. Requires: no thread runs. [any]
    void endSinks(bool isWhole);
    /// What the run has done. Requires: no thread runs. [any]
    RunOutcome getOutcome(const RunProgress& progress, const RunEnding& ending) const;
    /// Rounds of all layouts. [any]
    std::uint64_t getRounds() const;

    /// What there is by that name. Raises `ControlException`. [any]
    Core::Filter& getBlock(const std::string& id) const;
    /// By `block.Setting`, split at the first dot. Raises `ControlException`. [any]
    Core::AbstractProperty& getProperty(const std::string& name) const;
    /// In the order of the file, then in that in which they were added. [any]
    std::vector<Core::Filter*> getBlocks() const;
    /// The layout that runs a block looks at it again. [any]
    void lookAgain(const Core::Filter& block);

    /// What `LiveRun` offers. Raise `ControlException`. [any]
    void move(const std::string& block, const std::string& layout);
    void attach(const LinkRequest& request);
    void detach(const std::string& input);
    void add(const std::string& id, const std::string& type, const std::string& layout);
    LiveStatistics getStatistics();

private:
    /// The two sides of the first dot.
    struct Address {
        std::string block;
        std::string member;
    };
    static Address addressOf(const std::string& name, const char* member);
    Core::AbstractInputPin& getInput(const std::string& name) const;
    Core::AbstractOutputPin& getOutput(const std::string& name) const;
    LiveLayout& getLayout(const std::string& id);
    LiveLayout* layoutOf(const Core::Filter& block);

    class Standstill;

    void dealOut();
    void placeTimeline();
    void anchorClock();
    void arrangeAll();
    void rearrange();
    void arrange(LiveLayout& layout);
    void requireNoLoop(const LinkRequest& request, const Core::AbstractOutputPin& from,
                       const Core::AbstractInputPin& to);
    static void attachOrRefuse(const LinkRequest& request, Core::AbstractOutputPin& from,
                               Core::AbstractInputPin& to);
    std::uint64_t getMostDrainRounds() const;
    LiveStatistics::Block statisticsOf(Core::Filter& block);

    Graph& graph;
    const BlockCatalogue& catalogue;
    LiveDrive& drive;
    std::deque<RunSource> sources;
    std::deque<Core::LayoutManager> managers;
    std::deque<LiveLayout> layouts; ///< One for each manager.
    mutable std::mutex
        structure;            ///< Taken before any gate by who changes links, layouts or the set of blocks.
    mutable std::mutex names; ///< Innermost; held for a look at `blocks`.
    std::vector<Core::Filter*> blocks; ///< Under `names`; changed under `structure` too.
    OverflowRules overflows;           ///< Under `structure`.
    std::vector<BlockPtr> added;       ///< Blocks that the graph doesn't own. Under `structure`.
};

} // namespace Quillmere::Host
