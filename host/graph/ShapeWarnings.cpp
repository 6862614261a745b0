// SPDX-License-Identifier: MIT
#include "host/graph/ShapeWarnings.h"

#include "framework/core/AbstractOutputPin.h"
#include "host/text/Counted.h"
#include "host/ends/MainInput.h"
#include "host/ends/ShapeGiver.h"
#include "host/plugins/KnownTypes.h"

#include <algorithm>
#include <string>

namespace Quillmere::Host {

namespace {
using Nodes = std::vector<Graph::Node>;

const Graph::Node* nodeOf(const Nodes& nodes, const Core::PinManager* block) {
    const auto found = std::find_if(nodes.begin(), nodes.end(), [&](const Graph::Node& node) {
        return static_cast<const Core::PinManager*>(node.block.get()) == block;
    });
    return found == nodes.end() ? nullptr : &*found;
}

/// A source that could be set up, and its output whose shape an input gets.
struct Origin {
    const Graph::Node* source = nullptr;
    const Core::AbstractOutputPin* output = nullptr;
};

Origin originOf(const Nodes& nodes, const Core::AbstractInputPin& input) {
    const Core::AbstractOutputPin* const output = shapeGiverOf(input);
    const Graph::Node* const node = output == nullptr ? nullptr : nodeOf(nodes, output->getManager());
    return node == nullptr || node->isFaulty ? Origin{} : Origin{node, output};
}

/// What a window makes of single rows and of frames of several columns, and what a transform makes of them.
std::string consequenceOf(bool isTransform, std::size_t rows, std::size_t columns) {
    if (rows > 1)
        return isTransform ? "it would take the values of all of them, row by row, for one signal"
                           : "it tapers one signal, and sends nothing for several";
    if (isTransform) return "it sends nothing for a single row";
    return columns > 1 ? "it would taper the columns of each row" : "it sends nothing for a single value";
}

void warnOfShape(const Graph& graph, const Graph::Node& node, const Core::AbstractInputPin& input,
                 Complaints& complaints) {
    const Origin origin = originOf(graph.getNodes(), input);
    const GraphDescription::Connection* const connection = graph.findConnection(input);
    if (origin.source == nullptr || origin.source->recorded == nullptr || connection == nullptr) return;
    const auto shape = origin.source->recorded->getSampleShape(*origin.output);
    if (!shape || shape->columns == 0) return;
    const auto [rows, columns] = *shape;
    if (rows > 1 && columns == 1) return;
    const std::string& source = origin.source->description->id;
    const bool isTransform = getKnownType(node.description->type).isTransform;
    const std::string found =
        (rows > 1 ? "frames of " : "samples of one row with ") + counted(columns, "column");
    const std::string frame = "'frame: N' in '" + source + "', which makes one sample of N rows";
    const std::string axes = "a pin of its own for each axis";
    const std::string expected = rows > 1       ? "one column: give '" + source + "' " + axes
                                 : columns == 1 ? frame
                                                : frame + ", and " + axes;
    const Complaint complaint{{},
                              found + " from '" + source + "." + origin.output->getName() + "' for '" +
                                  node.description->id + "' (" + node.description->type + ")",
                              expected + "; " + consequenceOf(isTransform, rows, columns)};
    complaints.warn(connection->where, complaint.getText());
}
} // namespace

void warnOfShapes(const Graph& graph, Complaints& complaints) {
    for (const Graph::Node& node : graph.getNodes()) {
        const KnownType& type = getKnownType(node.description->type);
        if (node.block == nullptr || (!type.isWindow && !type.isTransform)) continue;
        if (const Core::AbstractInputPin* const input = mainInputOf(*node.block))
            warnOfShape(graph, node, *input, complaints);
    }
}

} // namespace Quillmere::Host
