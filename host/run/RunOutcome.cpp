// SPDX-License-Identifier: MIT
#include "host/run/RunOutcome.h"

#include "framework/Quillmere.h"

#include <algorithm>

namespace Quillmere::Host {

namespace {
using Connection = GraphDescription::Connection;

/// Where the graph file connects an input; nowhere when it doesn't.
Place placeOf(const GraphDescription& description, const std::string& block,
              const Core::AbstractInputPin& pin) {
    const auto& connections = description.getConnections();
    const auto found =
        std::find_if(connections.begin(), connections.end(), [&](const Connection& connection) {
            return connection.to.block == block &&
                   (!connection.to.hasPin || connection.to.pin == pin.getName());
        });
    return found == connections.end() ? Place{} : found->where;
}

/// The links to a block's inputs. Values of a timeline aren't among them: they come from no block of the graph.
void addLinks(const Graph& graph, const Core::Filter& block, const std::vector<Core::Filter*>& blocks,
              std::vector<RunOutcome::Link>& links) {
    for (Core::AbstractInputPin* const pin : block.getInputPins()) {
        const Core::AbstractOutputPin* const sender = pin->getConnectedOutput();
        const bool isOfBlock =
            sender != nullptr && std::any_of(blocks.begin(), blocks.end(), [&](const Core::Filter* known) {
                return known == sender->getManager();
            });
        const Core::LinkCounts counts = pin->getCounts();
        if (sender == nullptr ? counts.received == 0 : !isOfBlock) continue;
        links.push_back(
            {.from = sender == nullptr ? "" : sender->getManager()->getName() + "." + sender->getName(),
             .to = block.getName() + "." + pin->getName(),
             .received = counts.received,
             .taken = counts.taken,
             .lost = counts.getLost(),
             .where = placeOf(graph.getDescription(), block.getName(), *pin)});
    }
}

void warnOfLosses(RunOutcome& outcome) {
    for (const RunOutcome::Link& link : outcome.links)
        if (link.lost > 0)
            outcome.warnings.push_back(
                {link.where, std::to_string(link.lost) + " of the " + std::to_string(link.received) +
                                 " samples that " + (link.from.empty() ? "others" : "'" + link.from + "'") +
                                 " sent to '" + link.to + "' were lost, since it took them too late"});
}
} // namespace

RunOutcome outcomeOf(const Graph& graph, const std::vector<Core::Filter*>& blocks,
                     const RunProgress& progress) {
    RunOutcome outcome;
    outcome.graph = graph.getName();
    outcome.progress = progress;
    for (const Source* const source : graph.getSources())
        outcome.recordings.push_back({source->getName(), source->getPath(), source->getRows()});
    for (const Sink* const sink : graph.getSinks())
        outcome.results.push_back(
            {sink->getName(), sink->getPath(), sink->getPartialPath(), sink->getRows()});
    for (const Core::Filter* const block : blocks)
        addLinks(graph, *block, blocks, outcome.links);
    warnOfLosses(outcome);
    return outcome;
}

std::string strictFailureText(const std::vector<Warning>& warnings) {
    return "ended with " +
           (warnings.size() == 1 ? "a warning" : std::to_string(warnings.size()) + " warnings") +
           ", taken for " + (warnings.size() == 1 ? "an error" : "errors");
}

} // namespace Quillmere::Host
