// SPDX-License-Identifier: MIT
#include "cli/Commands.h"

#include "cli/GraphArguments.h"
#include "cli/RunPicture.h"
#include "cli/SideFile.h"
#include "cli/Usage.h"
#include "cli/UsageError.h"
#include "host/graph/Graph.h"
#include "host/graph/GraphPlugins.h"
#include "host/text/NearestName.h"
#include "host/text/Printable.h"
#include "host/graph/PropertyWriter.h"
#include "host/description/ValueReader.h"
#include "host/picture/ResponseCurves.h"
#include "host/response/GraphBlock.h"
#include "host/response/ResponseReport.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iostream>
#include <memory>

namespace Cli {

using namespace Quillmere::Host;
using Quillmere::Core::Filter;

namespace {

constexpr const char* kPictureOption = "--picture";

std::vector<std::string> namesOf(const Quillmere::Core::PropertyBag& properties) {
    std::vector<std::string> names;
    for (const auto* const property : properties)
        names.push_back(property->getName());
    return names;
}

/// A lone block with settings as `PROPERTY=VALUE`.
BlockPtr configuredBlock(const BlockCatalogue& catalogue, const std::string& type,
                         const std::vector<std::string>& settings) {
    BlockPtr block = createBlock(catalogue, type);
    Complaints complaints;
    std::vector<Value> values;
    std::vector<PropertyWrite> writes;
    values.reserve(settings.size()); // the writes point into it
    for (const std::string& text : settings) {
        const auto [name, value] = splitSetting(text, "--set", "PROPERTY=VALUE");
        const std::string option = "--set " + printable(text, kLongestName);
        if (block->getPropertyBag().find(name) == nullptr) {
            refuseName(complaints, {option}, name,
                       "the property '" + printable(name, kLongestName) + "' of " + type, "one of ",
                       [&] { return namesOf(block->getPropertyBag()); });
        } else if (const auto read = readValueText(value, option, false, complaints)) {
            values.push_back(*read);
            writes.push_back({block->getPropertyBag().find(name), &values.back()});
        }
    }
    writeProperties(std::move(writes), complaints);
    complaints.raise();
    return block;
}

/// What can't be measured of a graph is a fault of the call.
BlockMaker makerOf(const GraphDescription& description, const BlockCatalogue& catalogue,
                   const std::string& id) {
    try {
        return makerOfGraphBlock(description, catalogue, id);
    } catch (const ResponseException& exception) {
        throw UsageError(exception.getComplaints().front());
    }
}

} // namespace

ResponseCommand::ResponseCommand(CLI::App& command) {
    const auto enterList = [&](const char* name, std::vector<std::string>& values, const char* form,
                               const char* meaning) {
        command.add_option(name, values, meaning)->type_name(form)->allow_extra_args(false);
    };
    command.add_option("TARGET", target, "A block type; with BLOCK a graph file.")->required();
    command.add_option("BLOCK", block, "The id of a block in the graph.");
    enterList("--set", settings, "[BLOCK.]PROPERTY=VALUE",
              "Give a property another value; with the block's id in a graph.");
    enterList("--param", parameters, "NAME=VALUE", "Give a parameter of the graph another value.");
    command.add_option("--from", measurement.input, "The input pin, if there are several and none is 'in'.")
        ->type_name("PIN");
    command.add_option("--to", measurement.output, "The output pin, if there are several and none is 'out'.")
        ->type_name("PIN");
    command.add_option("--points", measurement.intervals, "Measure at so many frequencies above 0.")
        ->type_name("COUNT")
        ->check(wholeNumber(1, 10000))
        ->capture_default_str();
    command.add_option(kPictureOption, picture, "Write a picture, too.")->type_name("FILE.svg|FILE.png");
    command.add_flag("--overwrite", overwrites, "Let the picture replace a file that is none of these.");
    plugins.enter(command);
}

ExitCode ResponseCommand::run() {
    if (!picture.empty()) {
        checkPicture(kPictureOption, picture, overwrites);
        if (!block.empty()) keepFromSideFile(kPictureOption, picture, target, "the graph");
        for (const std::string& plugin : plugins.plugins)
            keepFromSideFile(kPictureOption, picture, plugin, "the plug-in");
    }
    BlockCatalogue catalogue = loadCatalogue(plugins);
    const FrequencyResponse response = block.empty() ? measureType(catalogue) : measureGraph(catalogue);
    std::cout << responseAsCsv(response);
    const bool isWhole =
        picture.empty() || writePicture(kPictureOption, picture, overwrites, pictureOf(response, title()));
    if (const std::size_t count = response.countUnsettled(); count > 0)
        std::cerr << "at " << count << " of " << response.points.size()
                  << " frequencies the output grows without bound, doesn't settle or isn't finite\n";
    return isWhole ? kDone : kFailedMidway;
}

FrequencyResponse ResponseCommand::measureType(const BlockCatalogue& catalogue) const {
    if (!parameters.empty()) throw UsageError({{"--param"}, "a block type", "a graph file and a BLOCK"});
    const BlockMaker make = [&] {
        return std::shared_ptr<Filter>(configuredBlock(catalogue, target, settings));
    };
    return measureResponse(make, measurement);
}

FrequencyResponse ResponseCommand::measureGraph(BlockCatalogue& catalogue) const {
    GraphArguments arguments;
    arguments.graph = target;
    arguments.settings = settings;
    arguments.parameters = parameters;
    Complaints complaints;
    const GraphDescription description =
        GraphDescription::fromFile(target, complaints).with(changesOf(arguments), complaints);
    loadPlugins(description, catalogue, complaints);
    complaints.raise();
    return measureResponse(makerOf(description, catalogue, block), measurement);
}

std::string ResponseCommand::title() const {
    std::string text = block.empty() ? target : block + " in " + target;
    for (const std::string& setting : settings)
        text += ", " + setting;
    return text;
}

} // namespace Cli
