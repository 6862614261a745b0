// SPDX-License-Identifier: MIT
#include "cli/Commands.h"

#include "cli/UsageError.h"
#include "host/batch/BatchPlan.h"
#include "host/batch/ResultFolder.h"
#include "host/graph/Graph.h"
#include "host/graph/GraphPlugins.h"
#include "host/report/Report.h"
#include "host/text/Counted.h"
#include "host/text/NearestName.h"
#include "host/text/Printable.h"

#include <algorithm>
#include <iostream>
#include <optional>
#include <set>

namespace Cli {

using namespace Quillmere::Host;

namespace {

constexpr const char* kIn = "--in";

void listDoubts(const std::vector<std::string>& names, const std::string& table, const std::string& what) {
    if (names.empty()) return;
    Warning warning;
    warning.where.file = table;
    warning.text = what + listOfNames(names);
    std::cerr << warning.getText() << "\n";
}

} // namespace

GraphArguments argumentsOf(const BatchPlan::Entry& entry) {
    GraphArguments arguments;
    for (std::size_t i = 0; i + 1 < entry.words.size(); ++i) {
        const std::string& word = entry.words[i];
        if (word == "--input")
            arguments.inputs.push_back(entry.words[++i]);
        else if (word == "--set")
            arguments.settings.push_back(entry.words[++i]);
        else if (word == "--param")
            arguments.parameters.push_back(entry.words[++i]);
        else if (word == "--plugin")
            arguments.plugins.plugins.push_back(entry.words[++i]);
        else if (word == "--note")
            ++i;
    }
    return arguments;
}

/// Files of the batch itself, and of other sources, that a pattern may find beside recordings.
std::vector<std::string> BatchCommand::leftOut() const {
    std::vector<std::string> names{out, arguments.graph, table, planFile};
    for (const std::string& input : arguments.inputs)
        names.push_back(splitSetting(input, "--input", "block=FILE").second);
    return names;
}

/// A place that isn't one would be part of a name that no file has.
void BatchCommand::checkPlaces() const {
    const std::vector<std::string> known = getPlaceNames();
    for (const std::string& input : arguments.inputs)
        for (std::size_t at = input.find('{'); at != std::string::npos; at = input.find('{', at + 1)) {
            const std::string place = input.substr(at, input.find('}', at) - at + 1);
            if (!place.ends_with('}') || std::find(known.begin(), known.end(), place) != known.end())
                continue;
            throw UsageError(
                Complaint::unknown({"--input"}, "'" + printable(place, kLongestName) + "'", place, known));
        }
}

/// The graph is checked before anything is touched, with the first recording's settings and with those of
/// each row of the table.
BatchPlan BatchCommand::planOfGraph() const {
    checkPlaces();
    BlockCatalogue catalogue = loadCatalogue(arguments.plugins);
    Complaints complaints;
    const GraphDescription description = GraphDescription::fromFile(arguments.graph, complaints);
    loadPlugins(description, catalogue, complaints);
    complaints.raise(false);
    PlanWishes wishes{
        .graph = arguments.graph, .source = sourceOf(catalogue), .out = out, .words = wordsForEach()};
    Complaints search;
    const FoundFiles found = findFiles(patterns, leftOut(), kIn, search);
    printDoubts(search);
    search.raise(arguments.isStrict);
    std::optional<StudyTable> rows;
    if (!table.empty()) wishes.table = &rows.emplace(table, complaints);
    complaints.raise(false);
    PlanDoubts doubts;
    BatchPlan made = makePlan(found, wishes, doubts, complaints);
    complaints.raise(false);
    checkEntries(made, description, catalogue);
    listDoubts(doubts.withoutRow, table, "no row for ");
    listDoubts(doubts.unused, table, "no recording for ");
    return made;
}

void BatchCommand::checkEntries(const BatchPlan& made, const GraphDescription& description,
                                const BlockCatalogue& catalogue) const {
    std::set<std::vector<std::string>> checked;
    for (const BatchPlan::Entry& entry : made.entries)
        if (checked.insert(entry.settings).second) checkEntry(entry, description, catalogue);
}

void BatchCommand::checkEntry(const BatchPlan::Entry& entry, const GraphDescription& description,
                              const BlockCatalogue& catalogue) const {
    GraphChanges changes = changesOf(argumentsOf(entry));
    // Those of the table stand behind the others.
    for (std::size_t i = 0; i < entry.settings.size(); ++i)
        changes.settings[changes.settings.size() - entry.settings.size() + i].option =
            entry.row.file + ":" + std::to_string(entry.row.line) + ": " + StudyTable::kSetting +
            printable(entry.settings[i], kLongestName);
    Complaints complaints;
    Complaints ignored; // which the graph complains of, too
    changes.outputs =
        outputsInto(entry.folder, "--out", description.with(changes, ignored).resolved(ignored), catalogue);
    const Graph graph(description.with(changes, complaints), catalogue, complaints);
    // Nowhere yet: each goes into a folder that isn't there.
    if (!report.empty())
        Report(ReportOptions{.path = "/dev/null",
                             .watched = watched,
                             .program = QUILLMERE_VERSION,
                             .pathName = "--report " + report,
                             .watchName = "--watch"})
            .check(graph, catalogue, complaints);
    complaints.raise(arguments.isStrict);
}

/// The source that reads the recording: the only one with a file, of those that no option gives one.
std::string BatchCommand::sourceOf(const BlockCatalogue& catalogue) const {
    Complaints ignored; // settings and files that recordings bring aren't there yet
    const GraphDescription description = GraphDescription::fromFile(arguments.graph, ignored);
    const Graph graph(description.with(changesOf(arguments), ignored), catalogue, ignored);
    std::vector<std::string> sources;
    for (const Graph::Node& node : graph.getNodes()) {
        const std::string& id = node.description->id;
        const auto isIt = [&](const std::string& input) { return input.starts_with(id + "="); };
        if (node.source == nullptr || node.file == nullptr) continue;
        const bool isGiven = std::any_of(arguments.inputs.begin(), arguments.inputs.end(), isIt);
        if (id == source && isGiven)
            throw UsageError({{"--source"}, "--input for " + id + " as well", "one of them"});
        if (id == source) return source;
        if (!isGiven) sources.push_back(id);
    }
    if (!source.empty())
        throw UsageError(Complaint::unknown(
            {"--source"}, "the block '" + printable(source, kLongestName) + "'", source, sources,
            "a source that reads a file: ", "a graph with a source that reads a file"));
    if (sources.size() == 1) return sources.front();
    const std::string expected = sources.empty() ? "one source at least that reads a recording"
                                                 : "--source BLOCK for the one that reads the recording, and "
                                                   "--input BLOCK=FILE for others";
    throw UsageError({{arguments.graph},
                      counted(sources.size(), "source") + " that read files" +
                          (sources.empty() ? "" : ", " + listOfNames(sources)),
                      expected});
}

std::vector<std::string> BatchCommand::wordsForEach() const {
    std::vector<std::string> words = wordsOf(arguments);
    const auto add = [&](const char* option, const std::string& value) {
        if (!value.empty()) words.insert(words.end(), {option, value});
    };
    add("--report", report);
    for (const std::string& output : watched)
        add("--watch", output);
    add("--picture", picture);
    if (arguments.overwrites) words.emplace_back("--overwrite");
    return words;
}

} // namespace Cli
