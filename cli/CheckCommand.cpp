// SPDX-License-Identifier: MIT
#include "cli/Commands.h"

#include "cli/GraphArguments.h"
#include "host/text/Counted.h"
#include "host/text/NearestName.h"
#include "host/run/Job.h"
#include "host/run/RunJson.h"
#include "host/text/Table.h"

#include <CLI/CLI.hpp>

#include <iostream>
#include <string>
#include <vector>

namespace Cli {

using namespace Quillmere::Host;

namespace {
/// What comes through a pipe comes once, and is the run's.
std::string whatIsLeft(const Job& job) {
    std::vector<std::string> piped;
    for (const std::string& id : job.getPipedSources())
        piped.push_back("'" + id + "'");
    return piped.empty() ? "" : "; what comes through a pipe to " + listOfNames(piped) + " is left unread";
}
} // namespace

CheckCommand::CheckCommand(CLI::App& command) {
    arguments.enter(command);
    command.add_flag("--json", asJson, "Print what is found as JSON.");
}

ExitCode CheckCommand::run() {
    JobOptions options{
        .changes = changesOf(arguments), .isStrict = arguments.isStrict, .overwrites = arguments.overwrites};
    Job job = Job::fromFile(arguments.graph, loadCatalogue(arguments.plugins), std::move(options));
    const Complaints& complaints = job.check(RunMode::Unsaid);
    if (asJson) {
        std::cout << Json::check(job, complaints) << "\n";
        return complaints.getIsRefusal(arguments.isStrict) ? kNothingRun : kDone;
    }
    complaints.raise(arguments.isStrict);
    printDoubts(complaints);
    const Graph& graph = job.getGraph();
    std::cout << graph.getName() << ": " << counted(graph.getNodes().size(), "block") << ", "
              << counted(job.getDescription().connections.size(), "connection") << ", ready to run"
              << whatIsLeft(job) << "\n";
    Table numbers(2);
    for (const RateConversion& conversion : graph.getConversions())
        numbers.add({conversion.target, conversion.getText()});
    std::cout << numbers.getText();
    return kDone;
}

} // namespace Cli
