// SPDX-License-Identifier: MIT
#include "cli/Commands.h"

#include "cli/GraphArguments.h"
#include "host/graph/ClockWarnings.h"
#include "host/graph/Graph.h"
#include "host/graph/GraphPlugins.h"
#include "host/graph/LayoutLinks.h"
#include "host/graph/SettingRules.h"
#include "host/response/DesignWarnings.h"

#include <CLI/CLI.hpp>

#include <iostream>

namespace Cli {

using namespace Quillmere::Host;

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
    graph.openSources(complaints);
    warnOfLostDigits(graph, catalogue, complaints);
    requireStreamClock(graph, complaints);
    warnOfIdleBlocks(graph, complaints);
    if (complaints.isEmpty()) warnOfBursts(graph, complaints);
    settle(complaints, arguments.isStrict);
    std::cout << graph.getName() << ": " << graph.getNodes().size() << " blocks, "
              << description.getConnections().size() << " connections, ready to run\n";
    return kDone;
}

} // namespace Cli
