// SPDX-License-Identifier: MIT
#include "host/run/RunReview.h"

#include "framework/Quillmere.h"
#include "host/run/LossReview.h"
#include "host/run/RateReview.h"
#include "host/text/Counted.h"
#include "host/graph/BlockDescription.h"
#include "host/text/ShortestText.h"
#include "host/run/Silence.h"
#include "host/run/SourceWarnings.h"

#include <unordered_map>
#include <unordered_set>

namespace Quillmere::Host {

namespace {
/// The blocks that take part, and where the graph file connects what; there may be a hundred thousand
/// connections.
class Links {
public:
    Links(const GraphDescription& description, const std::vector<Core::Filter*>& list)
        : blocks(list.begin(), list.end()) {
        for (const GraphDescription::Connection& connection : description.connections)
            places.try_emplace(connection.to.getText(), connection.where);
    }

    bool holds(const Core::PinManager* block) const { return blocks.contains(block); }
    /// Where an input is connected, whose pin may have been left out; nowhere when it isn't.
    Place placeOf(const std::string& block, const std::string& pin) const {
        auto found = places.find(block + "." + pin);
        if (found == places.end()) found = places.find(block);
        return found == places.end() ? Place{} : found->second;
    }

private:
    std::unordered_set<const Core::PinManager*> blocks;
    std::unordered_map<std::string, Place> places;
};

/// The links to a block's inputs. Values of a timeline aren't among them: they come from no block of the
/// graph.
void addLinks(const Core::Filter& block, const Links& known, std::vector<RunOutcome::Link>& links) {
    for (Core::AbstractInputPin* const pin : block.getInputPins()) {
        const Core::AbstractOutputPin* const sender = pin->getConnectedOutput();
        const bool isOfBlock = sender != nullptr && known.holds(sender->getManager());
        const Core::LinkCounts counts = pin->getCounts();
        if (sender == nullptr ? counts.received == 0 : !isOfBlock) continue;
        links.push_back(
            {.from = sender == nullptr ? "" : sender->getManager()->getName() + "." + sender->getName(),
             .to = block.getName() + "." + pin->getName(),
             .received = counts.received,
             .taken = counts.taken,
             .lost = counts.getLost(),
             .where = known.placeOf(block.getName(), pin->getName())});
    }
}

void addRecording(const Graph::Node& node, RunOutcome& outcome) {
    RunOutcome::Recording recording;
    recording.id = node.source->getName();
    if (node.file != nullptr) recording.path = node.file->getPath();
    recording.processedRows = node.source->getRows();
    recording.rows = recording.processedRows;
    if (node.recorded != nullptr) {
        recording.account = node.recorded->getAccount();
        recording.rows = recording.account.rows;
    }
    std::vector<Warning> warnings = warningsOf(recording.path, recording.account);
    for (Warning& warning : warnings)
        if (node.file == nullptr)
            warning = {node.description->where, "'" + recording.id + "': " + warning.text};
    outcome.warnings.insert(outcome.warnings.end(), warnings.begin(), warnings.end());
    outcome.recordings.push_back(std::move(recording));
}

/// Whether something is linked to an input and has never sent anything to it.
bool getIsSilent(Core::AbstractInputPin& input) {
    return input.getConnectedOutput() != nullptr && input.getCounts().received == 0;
}

/// A pin that nothing came to is usual: there may have been no event. A sink to which nothing came at all
/// hardly is.
void addResult(const Graph::Node& node, bool isCutShort, RunOutcome& outcome) {
    const Sink& sink = *node.sink;
    RunOutcome::Result result;
    result.id = sink.getName();
    if (node.file != nullptr) result.path = node.file->getPath();
    if (node.result != nullptr) result.partialPath = node.result->getPartialPath();
    result.rows = sink.getRows();
    result.isComplete = sink.getIsComplete();
    result.account = sink.getAccount();
    for (Core::AbstractInputPin* const pin : sink.getInputPins())
        if (!isCutShort && getIsSilent(*pin)) // what failed midway hasn't come to everything
            result.silentPins.push_back(pin->getName() + ": " + reasonOfSilence(*pin));
    const bool isSilent =
        !result.silentPins.empty() && result.silentPins.size() == sink.getInputPins().size();
    if (isSilent) {
        outcome.warnings.push_back(
            {node.description->where,
             "'" + result.id + "' received nothing: " + reasonOfSilence(*sink.getInputPins().front())});
        result.silentPins.clear();
    }
    outcome.results.push_back(std::move(result));
}

std::string valuesText(std::uint64_t count) {
    return counted(count, "value that isn't finite", "values that aren't finite");
}

std::string timeText(double time) {
    return " (" + shortestText(time) + " s)";
}

/// How many values that the graph declares to be missing were sent by the sources whose samples an input
/// depends on.
std::uint64_t countMissing(const Core::AbstractInputPin& input,
                           const std::vector<FirstNonFinite>& nonFinite) {
    std::uint64_t count = 0;
    std::unordered_set<const Core::AbstractOutputPin*> seen;
    std::vector<const Core::AbstractInputPin*> open{&input};
    while (!open.empty()) {
        const Core::AbstractOutputPin* const output = open.back()->getConnectedOutput();
        open.pop_back();
        if (output == nullptr || !seen.insert(output).second) continue;
        for (const FirstNonFinite& first : nonFinite)
            if (first.output == output) count += first.missing;
        if (const auto* const block = dynamic_cast<const Core::Filter*>(output->getManager()))
            open.insert(open.end(), block->getInputPins().begin(), block->getInputPins().end());
    }
    return count;
}

/// Whether a result holds more of what isn't finite than was declared to be missing, so that a block has made
/// or kept some.
bool getIsSurprising(const Graph::Node& node, const std::vector<FirstNonFinite>& nonFinite) {
    const ResultAccount account = node.sink->getAccount();
    std::size_t pin = 0;
    for (const Core::AbstractInputPin* const input : node.sink->getInputPins()) {
        const std::size_t place = pin++;
        const bool hasAny = place < account.nonFiniteOfPin.size() && account.nonFiniteOfPin[place] > 0;
        if (hasAny && account.nonFiniteOfPin[place] > countMissing(*input, nonFinite)) return true;
    }
    return false;
}

/// Whether rows of it were left out or made, so that they are counted otherwise than in the file.
bool getIsRepaired(const SourceAccount::TimeRepairs& repairs) {
    return repairs.resampledRate || repairs.rowsFilled + repairs.earlyRows + repairs.duplicates.count +
                                            repairs.backward.count + repairs.behindEnd.count >
                                        0;
}

void warnOfReadValues(const FirstNonFinite& first, const Graph::Node& source, RunOutcome& outcome) {
    const std::string& id = source.description->id;
    bool isRepaired = false;
    for (RunOutcome::Recording& recording : outcome.recordings) {
        if (recording.id != id) continue;
        recording.nonFiniteValues = first.values;
        isRepaired = getIsRepaired(recording.account.repairs);
    }
    outcome.warnings.push_back(
        {source.getEndPlace(), "'" + id + (isRepaired ? "' sent " : "' read ") + valuesText(first.values) +
                                   ", the first in row " + std::to_string(first.row) +
                                   (isRepaired ? " of its repaired rows" : "") + timeText(first.otherTime) +
                                   ", column '" + first.column + "'"});
}

/// What sources read and the timeline sent, who made the first of it out of finite input, and how much the
/// results hold.
void warnOfNonFinite(const Graph& graph, const std::vector<FirstNonFinite>& nonFinite, RunOutcome& outcome) {
    const Core::Filter* const sender = graph.getTimeline().getSender();
    const auto placeOfBlock = [&](const std::string& id) {
        const auto* const description = graph.getDescription().findBlock(id);
        return description == nullptr ? Place{} : description->where;
    };
    for (const Graph::Node& node : graph.getNodes()) {
        if (node.source == nullptr) continue;
        if (const auto first = sumOf(*node.source, nonFinite); first && first->values > 0)
            warnOfReadValues(*first, node, outcome);
    }
    if (const auto first = sender == nullptr ? std::nullopt : sumOf(*sender, nonFinite)) {
        Warning warning;
        warning.where.file = graph.getDescription().path;
        warning.text =
            "the timeline sent values that aren't finite, the first at " + shortestText(first->time) + " s";
        outcome.warnings.push_back(std::move(warning));
    }
    if (const FirstNonFinite* const maker = makerOf(nonFinite, sender)) {
        const std::string name = maker->block->getName();
        outcome.firstMaker = RunOutcome::Spot{name, maker->block->getTypeName(), maker->time};
        outcome.warnings.push_back(
            {placeOfBlock(name), "'" + name + "' (" + maker->block->getTypeName() +
                                     ") made values that aren't finite, the first at " +
                                     shortestText(maker->time) +
                                     " s, and none was seen to come to it before"});
    }
    for (const Graph::Node& node : graph.getNodes()) {
        if (node.sink == nullptr || !getIsSurprising(node, nonFinite)) continue;
        const ResultAccount account = node.sink->getAccount();
        outcome.warnings.push_back(
            {node.description->where, "'" + node.sink->getName() + "' holds " +
                                          valuesText(account.nonFiniteValues) + ", the first in row " +
                                          std::to_string(account.firstRow) + timeText(account.firstTime) +
                                          ", column '" + account.firstColumn + "'"});
    }
}
} // namespace

RunOutcome refusedBy(const Graph& graph, const RunEnding& ending) {
    RunOutcome outcome;
    outcome.graph = graph.getName();
    outcome.graphFile = graph.getDescription().path;
    outcome.failure = ending.failure;
    outcome.complaints = ending.complaints;
    outcome.failedBlock = ending.block;
    outcome.isInterrupted = ending.isInterrupted;
    outcome.hasBegun = false;
    return outcome;
}

RunOutcome outcomeOf(const Graph& graph, const std::vector<Core::Filter*>& blocks,
                     const std::vector<FirstNonFinite>& nonFinite, const RunProgress& progress,
                     const RunEnding& ending) {
    RunOutcome outcome = refusedBy(graph, ending);
    outcome.hasBegun = true;
    outcome.progress = progress;
    for (const Graph::Node& node : graph.getNodes())
        if (node.source != nullptr) addRecording(node, outcome);
    for (const Graph::Node& node : graph.getNodes())
        if (node.sink != nullptr) addResult(node, ending.isCutShort, outcome);
    const Links known(graph.getDescription(), blocks);
    for (const Core::Filter* const block : blocks)
        addLinks(*block, known, outcome.links);
    outcome.conversions = graph.getConversions();
    warnOfRates(graph, outcome);
    warnOfNonFinite(graph, nonFinite, outcome);
    warnOfLosses(ending.isCutShort, outcome);
    askForLosses(graph, blocks, outcome);
    return outcome;
}

} // namespace Quillmere::Host
