// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "framework/core/LayoutManager.h"
#include "host/description/GraphDescription.h"
#include "host/description/IdIndex.h"
#include "host/ends/RecordedSource.h"
#include "host/ends/ResultEnd.h"
#include "host/ends/Sink.h"
#include "host/ends/Source.h"
#include "host/ends/WakingSource.h"
#include "host/graph/Timeline.h"
#include "host/plugins/BlockCatalogue.h"

#include <map>
#include <stop_token>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// A graph that is built: living blocks, set and connected, in one layout and in the order in which they run.
/// A live run deals them out to the layouts of the file.
///
/// Building is also the check: types, pins, settings and their limits are what living blocks say they are.
/// Nothing has run and no recording or result has been touched when building ends.
class QUILLMERE_API Graph {
public:
    /// Whether what comes to a source through a pipe may be read: what a look takes is gone for the run, and
    /// it waits for who writes.
    enum class Pipes { Read, Leave };

    struct Node {
        const GraphDescription::Block* description;
        BlockPtr block;        ///< Null for an unknown type.
        bool isFaulty = false; ///< Its settings raised complaints, so more of it would only repeat them.

        // What the block is besides a block, found once; null for what it isn't.
        HostBlock* hostBlock = nullptr;
        Source* source = nullptr;
        Sink* sink = nullptr;
        FileEnd* file = nullptr;
        RecordedSource* recorded = nullptr;
        WakingSource* waking = nullptr;
        ResultEnd* result = nullptr;

        /// What messages call an end, and where they place what is wrong with it: its file, or the block
        /// where it has none.
        std::string getEndName() const;
        const Place& getEndPlace() const;
    };

    /// Builds what `description` describes, of blocks from `catalogue`, and complains of everything that
    /// can't be built. Requires: a graph with complaints isn't run. [setup]
    Graph(const GraphDescription& description, const BlockCatalogue& catalogue, Complaints& complaints);
    ~Graph();
    Graph(const Graph&) = delete;
    Graph& operator=(const Graph&) = delete;

    /// In file order.
    const std::vector<Node>& getNodes() const { return nodes; }
    /// In the order in which they run: senders before receivers; where that says nothing, or the graph has a
    /// loop, as in the file.
    const std::vector<const Node*>& getRunOrder() const { return runOrder; }
    const std::vector<Source*>& getSources() const { return sources; }
    const std::vector<Sink*>& getSinks() const { return sinks; }
    /// Lets every sink replace what stands under its result's name, whoever made it. [setup]
    void allowOverwriting();
    Core::LayoutManager& getLayout() { return layout; }
    const std::string& getName() const { return layout.getName(); }
    /// What it was built from: the description with its parameters filled in.
    const GraphDescription& getDescription() const { return description; }
    /// The block of that id; null for one that the description doesn't have.
    const Node* find(const std::string& id) const;
    /// The connection in the file that gave an input its link; null for an input that has none from there.
    const GraphDescription::Connection* findConnection(const Core::AbstractInputPin& input) const;
    /// What the runner has done to the blocks when stream time comes to it.
    Timeline& getTimeline() { return timeline; }
    const Timeline& getTimeline() const { return timeline; }

    /// Complains of a graph that nothing drives: it has neither a source nor a block that makes samples; and
    /// warns of one that keeps nothing, since it has no sink. [setup]
    void requireDrive(Complaints& complaints) const;
    /// Opens the recordings and complains of what they lack, and of results that have no place. No result is
    /// touched. A graph whose pipes are left isn't run. [setup]
    void openSources(Complaints& complaints, Pipes pipes = Pipes::Read);
    /// From then on sources and sinks that wait for the other end of a pipe raise `InterruptedException` when
    /// a stop is requested. Requires: the sources are open. [setup]
    void setStop(const std::stop_token& stop);
    /// Starts the results. When one can't be started, those that could are thrown away, and
    /// `RecordingException` is raised. [setup]
    void openSinks();

    /// Takes `block` out of the graph's layout and takes down all its links, so that it can be run by itself;
    /// it stays the graph's. [setup]
    void cutLoose(Core::Filter& block);

private:
    friend class GraphBuilder;
    friend class TimelineBuilder;

    Node* find(const std::string& id);

    const GraphDescription description; ///< Resolved.
    const IdIndex index;                ///< Of its blocks.
    Core::LayoutManager layout;
    std::vector<Node> nodes; ///< As the description has them.
    std::vector<const Node*> runOrder;
    std::vector<Source*> sources;
    std::vector<Sink*> sinks;
    std::map<const Core::AbstractInputPin*, const GraphDescription::Connection*> connections;
    Timeline timeline; ///< Goes before the blocks that it is linked with.
};

} // namespace Quillmere::Host
