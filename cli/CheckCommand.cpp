// SPDX-License-Identifier: MIT
#include "cli/Commands.h"

#include "cli/GraphArguments.h"
#include "host/graph/ClockWarnings.h"
#include "host/text/Counted.h"
#include "host/graph/Graph.h"
#include "host/graph/GraphPlugins.h"
#include "host/text/NearestName.h"
#include "host/graph/BurstWarnings.h"
#include "host/graph/SettingRules.h"
#include "host/response/DesignWarnings.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <string>
#include <vector>

namespace Cli {

using namespace Quillmere::Host;

namespace {
/// What comes through a pipe comes once, and is the run's.
std::string whatIsLeft(const Graph& graph) {
    std::vector<std::string> piped;
    for (const Graph::Node& node : graph.getNodes())
        if (getComesByItself(node.waking)) piped.push_back("'" + node.description->id + "'");
    return piped.empty() ? "" : "; what comes through a pipe to " + listOfNames(piped) + " is left unread";
}
} // namespace

CheckCommand::CheckCommand(CLI::App& command) {
    arguments.enter(command);
}

ExitCode CheckCommand::run() {
    const GraphChanges changes = changesOf(arguments);
    BlockCatalogue catalogue = loadCatalogue(arguments.plugins);
    Complaints complaints;
    const GraphDescription description = GraphDescription::read(arguments.graph, changes, complaints);
    loadPlugins(description, catalogue, complaints);
    Graph graph(description, catalogue, complaints);
    graph.requireDrive(complaints);
    if (arguments.overwrites) graph.allowOverwriting();
    graph.openSources(complaints, Graph::Pipes::Leave);
    warnOfLostDigits(graph, catalogue, complaints);
    requireStreamClock(graph, complaints);
    warnOfIdleBlocks(graph, complaints);
    if (complaints.isEmpty()) warnOfBursts(graph, complaints);
    settle(complaints, arguments.isStrict);
    std::cout << graph.getName() << ": " << counted(graph.getNodes().size(), "block") << ", "
              << counted(description.connections.size(), "connection") << ", ready to run"
              << whatIsLeft(graph) << "\n";
    return kDone;
}

} // namespace Cli
