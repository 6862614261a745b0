// SPDX-License-Identifier: MIT
#include "host/response/DesignWarnings.h"

#include "framework/Quillmere.h"
#include "host/text/Counted.h"
#include "host/graph/PropertyWriter.h"
#include "host/response/FrequencyResponse.h"
#include "host/text/Complaint.h"

#include <cmath>

namespace Quillmere::Host {

namespace {
constexpr int kFewestDigits = 6;

/// Another block like the graph's.
BlockPtr twinOf(const GraphDescription::Block& description, const BlockCatalogue& catalogue) {
    BlockPtr twin = catalogue.create(description.type, description.id);
    std::vector<PropertyWrite> writes;
    for (const GraphDescription::Setting& setting : description.settings) {
        Core::AbstractProperty* const property = twin->getPropertyBag().find(setting.name);
        if (property != nullptr && !setting.value.isMissing()) writes.push_back({property, &setting.value});
    }
    Complaints refused; // told when the graph was built
    writeProperties(std::move(writes), refused);
    return twin;
}

void warnOfNoDesign(const GraphDescription::Block& block, Complaints& complaints) {
    const Complaint complaint{
        {},
        "no design of '" + block.id + "' (" + block.type + "), since its gain or coefficients aren't finite",
        "edges above 0, below 1 and apart from each other, and an order that they bear"};
    complaints.warn(block.where, complaint.getText());
}

/// Raises what the block raises.
void warnOfDigits(const GraphDescription::Block& block, const BlockCatalogue& catalogue,
                  Complaints& complaints) {
    const auto design =
        measureDesign([&] { return std::shared_ptr<Core::Filter>(twinOf(block, catalogue)); });
    if (!design) return;
    const double error = design->estimateError();
    if (std::isnan(error)) return warnOfNoDesign(block, complaints);
    if (error <= std::pow(10.0, -kFewestDigits)) return;
    const int digits =
        error < 1.0 ? static_cast<int>(std::floor(-std::log10(error))) : 0; // it may be infinite
    const std::string left = digits == 0 ? "no digit" : counted(static_cast<std::uint64_t>(digits), "digit");
    const Complaint complaint{{},
                              "the design of '" + block.id + "' (" + block.type + ") with " + left +
                                  " left of 16, since its coefficients all but cancel",
                              std::to_string(kFewestDigits) +
                                  " or more: take a lower order, edges farther from 0, from 1 and from each "
                                  "other, or a cascade of sections"};
    complaints.warn(block.where, complaint.getText());
}
} // namespace

void warnOfLostDigits(const Graph& graph, const BlockCatalogue& catalogue, Complaints& complaints) {
    for (const Graph::Node& node : graph.getNodes()) {
        if (node.block == nullptr || node.isFaulty || !getPublishesDesign(*node.block)) continue;
        try {
            warnOfDigits(*node.description, catalogue, complaints);
        } catch (
            ...) { // NOLINT(bugprone-empty-catch): a block that fails a first sample says so when it is run
        }
    }
}

} // namespace Quillmere::Host
