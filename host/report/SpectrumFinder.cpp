// SPDX-License-Identifier: MIT
#include "host/report/SpectrumFinder.h"

#include "framework/core/AbstractInputPin.h"
#include "framework/core/AbstractOutputPin.h"
#include "host/ends/MainInput.h"
#include "host/recording/RecordingSource.h"

#include <set>

namespace Quillmere::Host {

using Core::AbstractInputPin;
using Core::AbstractOutputPin;

SpectrumFinder::SpectrumFinder(const std::vector<GraphParts::Node>& graphNodes,
                               const SourceRates& sourceRates, ManualShelf& manualShelf)
    : rates(sourceRates), manuals(manualShelf) {
    for (const GraphParts::Node& node : graphNodes)
        if (node.block != nullptr) nodes.emplace(node.block.get(), &node);
}

std::optional<double> SpectrumFinder::rowRateAt(const AbstractInputPin& input) {
    std::set<const AbstractInputPin*> passed; // a loop leads to no recording
    bool isSpectrum = false;
    for (const AbstractInputPin* next = &input; next != nullptr && passed.insert(next).second;) {
        const AbstractOutputPin* const output = next->getConnectedOutput();
        const auto sender = output == nullptr ? nodes.end() : nodes.find(output->getManager());
        if (sender == nodes.end()) return std::nullopt;
        const GraphParts::Node& node = *sender->second;
        if (node.recorded != nullptr) return isSpectrum ? rowRateOf(node, *output) : std::nullopt;
        const auto& rows = manuals.get(node.description->type).outputRows;
        const auto told = rows.find(output->getName());
        if (told == rows.end()) return std::nullopt;
        const bool makesSpectrum = told->second == BlockManual::OutputRows::Frequencies;
        if (makesSpectrum && isSpectrum) return std::nullopt; // a spectrum of spectra
        isSpectrum = isSpectrum || makesSpectrum;
        next = mainInputOf(*node.block);
    }
    return std::nullopt;
}

/// Of frames alone: rows of single samples are columns of the recording.
std::optional<double> SpectrumFinder::rowRateOf(const GraphParts::Node& node,
                                                const AbstractOutputPin& output) const {
    const auto* const recording = dynamic_cast<const RecordingSource*>(node.block.get());
    const auto known = rates.find(&output);
    if (recording == nullptr || !recording->getHasFrames() || known == rates.end() || !known->second ||
        !known->second->getIsSteady())
        return std::nullopt;
    return known->second->perSecond * recording->getRowsASample();
}

} // namespace Quillmere::Host
