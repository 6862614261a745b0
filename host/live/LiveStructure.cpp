// SPDX-License-Identifier: MIT
#include "host/live/LiveStructure.h"

#include "host/ends/HostBlock.h"
#include "host/live/ControlException.h"
#include "host/live/LiveGraph.h"
#include "host/text/Complaint.h"
#include "host/text/CaughtText.h"

#include <Poco/Exception.h>

#include <utility>

namespace Quillmere::Host {

namespace {
/// Gives an input without a link its buffer back. Where there is no memory for it the input keeps what it
/// has: its next link brings its own.
void restoreBuffer(Core::AbstractInputPin& input, std::uint32_t capacity, bool isLifo) noexcept {
    try {
        input.setIsLifo(isLifo);
        input.setBufferCapacity(capacity);
    } catch (const std::exception&) {
    }
}

void attachOrRefuse(const LinkRequest& request, Core::AbstractOutputPin& from, Core::AbstractInputPin& to) {
    try {
        from.attach(to, false);
    } catch (const Poco::Exception& exception) {
        throw ControlException(Complaint::sentence({},
                                                   "'" + request.from + "' and '" + request.to +
                                                       "' can't be linked (" + wordsOf(exception) + ")",
                                                   "two pins that fit"));
    }
}
} // namespace

void LiveStructure::move(const std::string& block, const std::string& layout) {
    const LiveGraph::Standstill still(graph);
    Core::Filter& moved = graph.getBlocks().getBlock(block);
    LiveLayout& to = graph.getLayout(layout);
    LiveLayout* const from = graph.layoutOf(moved);
    if (from == &to) return;
    if (from != nullptr && from->getClock() == &moved)
        throw ControlException({{},
                                "the block '" + block + "', which is the clock of '" + from->getId() + "'",
                                "a block that another one drives"});
    try {
        to.getBlocks().add(moved);
    } catch (...) {
        if (graph.layoutOf(moved) != from) graph.rearrange(); // without some of its links
        throw;
    }
    graph.rearrange();
}

void LiveStructure::attach(const LinkRequest& request) {
    const LiveGraph::Standstill still(graph);
    Core::AbstractOutputPin& from = graph.getBlocks().getOutput(request.from);
    Core::AbstractInputPin& to = graph.getBlocks().getInput(request.to);
    if (to.getConnectedOutput() != nullptr)
        throw ControlException({{}, "the input '" + request.to + "', which has a link", "one without"});
    if (request.overflow == Overflow::Wait) requireNoLoop(request, from, to);
    if (request.buffer == 0) throw ControlException({{}, "a buffer of 0", "1 sample at least"});
    const std::uint32_t formerBuffer = to.getBufferCapacity();
    const bool wasNewestFirst = to.getIsLifo();
    try {
        graph.setOverflow(to, request.overflow);
        to.setBufferCapacity(request.buffer);
        to.setIsLifo(request.isNewestFirst);
        attachOrRefuse(request, from, to);
    } catch (...) {
        graph.setOverflow(to, {});
        restoreBuffer(to, formerBuffer, wasNewestFirst);
        throw;
    }
    graph.rearrange();
}

/// Layouts that feed each other can't wait for each other.
void LiveStructure::requireNoLoop(const LinkRequest& request, const Core::AbstractOutputPin& from,
                                  const Core::AbstractInputPin& to) {
    const LiveLayout& sender = graph.getLayout(Core::layoutOf(from)->getName());
    const LiveLayout& reader = graph.getLayout(Core::layoutOf(to)->getName());
    if (&sender != &reader && graph.getIsLeading(reader, sender))
        throw ControlException({{},
                                "'overflow: wait' from '" + request.from + "' to '" + request.to +
                                    "', whose layouts feed each other in a loop",
                                "'overflow: drop'"});
}

void LiveStructure::detach(const std::string& input) {
    const LiveGraph::Standstill still(graph);
    Core::AbstractInputPin& to = graph.getBlocks().getInput(input);
    if (to.getConnectedOutput() == nullptr)
        throw ControlException({{}, "the input '" + input + "', which has no link", "one that has"});
    to.detachAll();
    graph.setOverflow(to, {});
    graph.rearrange();
}

void LiveStructure::add(const std::string& id, const std::string& type, const std::string& layout) {
    const LiveGraph::Standstill still(graph);
    if (!GraphDescription::getIsId(id))
        throw ControlException({{}, "the id '" + id + "'", GraphDescription::kIdLetters});
    if (graph.getBlocks().getIsKnown(id))
        throw ControlException({{}, "the id '" + id + "' a second time", "an id of its own"});
    LiveLayout& to = graph.getLayout(layout);
    // The host's own blocks are told what they read and write before a run.
    BlockPtr block = catalogue.getIsHostType(type) ? nullptr : catalogue.create(type, id);
    if (block == nullptr)
        throw ControlException(
            Complaint::unknown({}, "the block type '" + type + "'", type, catalogue.getTypeNames()));
    if (dynamic_cast<const HostBlock*>(block.get()) != nullptr)
        throw ControlException(
            Complaint{{},
                      "the block type '" + type + "', which is a source or a sink",
                      "another, since they are told what they read and write before a run"});
    graph.add(std::move(block), to);
}

} // namespace Quillmere::Host
