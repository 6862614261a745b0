// SPDX-License-Identifier: MIT
#include "host/run/RunSummary.h"

#include "host/graph/RunFiles.h"
#include "host/run/RunJson.h"

#include <string_view>
#include <utility>

namespace Quillmere::Host {

RunSummary::RunSummary(std::string summaryPath, const std::string& callersName, bool mayOverwrite)
    : path(std::move(summaryPath)), place{callersName, 0, 0}, overwrites(mayOverwrite) {}

/// Copies of a summary carry no mark, and are known by how they begin.
ResultOptions RunSummary::options() const {
    const std::string begin = Json::beginOfOutcome();
    return {.overwrites = overwrites,
            .looksOwn = [begin](std::string_view head) { return head.starts_with(begin); },
            .isOfGraph = false};
}

bool RunSummary::check(const Graph& graph, const BlockCatalogue& catalogue, Complaints& complaints) const {
    const ResultPath result(path);
    RunFiles files(graph.getDescription(), catalogue, complaints);
    if (!files.checkOwn(result.getFiles(), place, graph.getNodes())) return false;
    const auto refusal = result.findRefusal(options());
    if (refusal) complaints.add(place, refusal->found, refusal->expected);
    return !refusal;
}

void RunSummary::open(const std::stop_token& stop) {
    file = std::make_unique<ResultFile>(path, options(), stop);
}

void RunSummary::write(const RunOutcome& outcome) {
    if (file == nullptr) open({});
    const std::string text = Json::outcome(outcome) + "\n";
    file->write(text.data(), text.size());
    file->complete();
    file.reset();
}

void RunSummary::discard() {
    if (file != nullptr) file->discard();
    file.reset();
}

} // namespace Quillmere::Host
