// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/description/GraphDescription.h"
#include "host/graph/GraphParts.h"
#include "host/plugins/BlockCatalogue.h"

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

    using Node = GraphParts::Node;

    /// Builds what `description` describes, of blocks from `catalogue`, and complains of everything that
    /// can't be built. Requires: a graph with complaints isn't run. [setup]
    Graph(const GraphDescription& description, const BlockCatalogue& catalogue, Complaints& complaints);
    ~Graph();
    Graph(const Graph&) = delete;
    Graph& operator=(const Graph&) = delete;

    /// In file order.
    const std::vector<Node>& getNodes() const { return parts.nodes; }
    /// In the order in which they run: senders before receivers; where that says nothing, or the graph has a
    /// loop, as in the file.
    const std::vector<const Node*>& getRunOrder() const { return parts.runOrder; }
    const std::vector<Source*>& getSources() const { return parts.sources; }
    const std::vector<Sink*>& getSinks() const { return parts.sinks; }
    /// Lets every sink replace what stands under its result's name, whoever made it. [setup]
    void allowOverwriting();
    Core::LayoutManager& getLayout() { return parts.layout; }
    const std::string& getName() const { return parts.layout.getName(); }
    /// What it was built from: the description with its parameters filled in, and with numbers in place of
    /// frequencies and times from when the sources are open.
    const GraphDescription& getDescription() const { return description; }
    /// The block of that id; null for one that the description doesn't have.
    const Node* find(const std::string& id) const { return parts.find(id); }
    /// The connection in the file that gave an input its link; null for an input that has none from there.
    const GraphDescription::Connection* findConnection(const Core::AbstractInputPin& input) const;
    /// What the runner has done to the blocks when stream time comes to it.
    Timeline& getTimeline() { return parts.timeline; }
    const Timeline& getTimeline() const { return parts.timeline; }

    /// Complains of a graph that nothing drives: it has neither a source nor a block that makes samples; and
    /// warns of one that keeps nothing, since it has no sink. [setup]
    void requireDrive(Complaints& complaints) const;
    /// Opens the recordings and complains of what they lack; and writes the settings that stand in hertz or
    /// seconds, for which it takes the recordings' rates. A graph whose pipes are left isn't run. [setup]
    void openRecordings(Complaints& complaints, Pipes pipes = Pipes::Read);
    /// The same, and complains of results that have no place. No result is touched. [setup]
    void openSources(Complaints& complaints, Pipes pipes = Pipes::Read);
    /// Whether settings stand in hertz or seconds that aren't written yet.
    /// What `openRecordings` waits for ends with an `InterruptedException` when a stop is requested. [setup]
    void setStopOfOpening(const std::stop_token& stop);
    bool getAwaitsRates() const { return parts.awaitsRates; }
    /// What was made of those: of settings in file order, then of the timeline.
    const std::vector<RateConversion>& getConversions() const { return parts.conversions; }
    /// How often the outputs of sources send, as far as it was known before the run. [any]
    const SourceRates& getSourceRates() const { return parts.sourceRates; }
    const EvenOutputs& getEvenOutputs() const { return parts.evenOutputs; }
    const BlockCatalogue& getCatalogue() const { return catalogue; }
    /// From then on sources and sinks that wait for the other end of a pipe raise `InterruptedException` when
    /// a stop is requested. Requires: the sources are open. [setup]
    void setStop(const std::stop_token& stop);

    /// Takes `block` out of the graph's layout and takes down all its links, so that it can be run by itself;
    /// it stays the graph's. [setup]
    void cutLoose(Core::Filter& block);

private:
    void settle(Complaints& complaints);

    const BlockCatalogue catalogue;
    GraphDescription description; ///< Resolved.
    GraphParts parts;
};

} // namespace Quillmere::Host
