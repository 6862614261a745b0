// SPDX-License-Identifier: MIT
#include "cli/Commands.h"

#include "cli/ReadingArguments.h"
#include "cli/RunReport.h"
#include "cli/SideFile.h"
#include "cli/StopSignals.h"
#include "cli/UsageError.h"
#include "host/ends/RecordingException.h"
#include "host/ends/StandardStream.h"
#include "host/inspection/Inspection.h"
#include "host/inspection/InspectionFiles.h"
#include "host/inspection/InspectionJson.h"
#include "host/inspection/InspectionReport.h"

#include <CLI/CLI.hpp>

#include <unistd.h>

#include <csignal>
#include <iostream>
#include <memory>

namespace Cli {

using namespace Quillmere::Host;

namespace {

constexpr const char* kProfileOption = "--profile";
constexpr const char* kGraphOption = "--graph";

ResultOptions optionsOf(bool overwrites) {
    return {.overwrites = overwrites, .looksOwn = getIsOfInspection, .isOfGraph = false};
}

Inspection look(RecordingReader& reader, const InspectionSettings& settings) {
    ProgressLine progress(ProgressLine::Clock::now(), false);
    const std::stop_token& stop = settings.wishes.stop;
    if (::isatty(STDERR_FILENO) == 0) return inspect(reader, settings, stop);
    return inspect(reader, settings, stop, [&](const InspectionProgress& now) {
        progress.show({.rows = now.rows, .bytesRead = now.bytesRead, .bytes = now.bytes});
    });
}

} // namespace

InspectCommand::InspectCommand(CLI::App& command) {
    command.add_option("FILE", file, "The recording; - is standard input.")->required();
    command
        .add_option("--set", settings,
                    "Say how to read it, by a setting of RecordingSource: time, rate, data and the like.")
        ->type_name("PROPERTY=VALUE")
        ->allow_extra_args(false);
    command.add_flag("--json", asJson, "Print what is found as JSON.");
    command.add_option(kProfileOption, profile, "Write the properties of a source that reads it, as YAML.")
        ->type_name("FILE.yaml");
    command.add_option(kGraphOption, graph, "Write a graph that reads it and runs.")->type_name("FILE.yaml");
    command.add_flag("--overwrite", overwrites, "Let these replace files that are none of these.");
}

ExitCode InspectCommand::run() {
    checkFiles();
    const StopSignals signals;
    InspectionSettings said = readingSettingsOf(settings);
    said.wishes.stop = signals.getToken();
    // A reader that goes away is a failure to write, which is told.
    std::signal(SIGPIPE, SIG_IGN);
    Inspection found;
    std::unique_ptr<RecordingReader> reader;
    try {
        reader = openToLook(file, said);
    } catch (const InterruptedException& exception) {
        std::cerr << "quillmere: " << exception.what() << "\n";
        return kFailedMidway;
    }
    if (reader == nullptr) return kNothingRun;
    try {
        found = look(*reader, said);
    } catch (const RecordingException& exception) {
        std::cerr << "quillmere: " << exception.what() << "\n";
        return kFailedMidway;
    }
    found.path = file;
    std::ostream& out = getIsStandardStream(profile) || getIsStandardStream(graph) ? std::cerr : std::cout;
    if (asJson)
        out << Json::inspection(found) << "\n";
    else
        out << inspectionAsText(found, getShowsUtf8());
    return writeFiles(found, said);
}

/// Before the recording is read, which may take long.
void InspectCommand::checkFiles() const {
    for (const auto& [option, path] : {std::pair(kProfileOption, profile), std::pair(kGraphOption, graph)}) {
        if (path.empty()) continue;
        checkSideFile(option, path, optionsOf(overwrites));
        keepFromSideFile(option, path, file, "the recording");
    }
    if (!graph.empty() && graph == profile)
        throw UsageError({{kGraphOption}, "the file of " + std::string(kProfileOption), "another one"});
}

ExitCode InspectCommand::writeFiles(const Inspection& found, const InspectionSettings& said) const {
    if (profile.empty() && graph.empty()) return kDone;
    if (const auto hindrance = findHindrance(found)) throw UsageError(*hindrance);
    const ResultOptions options = optionsOf(overwrites);
    const bool isProfileWhole =
        profile.empty() || writeSideFile(profile, options, inspectionAsProfile(found, said, profile));
    const bool isGraphWhole =
        graph.empty() || writeSideFile(graph, options, inspectionAsGraph(found, said, graph));
    return isProfileWhole && isGraphWhole ? kDone : kFailedMidway;
}

} // namespace Cli
