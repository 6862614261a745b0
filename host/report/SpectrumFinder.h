// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/graph/GraphParts.h"
#include "host/graph/ManualShelf.h"

#include <map>
#include <optional>
#include <vector>

namespace Quillmere::Host {

/// Finds out which inputs get spectra, and of what: follows links back, through blocks whose manuals say that
/// rows stay what they are, over one that makes frequencies of them, to a recording in frames at an even
/// rate. What no manual tells is unknown, not guessed.
///
/// Requires: nobody changes links, the sources are open, and nodes, rates and manuals outlive it.
class QUILLMERE_API SpectrumFinder {
public:
    SpectrumFinder(const std::vector<GraphParts::Node>& graphNodes, const SourceRates& sourceRates,
                   ManualShelf& manualShelf);

    /// How many rows a second the frames have whose spectra come to an input: row k of m stands for k times
    /// that over 2 m. Nothing where no spectra come, or nobody knows.
    std::optional<double> rowRateAt(const Core::AbstractInputPin& input);

private:
    std::optional<double> rowRateOf(const GraphParts::Node& node,
                                    const Core::AbstractOutputPin& output) const;

    std::map<const Core::PinManager*, const GraphParts::Node*> nodes;
    const SourceRates& rates;
    ManualShelf& manuals;
};

} // namespace Quillmere::Host
