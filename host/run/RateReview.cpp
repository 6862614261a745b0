// SPDX-License-Identifier: MIT
#include "host/run/RateReview.h"

#include "framework/Quillmere.h"
#include "host/graph/RateFinder.h"
#include "host/text/ShortestText.h"

#include <cmath>
#include <optional>
#include <string>

namespace Quillmere::Host {

namespace {
constexpr double kDrift = 0.01; ///< Of the rate.

/// What was converted by the rate of an output: `'5 Hz' for b.RelativeCutOffFreq`, and so on.
std::string conversionsBy(const Core::AbstractOutputPin& output, const RunOutcome& outcome) {
    const std::string name = nameOf(output);
    std::string text;
    for (const RateConversion& conversion : outcome.conversions)
        if (conversion.source == name)
            text += (text.empty() ? "'" : ", '") + conversion.written + "' for '" + conversion.target + "'";
    return text;
}

/// Rows beyond those by which the rate was measured are what may differ.
std::string driftText(const GraphParts::Node& node, const Core::AbstractOutputPin& output,
                      const SampleRate& before, const SampleRate& whole, const RunOutcome& outcome) {
    if (!before.isMeasured || node.source->getRows() <= kRowsMeasured) return "";
    if (!(std::abs(whole.perSecond / before.perSecond - 1.0) > kDrift)) return "";
    const std::string converted = conversionsBy(output, outcome);
    if (converted.empty()) return "";
    const std::string name = nameOf(output);
    const std::string way = node.file == nullptr ? "" : "; 'resample' would give it one rate throughout";
    return "'" + name + "' sent " + shortestText(whole.perSecond) + " samples/s over all of " +
           node.getEndName() + ", while numbers were made of " + converted + " by the " +
           shortestText(before.perSecond) + " samples/s of its first " + std::to_string(kRowsMeasured) +
           " rows" + way;
}

void warnOfOutput(const Graph& graph, const GraphParts::Node& node, const Core::AbstractOutputPin& output,
                  RunOutcome& outcome, bool& isUnevenTold) {
    const auto measured = graph.getSourceRates().find(&output);
    if (measured == graph.getSourceRates().end()) return;
    const std::optional<SampleRate>& before = measured->second;
    const std::optional<SampleRate> whole = node.recorded->getRateSoFar(output);
    if (!whole) return;
    const auto warn = [&](std::string text) {
        Warning& warning = outcome.warnings.emplace_back();
        warning.where = node.getEndPlace();
        warning.text = std::move(text);
    };
    if (before)
        if (std::string drift = driftText(node, output, *before, *whole, outcome); !drift.empty())
            warn(std::move(drift));
    const auto counting = graph.getEvenOutputs().find(&output);
    const bool isNews = !before || before->getIsSteady();
    if (isUnevenTold || counting == graph.getEvenOutputs().end() || !isNews || whole->getIsSteady()) return;
    isUnevenTold = true;
    warn(unevenText(*whole, node) + ", while " + counting->second + " takes its samples to come evenly");
}
} // namespace

void warnOfRates(const Graph& graph, RunOutcome& outcome) {
    for (const Graph::Node& node : graph.getNodes()) {
        if (node.source == nullptr || node.recorded == nullptr) continue;
        bool isUnevenTold = false;
        for (const Core::AbstractOutputPin* const output : node.block->getOutputPins())
            warnOfOutput(graph, node, *output, outcome, isUnevenTold);
    }
}

} // namespace Quillmere::Host
