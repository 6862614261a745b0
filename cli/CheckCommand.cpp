// SPDX-License-Identifier: MIT
#include "cli/Commands.h"

#include "cli/GraphArguments.h"
#include "host/text/Counted.h"
#include "host/text/NearestName.h"
#include "host/run/Job.h"
#include "host/text/Table.h"

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
    JobOptions options{.changes = changesOf(arguments), .overwrites = arguments.overwrites};
    Job job = Job::fromFile(arguments.graph, loadCatalogue(arguments.plugins), std::move(options));
    settle(job.check(RunMode::Unsaid), arguments.isStrict);
    const Graph& graph = job.getGraph();
    std::cout << graph.getName() << ": " << counted(graph.getNodes().size(), "block") << ", "
              << counted(job.getDescription().connections.size(), "connection") << ", ready to run"
              << whatIsLeft(graph) << "\n";
    Table numbers(2);
    for (const RateConversion& conversion : graph.getConversions())
        numbers.add({conversion.target, conversion.getText()});
    std::cout << numbers.getText();
    return kDone;
}

} // namespace Cli
