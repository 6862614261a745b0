// SPDX-License-Identifier: MIT
#pragma once

#include "host/ends/SampleRate.h"
#include "host/graph/GraphParts.h"
#include "host/graph/ManualShelf.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// How often samples come somewhere, or why nobody knows.
struct FoundRate {
    std::optional<SampleRate> rate = {};
    const GraphParts::Node* origin = nullptr; ///< Where they come from; null when that is unknown.
    std::string reason = {};                  ///< Why there is no rate.
    std::string remedy = {};                  ///< What would state one.
    /// The recording's output that they come from; null for another origin.
    const Core::AbstractOutputPin* output = nullptr;
};

/// Follows links back from a block to what drives it: through blocks whose manuals say how often they send,
/// up to a recording or a generator. What no manual tells is unknown, not guessed.
///
/// Requires: nobody changes links, and nodes, rates and catalogue outlive it.
class RateFinder {
public:
    /// `sources` are the rates at which the graph's sources send, as far as they are known.
    RateFinder(const std::vector<GraphParts::Node>& nodes, const SourceRates& sources,
               const BlockCatalogue& catalogue);

    /// At the block's main input.
    const FoundRate& rateAt(const Core::Filter& block);
    const BlockManual& getManual(const std::string& type) { return manuals.get(type); }
    ManualShelf& getManuals() { return manuals; }
    /// What was wrong with manuals so far.
    const Complaints& getComplaints() const { return manuals.getComplaints(); }

private:
    /// The rate of an output, or the block at whose main input its rate is.
    struct Step {
        FoundRate rate = {};
        const Core::Filter* before = nullptr;
    };
    Step stepBack(const Core::Filter& block);
    Step stepInto(const Core::AbstractOutputPin& output);
    FoundRate rateOfSource(const GraphParts::Node& node, const Core::AbstractOutputPin& output) const;
    FoundRate rateBySetting(const GraphParts::Node& node, const BlockManual::OutputRate& told) const;

    std::map<const Core::PinManager*, const GraphParts::Node*> nodes;
    const SourceRates& sources;
    ManualShelf manuals;
    std::map<const Core::Filter*, FoundRate> found;
};

/// `12 % of the steps in walk.csv differ ...`, of a rate that isn't steady.
std::string unevenText(const SampleRate& rate, const GraphParts::Node& source);
/// `in.accel`.
std::string nameOf(const Core::AbstractOutputPin& output);

/// `100 samples/s, as measured in walk.csv`. Requires: a rate was found.
std::string textOf(const FoundRate& found);

} // namespace Quillmere::Host
