// SPDX-License-Identifier: MIT
#include "host/run/LossReview.h"

#include "framework/core/LossTeller.h"
#include "host/text/Counted.h"

#include <cstdint>
#include <string>

namespace Quillmere::Host {

namespace {
std::uint64_t waitingOf(const RunOutcome::Link& link) {
    return link.received - link.taken - link.lost;
}

std::string lossText(const RunOutcome::Link& link) {
    const std::string from = link.from.empty() ? "others" : "'" + link.from + "'";
    const std::string way = " that " + from + " sent to '" + link.to + "'";
    if (link.received == 1) return "the one sample" + way + " was lost";
    const std::string samples = counted(link.received, "sample") + way;
    if (link.taken == 0) return "none of the " + samples + " was taken";
    if (link.lost == 0)
        return std::to_string(waitingOf(link)) + " of the " + samples + " still waited at the end";
    return std::to_string(link.lost) + " of the " + samples +
           (link.lost == 1 ? " was lost, since it wasn't taken in time"
                           : " were lost, since it took them too late");
}
} // namespace

void warnOfLosses(bool isCutShort, RunOutcome& outcome) {
    for (const RunOutcome::Link& link : outcome.links)
        if (link.lost > 0 || (waitingOf(link) > 1 && !isCutShort))
            outcome.warnings.push_back({link.where, lossText(link)});
}

void askForLosses(const Graph& graph, const std::vector<Core::Filter*>& blocks, RunOutcome& outcome) {
    for (const Core::Filter* const block : blocks) {
        const auto* const teller = dynamic_cast<const Core::LossTeller*>(block);
        if (teller == nullptr) continue;
        const auto* const description = graph.getDescription().findBlock(block->getName());
        for (const std::string& sentence : teller->getLosses()) {
            Warning& warning = outcome.warnings.emplace_back();
            if (description != nullptr) warning.where = description->where;
            warning.text = "'" + block->getName() + "' (" + block->getTypeName() + "): " + sentence;
        }
        for (const std::string& sentence : teller->getNotes()) {
            RunOutcome::Note& note = outcome.notes.emplace_back();
            note.block = block->getName();
            note.text = sentence;
        }
    }
}

} // namespace Quillmere::Host
