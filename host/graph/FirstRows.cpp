// SPDX-License-Identifier: MIT
#include "host/graph/FirstRows.h"

#include "host/graph/Graph.h"
#include "host/text/Printable.h"
#include "host/plugins/KnownTypes.h"
#include "host/text/ShortestText.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace Quillmere::Host {

namespace {

constexpr std::uint64_t kRowsLookedAt = 1000;
constexpr double kSameStep = 0.1; ///< Of the median; clocks of sensors jitter by less.

using Ids = std::unordered_set<std::string>;
using Receivers = std::unordered_map<std::string, std::vector<std::string>>;

/// The blocks that get anything that comes from `source`, by whatever way.
Ids reachedFrom(const std::string& source, const Receivers& receivers) {
    Ids reached{source};
    std::vector<std::string> open{source};
    while (!open.empty()) {
        const auto next = receivers.find(open.back());
        open.pop_back();
        if (next == receivers.end()) continue;
        for (const std::string& id : next->second)
            if (reached.insert(id).second) open.push_back(id);
    }
    return reached;
}

bool getIsFramed(const GraphDescription::Block& block) {
    return std::any_of(block.settings.begin(), block.settings.end(),
                       [](const GraphDescription::Setting& setting) { return setting.name == "frame"; });
}

std::string shortText(double number) {
    const double digits = std::pow(10.0, 5.0 - std::floor(std::log10(std::abs(number))));
    return shortestText(std::round(number * digits) / digits);
}

bool getHasNominalRate(const GraphDescription::Block& block) {
    return std::any_of(
        block.settings.begin(), block.settings.end(),
        [](const GraphDescription::Setting& setting) { return setting.name == "nominalRate"; });
}

void warnOfNominalRate(const Graph::Node& node, const SourceAccount::OtherClock& clock,
                       Complaints& complaints) {
    complaints.warn(node.getEndPlace(), "the times of " + node.getEndName() + " tell " +
                                            shortText(clock.rate) +
                                            " rows a second, evenly, which is not the 'nominalRate' of '" +
                                            node.description->id + "'; without that they would be taken");
}

void warnOfRate(const Graph::Node& node, const SourceAccount::OtherClock& clock, Complaints& complaints) {
    complaints.warn(node.getEndPlace(), "the column '" + clock.column + "' of " + node.getEndName() +
                                            " looks like a clock that goes at " + shortText(clock.rate) +
                                            " rows a second, which is not the 'rate' of '" +
                                            node.description->id + "'; 'time: " + clock.column +
                                            "' would read it, if it is in seconds");
}

void warnOfFirstStep(const GraphDescription::Block& block, const Graph::Node& node,
                     const SourceAccount& account, Complaints& complaints) {
    const double first = *account.firstStep;
    complaints.warn(block.where, "'" + block.id + "' takes the rate of rows from the first two of " +
                                     node.getEndName() + ", which are " +
                                     (first == 0.0 ? "0" : shortText(first)) + " s apart, while " +
                                     shortText(*account.medianStep) +
                                     " s are usual; without the first row it would be right");
}

bool getIsFirstStepOdd(const SourceAccount& account) {
    return account.firstStep && account.medianStep &&
           std::abs(*account.firstStep - *account.medianStep) > kSameStep * *account.medianStep;
}

} // namespace

std::string otherUnitText(const SourceAccount& account) {
    const SourceAccount::OtherUnit& unit = *account.otherUnit;
    std::string text = "the time stamps of the column '" + printable(unit.column, kLongestName) +
                       "', whose name says " + unit.unit + ", are taken for seconds";
    if (!account.medianStep) return text;
    return text + ", which gives a median rate of " + shortText(1.0 / *account.medianStep) +
           " rows a second; if the name is right, divide them, or 'rate: " +
           shortText(1.0 / (*account.medianStep * unit.seconds)) + "' in place of 'time' counts rows instead";
}

void warnOfFirstRows(const Graph& graph, Complaints& complaints) {
    Receivers receivers;
    for (const GraphDescription::Connection& connection : graph.getDescription().connections)
        receivers[connection.from.block].push_back(connection.to.block);
    for (const Graph::Node& node : graph.getNodes()) {
        if (node.recorded == nullptr || node.isFaulty) continue;
        const std::optional<SourceAccount> account = node.recorded->lookAhead(kRowsLookedAt);
        if (!account) continue;
        if (account->otherClock && getHasNominalRate(*node.description))
            warnOfNominalRate(node, *account->otherClock, complaints);
        else if (account->otherClock)
            warnOfRate(node, *account->otherClock, complaints);
        if (account->otherUnit)
            complaints.warn(node.getEndPlace(), otherUnitText(*account) + " (" + node.getEndName() + ")");
        if (!getIsFirstStepOdd(*account) || getIsFramed(*node.description)) continue;
        const Ids reached = reachedFrom(node.description->id, receivers);
        for (const GraphDescription::Block& block : graph.getDescription().blocks)
            if (getKnownType(block.type).trustsFirstStep && reached.count(block.id) > 0)
                warnOfFirstStep(block, node, *account, complaints);
    }
}

} // namespace Quillmere::Host
