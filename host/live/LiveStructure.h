// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Api.h"
#include "host/description/GraphDescription.h"
#include "host/plugins/BlockCatalogue.h"

#include <cstdint>
#include <optional>
#include <string>

namespace Quillmere::Core {
class AbstractInputPin;
class AbstractOutputPin;
} // namespace Quillmere::Core

namespace Quillmere::Host {

class LiveGraph;

/// A link as somebody asks for it: the ends as `block.pin`.
struct LinkRequest {
    std::string from;
    std::string to;
    std::uint32_t buffer = 1;
    bool isNewestFirst = false;
    std::optional<Overflow> overflow{}; ///< What it does between layouts; nothing: as the run has it.
};

/// What of a live run's links, layouts and blocks may be changed while it runs. All layouts stand still for
/// each change; what is refused is a `ControlException`.
///
/// Requires: the caller is not inside a step, a handler or an observer, which hold a gate already. [any]
class QUILLMERE_API LiveStructure {
public:
    /// None of the two is owned. [setup]
    LiveStructure(LiveGraph& liveGraph, const BlockCatalogue& blockCatalogue)
        : graph(liveGraph), catalogue(blockCatalogue) {}

    /// Moves a block to another layout: its links choose their kind anew, and what is in flight on them is
    /// lost.
    void move(const std::string& block, const std::string& layout);
    /// Makes a link, takes down the one of an input.
    void attach(const LinkRequest& request);
    void detach(const std::string& input);
    /// Adds a block of a plug-in, without links and with the settings that it is born with.
    void add(const std::string& id, const std::string& type, const std::string& layout);

private:
    void requireNoLoop(const LinkRequest& request, const Core::AbstractOutputPin& from,
                       const Core::AbstractInputPin& to);

    LiveGraph& graph;
    const BlockCatalogue& catalogue;
};

} // namespace Quillmere::Host
