// SPDX-License-Identifier: MIT
#pragma once

#include "host/ends/SampleRate.h"
#include "host/graph/BlockManual.h"
#include "host/graph/GraphParts.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// How often samples come somewhere, or why nobody knows.
struct FoundRate {
    std::optional<SampleRate> rate = {};
    const GraphParts::Node* origin = nullptr; ///< Where they come from; null when that is unknown.
    std::string reason = {};                  ///< Why there is no rate.
};

/// Follows links back from a block to what drives it: through blocks whose manuals say how often they send,
/// up to a recording or a generator. What no manual tells is unknown, not guessed.
///
/// Requires: the sources are open, nobody changes links, and nodes and catalogue outlive it.
class RateFinder {
public:
    RateFinder(const std::vector<GraphParts::Node>& graphNodes, const BlockCatalogue& blockCatalogue)
        : nodes(graphNodes), catalogue(blockCatalogue) {}

    /// At the block's main input.
    const FoundRate& rateAt(const Core::Filter& block);
    const BlockManual& getManual(const std::string& type);
    /// What was wrong with manuals so far.
    const Complaints& getComplaints() const { return complaints; }

private:
    FoundRate follow(const Core::Filter& block);
    FoundRate rateOf(const Core::AbstractOutputPin& output);
    FoundRate rateOfSource(const GraphParts::Node& node, const Core::AbstractOutputPin& output) const;
    FoundRate rateByStep(const GraphParts::Node& node, const std::string& setting) const;
    const GraphParts::Node* nodeOf(const Core::PinManager* block) const;

    const std::vector<GraphParts::Node>& nodes;
    const BlockCatalogue& catalogue;
    Complaints complaints;
    std::map<std::string, BlockManual> manuals;
    std::map<const Core::Filter*, FoundRate> found;
    std::set<const Core::Filter*> onTheWay; ///< Blocks that are being followed.
};

/// `100 samples/s, as measured in walk.csv`. Requires: a rate was found.
std::string textOf(const FoundRate& found);

} // namespace Quillmere::Host
