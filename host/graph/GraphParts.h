// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "framework/core/LayoutManager.h"
#include "host/description/GraphDescription.h"
#include "host/description/IdIndex.h"
#include "host/ends/RecordedSource.h"
#include "host/ends/ResultEnd.h"
#include "host/ends/SampleRate.h"
#include "host/ends/Sink.h"
#include "host/ends/Source.h"
#include "host/ends/WakingSource.h"
#include "host/graph/RateConversion.h"
#include "host/graph/Timeline.h"
#include "host/plugins/PluginLibrary.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// How often outputs of sources send; nothing for one of which that isn't known before the run.
using SourceRates = std::map<const Core::AbstractOutputPin*, std::optional<SampleRate>>;

/// Outputs of sources whose samples a block takes to come evenly: the first such block, as messages call it.
using EvenOutputs = std::map<const Core::AbstractOutputPin*, std::string>;

/// What a graph is made of once it is built. Requires: the description outlives it.
struct QUILLMERE_API GraphParts {
    struct QUILLMERE_API Node {
        const GraphDescription::Block* description;
        BlockPtr block;        ///< Null for an unknown type.
        bool isFaulty = false; ///< Its settings raised complaints, so more of it would only repeat them.

        // What the block is besides a block, found once; null for what it isn't.
        HostBlock* hostBlock = nullptr;
        Source* source = nullptr;
        Sink* sink = nullptr;
        FileEnd* file = nullptr;
        RecordedSource* recorded = nullptr;
        WakingSource* waking = nullptr;
        ResultEnd* result = nullptr;

        /// What messages call a block: `'smooth' (FilterButterworth)`.
        std::string getQuoted() const;
        /// What messages call an end, and where they place what is wrong with it: its file, or the block
        /// where it has none.
        std::string getEndName() const;
        const Place& getEndPlace() const;
    };

    /// Of a graph in which nothing is built yet. Requires: the description is resolved.
    explicit GraphParts(const GraphDescription& description);

    /// The block of that id; null for one that the description doesn't have.
    Node* find(const std::string& id);
    const Node* find(const std::string& id) const;

    const IdIndex index; ///< Of the description's blocks.
    Core::LayoutManager layout;
    std::vector<Node> nodes; ///< As the description has them.
    std::vector<const Node*> runOrder;
    std::vector<Source*> sources;
    std::vector<Sink*> sinks;
    /// The connection in the file that gave an input its link.
    std::map<const Core::AbstractInputPin*, const GraphDescription::Connection*> connections;
    /// Whether settings stand in hertz or seconds that aren't written yet, and what was made of those that
    /// were.
    bool awaitsRates = false;
    std::vector<RateConversion> conversions;
    SourceRates sourceRates; ///< Once the sources are open, and if a block has a use for rates.
    EvenOutputs evenOutputs; ///< The same.
    Timeline timeline;       ///< Goes before the blocks that it is linked with.
};

} // namespace Quillmere::Host
