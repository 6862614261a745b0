// SPDX-License-Identifier: MIT
#include "host/live/LiveStatistics.h"

#include "framework/Quillmere.h"
#include "host/text/Json.h"
#include "host/text/Table.h"

#include <cstdio>
#include <utility>

namespace Quillmere::Host {

namespace {
std::string fixed(double number) {
    char text[64];
    std::snprintf(text, sizeof text, "%.3f", number);
    return text;
}

LiveStatistics::Block statisticsOf(const Core::Filter& block) {
    LiveStatistics::Block entry;
    entry.id = block.getName();
    entry.type = block.getTypeName();
    if (const Core::LayoutManager* const layout = block.getManager()) entry.layout = layout->getName();
    entry.steps = block.stepTally.steps.get();
    for (const Core::AbstractOutputPin* const pin : block.getOutputPins())
        entry.samplesOut += pin->getSentCount();
    const std::uint64_t measured = block.stepTally.measuredSteps.get();
    if (measured > 0)
        entry.seconds = 1e-9 * static_cast<double>(block.stepTally.nanoseconds.get()) *
                        static_cast<double>(entry.steps) / static_cast<double>(measured);
    return entry;
}
} // namespace

LiveStatistics LiveStatistics::of(const std::vector<Core::Filter*>& blocks) {
    LiveStatistics statistics;
    for (const Core::Filter* const block : blocks) {
        LiveStatistics::Block entry = statisticsOf(*block);
        for (Core::AbstractInputPin* const pin : block->getInputPins()) {
            const Core::LinkCounts counts = pin->getCounts();
            entry.samplesIn += counts.taken;
            entry.lost += counts.getLost();
            const Core::AbstractOutputPin* const sender = pin->getConnectedOutput();
            if (sender == nullptr && counts.received == 0) continue;
            // Values of a timeline come from nobody's block.
            const std::string from =
                sender == nullptr ? "" : sender->getManager()->getName() + "." + sender->getName();
            statistics.links.push_back({from, block->getName() + "." + pin->getName(), counts.received,
                                        counts.taken, counts.getLost(), counts.waiting});
        }
        statistics.blocks.push_back(std::move(entry));
    }
    return statistics;
}

std::vector<std::string> LiveStatistics::getText() const {
    Table blockTable(0, 3);
    blockTable.add({"block", "type", "layout", "steps", "in", "out", "lost", "ms"});
    for (const Block& block : blocks)
        blockTable.add({block.id, block.type, block.layout, std::to_string(block.steps),
                        std::to_string(block.samplesIn), std::to_string(block.samplesOut),
                        std::to_string(block.lost), fixed(1e3 * block.seconds)});
    std::vector<std::string> lines = blockTable.getLines();
    if (links.empty()) return lines;
    lines.emplace_back();
    Table linkTable(0, 2);
    linkTable.add({"link", "", "received", "taken", "waiting", "lost"});
    for (const Link& link : links)
        linkTable.add({link.from.empty() ? "(none)" : link.from, "-> " + link.to,
                       std::to_string(link.received), std::to_string(link.taken),
                       std::to_string(link.waiting), std::to_string(link.lost)});
    for (std::string& line : linkTable.getLines())
        lines.push_back(std::move(line));
    return lines;
}

std::string LiveStatistics::getJson() const {
    std::vector<Json::Text> ofBlocks;
    for (const Block& block : blocks)
        ofBlocks.push_back(Json::object({{"id", Json::text(block.id)},
                                         {"type", Json::text(block.type)},
                                         {"layout", Json::text(block.layout)},
                                         {"steps", std::to_string(block.steps)},
                                         {"samplesIn", std::to_string(block.samplesIn)},
                                         {"samplesOut", std::to_string(block.samplesOut)},
                                         {"lost", std::to_string(block.lost)},
                                         {"seconds", Json::number(block.seconds)}}));
    std::vector<Json::Text> ofLinks;
    for (const Link& link : links)
        ofLinks.push_back(Json::object({{"from", link.from.empty() ? Json::null() : Json::text(link.from)},
                                        {"to", Json::text(link.to)},
                                        {"received", std::to_string(link.received)},
                                        {"taken", std::to_string(link.taken)},
                                        {"waiting", std::to_string(link.waiting)},
                                        {"lost", std::to_string(link.lost)}}));
    return Json::object({{"blocks", Json::list(ofBlocks)}, {"links", Json::list(ofLinks)}});
}

} // namespace Quillmere::Host
