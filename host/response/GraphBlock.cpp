// SPDX-License-Identifier: MIT
#include "host/response/GraphBlock.h"

#include "host/graph/Graph.h"
#include "host/text/Complaint.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

namespace Quillmere::Host {

namespace {
/// A graph that is built for one of its blocks; that block, cut loose from the others.
struct CutGraph {
    CutGraph(const GraphDescription& description, const BlockCatalogue& catalogue, const std::string& id)
        : graph(description, catalogue, complaints) {
        complaints.raise();
        block = graph.find(id)->block.get();
        graph.cutLoose(*block);
    }

    Complaints complaints;
    Graph graph;
    Core::Filter* block = nullptr;
};

/// The description with numbers in place of frequencies and times.
GraphDescription withNumbers(const GraphDescription& description, const BlockCatalogue& catalogue) {
    Complaints complaints;
    Graph graph(description, catalogue, complaints);
    if (complaints.isEmpty() && !graph.getAwaitsRates()) return description;
    complaints.raise();
    graph.openRecordings(complaints, Graph::Pipes::Leave);
    complaints.raise();
    if (graph.getAwaitsRates())
        throw ResponseException({{description.path},
                                 "settings in hertz or seconds, and a recording that comes through a pipe",
                                 "a file in its place, or numbers without a unit"});
    GraphDescription settled = graph.getDescription();
    settled.timeline.clear(); // has been rehearsed; the block is measured as it begins
    return settled;
}
} // namespace

BlockMaker makerOfGraphBlock(const GraphDescription& description, const BlockCatalogue& catalogue,
                             const std::string& id) {
    GraphDescription settled = withNumbers(description, catalogue);
    std::vector<std::string> ids;
    for (const GraphDescription::Block& block : settled.blocks)
        ids.push_back(block.id);
    if (std::find(ids.begin(), ids.end(), id) == ids.end())
        throw ResponseException(Complaint::unknown({}, "the block '" + id + "'", id, ids));
    return [settled = std::move(settled), &catalogue, id] {
        const auto graph = std::make_shared<CutGraph>(settled, catalogue, id);
        return std::shared_ptr<Core::Filter>(graph, graph->block);
    };
}

} // namespace Quillmere::Host
