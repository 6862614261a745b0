// SPDX-License-Identifier: MIT
#include "host/report/Report.h"

#include "framework/Quillmere.h"
#include "host/graph/MemberNames.h"
#include "host/graph/RunFiles.h"
#include "host/recording/ResultFile.h"
#include "host/recording/RecordingSink.h"
#include "host/report/LiveTap.h"
#include "host/report/ReportJson.h"
#include "host/report/ReportPage.h"
#include "host/report/SignalTap.h"
#include "host/run/RunJson.h"
#include "host/text/Address.h"
#include "host/text/Printable.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <utility>

namespace Quillmere::Host {

Report::Report(ReportOptions reportOptions) : options(std::move(reportOptions)) {}

Report::~Report() = default;

namespace {
/// Copies of a report carry no mark, and are known by how they begin.
ResultOptions fileOptions(bool overwrites) {
    const std::string begin = ReportPage::beginOfPage();
    return {.overwrites = overwrites,
            .looksOwn = [begin](std::string_view head) { return head.starts_with(begin); },
            .isOfGraph = false};
}
} // namespace

void Report::check(const Graph& graph, const BlockCatalogue& catalogue, Complaints& complaints) {
    isOfLiveRun = false;
    if (!checkFile(graph, catalogue, complaints)) return;
    watched.clear();
    for (const std::string& address : options.watched)
        findWatched(graph, address, complaints);
}

bool Report::checkLive(const Graph& graph, const BlockCatalogue& catalogue, Complaints& complaints) {
    isOfLiveRun = true;
    if (!checkFile(graph, catalogue, complaints)) return true;
    watched.clear();
    for (const std::string& address : options.watched)
        findWatched(graph, address, complaints);
    for (const Graph::Node& node : graph.getNodes())
        if (node.sink != nullptr && dynamic_cast<const RecordingSink*>(node.block.get()) == nullptr)
            complaints.warn({options.pathName}, "the report of a live run doesn't show what comes to " +
                                                    node.getQuoted() + ", which writes no rows");
    return true;
}

/// Whether there are reports; what is wrong with the file is complained of.
bool Report::checkFile(const Graph& graph, const BlockCatalogue& catalogue, Complaints& complaints) const {
    const Place place{options.pathName, 0, 0};
    if (!ReportPage::getIsThere()) {
        complaints.add(place, "a build without reports, whose page is made by node and npm",
                       "one that was configured where both are (scripts/install installs them)");
        return false;
    }
    const ResultPath path(options.path);
    RunFiles files(graph.getDescription(), catalogue, complaints);
    if (!files.checkOwn(path.getFiles(), place, graph.getNodes())) return true;
    if (const auto refusal = path.findRefusal(fileOptions(options.overwrites)))
        complaints.add(place, refusal->found, refusal->expected);
    return true;
}

/// A block of one output needs no pin's name, as in connections.
void Report::findWatched(const Graph& graph, const std::string& text, Complaints& complaints) {
    const Place place{options.watchName + " " + printable(text, kLongestName), 0, 0};
    const Address address(text);
    const Graph::Node* const node = graph.find(address.block);
    if (node == nullptr) {
        std::vector<std::string> ids;
        for (const GraphDescription::Block& block : graph.getDescription().blocks)
            ids.push_back(block.id);
        complaints.add(Complaint::unknown(place, "the block '" + printable(address.block, kLongestName) + "'",
                                          address.block, ids));
        return;
    }
    if (node->block == nullptr) return; // an unknown type, which is complained of
    const auto& outputs = node->block->getOutputPins();
    const auto named = std::find_if(outputs.begin(), outputs.end(), [&](const Core::AbstractOutputPin* pin) {
        return address.hasMember ? pin->getName() == address.member : outputs.size() == 1;
    });
    if (named != outputs.end() && (*named)->getDataTypeName() == Core::dataTypeName<Core::MatrixXd>()) {
        if (std::find(watched.begin(), watched.end(), *named) == watched.end()) watched.push_back(*named);
        return;
    }
    complaints.add(Complaint::unknown(
        place,
        address.hasMember ? "the output '" + printable(address.member, kLongestName) + "'"
                          : "no output's name",
        address.member, namesOf(outputs), "of " + node->getQuoted() + " one of ", kOneThatHasSome));
}

void Report::begin(Graph& graph, const std::stop_token& stop) {
    file = std::make_unique<ResultFile>(options.path, fileOptions(options.overwrites), stop);
    graphName = graph.getName();
    graphJson = Json::graph(graph);
    versionsJson = Json::versions(graph, options.program);
    if (isOfLiveRun)
        signals = std::make_unique<LiveTap>(graph, watched);
    else
        signals = std::make_unique<SignalTap>(graph, watched);
}

std::vector<Onlooker*> Report::getOnlookers() {
    return signals == nullptr ? std::vector<Onlooker*>() : signals->getOnlookers();
}

void Report::look(double streamTime) {
    signals->look(streamTime);
}

void Report::complete(const RunOutcome& outcome) {
    signals->lookAtRest();
    Json::Blobs blobs;
    const std::string origin = outcome.getOrigin();
    const std::uint64_t rounds = std::max(signals->getRounds(), outcome.progress.rounds);
    const std::string json = Json::object({{"document", Json::text("report")},
                                           {"format", "1"},
                                           {"name", Json::text(graphName)},
                                           {"clock", Json::text("s")},
                                           {"origin", origin.empty() ? Json::null() : Json::text(origin)},
                                           {"leftOut", Json::null()},
                                           {"recordings", Json::list({})},
                                           {"outcome", Json::outcome(outcome)},
                                           {"graph", graphJson},
                                           {"signals", Json::signals(signals->getSignals(), rounds, blobs)},
                                           {"versions", versionsJson}});
    signals.reset();
    const std::string page = ReportPage::make(graphName, json, blobs.getHtml());
    try {
        file->write(page.data(), page.size());
        file->complete();
        file.reset();
    } catch (...) {
        discard(); // half a page is of no use to anybody
        throw;
    }
}

void Report::discard() {
    signals.reset();
    if (file != nullptr) file->discard();
    file.reset();
}

} // namespace Quillmere::Host
