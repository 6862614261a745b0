// SPDX-License-Identifier: MIT
#pragma once

#include "host/graph/Graph.h"
#include "host/live/LiveLayout.h"

#include <deque>
#include <map>
#include <optional>
#include <vector>

namespace Quillmere::Host {

/// What links between layouts do when their buffers are full, as the graph's file has it, and those who make
/// links later.
///
/// Where nobody has said anything, samples are waited for where recordings alone drive the run as fast as it
/// can: nothing else would slow the sender down to what the reader can take. Layouts that feed each other in
/// a loop never wait for each other. There layouts with recordings of their own keep in step, too, where
/// samples of both come to some block: what belongs together is in the links at one time, as at a pace.
/// Requires of every operation: all layouts stand still, or no thread runs.
class OverflowRules {
public:
    /// `standard` is for links of which nobody has said anything, whatever drives the run. The graph is not
    /// owned.
    OverflowRules(Graph& graph, bool isUnpaced, std::optional<Overflow> standard);

    /// What somebody wants of the link that an input has, or is about to have.
    void set(const Core::AbstractInputPin& input, std::optional<Overflow> overflow);
    /// Whether samples of one layout may come to another.
    bool getIsLeading(const std::vector<Core::Filter*>& blocks, const std::deque<LiveLayout>& layouts,
                      const LiveLayout& from, const LiveLayout& to) const;
    /// Tells the layouts, and the boards on which they find each other, what is waited for by now.
    void apply(const std::vector<Core::Filter*>& blocks, std::deque<LiveLayout>& layouts,
               LiveDrive& drive) const;

private:
    /// A link from one layout to another, by their numbers.
    struct Crossing {
        Core::AbstractInputPin* input;
        const Core::AbstractOutputPin* output;
        std::size_t sender;
        std::size_t reader;
    };
    std::vector<Crossing> findCrossings(const std::vector<Core::Filter*>& blocks,
                                        const std::deque<LiveLayout>& layouts) const;
    std::vector<std::vector<std::size_t>> companionsAmong(const std::deque<LiveLayout>& layouts,
                                                          const LayoutLinks& links) const;
    static LayoutLinks linksOf(const std::vector<Crossing>& crossings, std::size_t layouts);
    bool getIsWaiting(const Core::AbstractInputPin& input) const;

    Graph& graph;
    const bool isByTime; ///< Recordings alone drive the run, and nothing paces them.
    const Overflow standard;
    std::map<const Core::AbstractInputPin*, Overflow> wanted;
};

} // namespace Quillmere::Host
