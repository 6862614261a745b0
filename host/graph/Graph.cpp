// SPDX-License-Identifier: MIT
#include "host/graph/Graph.h"

#include "framework/core/AbstractInputPin.h"
#include "framework/core/AbstractOutputPin.h"
#include "host/graph/FirstRows.h"
#include "host/graph/GraphBuilder.h"

#include <algorithm>
#include <filesystem>

namespace Quillmere::Host {

namespace {
void checkFolder(const Sink& sink, Complaints& complaints) {
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::path(sink.getPath()).parent_path();
    if (!folder.empty() && !std::filesystem::is_directory(folder, error))
        complaints.add(sink.getPathPlace(), "the file '" + sink.getPath() + "' in a folder that isn't there",
                       "a folder that is");
    else if (std::filesystem::is_directory(sink.getPath(), error))
        complaints.add(sink.getPathPlace(), "the folder '" + sink.getPath() + "'", "the name of a file");
}
} // namespace

Graph::Graph(const GraphDescription& graphDescription, const BlockCatalogue& catalogue,
             Complaints& complaints)
    : description(graphDescription), layout(graphDescription.getName()) {
    GraphBuilder(*this, complaints).build(catalogue);
}

Graph::~Graph() = default;

const GraphDescription::Connection* Graph::findConnection(const Core::AbstractInputPin& input) const {
    const auto found = connections.find(&input);
    return found == connections.end() ? nullptr : found->second;
}

void Graph::requireDrive(Complaints& complaints) const {
    const auto isDriving = [](const Node& node) {
        return node.block == nullptr || (node.sink == nullptr && node.block->getInputPins().empty());
    };
    if (description.getIsUsable() && std::none_of(nodes.begin(), nodes.end(), isDriving))
        complaints.add({description.getPath(), 1, 1}, "a graph that nothing drives",
                       "a block that reads a recording, such as RecordingSource, or one without inputs");
}

void Graph::openSources(Complaints& complaints) {
    for (const Node& node : nodes) {
        const bool hasPath = node.block != nullptr && !node.isFaulty;
        if (hasPath && node.source != nullptr) node.source->open(complaints);
        if (hasPath && node.sink != nullptr) checkFolder(*node.sink, complaints);
    }
    warnOfFirstRows(*this, complaints);
}

void Graph::setStop(const std::atomic<bool>& stop) {
    for (Source* const source : sources)
        source->setStop(stop);
    for (Sink* const sink : sinks)
        sink->setStop(stop);
}

void Graph::openSinks() {
    try {
        for (Sink* const sink : sinks)
            sink->open();
    } catch (...) {
        for (Sink* const sink : sinks)
            sink->discard();
        throw;
    }
}

Graph::Node* Graph::find(const std::string& id) {
    const GraphDescription::Block* const block = description.findBlock(id);
    return block == nullptr ? nullptr
                            : &nodes[static_cast<std::size_t>(block - description.getBlocks().data())];
}

void Graph::cutLoose(Core::Filter& block) {
    for (Core::AbstractInputPin* const pin : block.getInputPins())
        pin->detachAll();
    for (Core::AbstractOutputPin* const pin : block.getOutputPins())
        pin->detachAll();
    layout.remove(block);
}

} // namespace Quillmere::Host
