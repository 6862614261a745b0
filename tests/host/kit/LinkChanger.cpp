// SPDX-License-Identifier: MIT
#include "tests/host/kit/LinkChanger.h"

#include "host/live/ControlException.h"

#include <algorithm>
#include <string>

namespace Support {

using namespace Quillmere::Host;

namespace {
/// Blocks that are added stay, so there is an end to it.
constexpr std::uint64_t kMostAdded = 4;
} // namespace

void LinkChanger::change() {
    switch (dice.below(8)) {
    case 0:
    case 1:
    case 2:
        return attempt(counts.moves, [&] {
            const std::string& block = dice.oneOf(range.blocks);
            run.getStructure().move(block, dice.oneOf(range.layouts));
        });
    case 3:
    case 4:
        return attach();
    case 5:
    case 6:
        return attempt(counts.detaches, [&] { run.getStructure().detach(dice.oneOf(range.inputs)); });
    default:
        if (dice.oneIn(10)) add();
        run.getStatistics();
    }
}

template <class Action>
void LinkChanger::attempt(std::uint64_t& count, Action action) {
    try {
        action();
        ++count;
    } catch (const ControlException& exception) {
        const std::string text = exception.what();
        const bool hasLink = text.find("which has a link; expected") != std::string::npos;
        const bool hasNone = text.find("which has no link; expected") != std::string::npos;
        if (!hasLink && !hasNone) throw;
        ++counts.refusals;
    }
}

void LinkChanger::attach() {
    const std::string& output = dice.oneOf(range.outputs);
    const std::string& input = dice.oneOf(range.inputs);
    if (!mayLead(output, input)) return;
    const LinkRequest request{.from = output,
                              .to = input,
                              .buffer = static_cast<std::uint32_t>(1 + dice.below(6)),
                              .isNewestFirst = dice.oneIn(3)};
    attempt(counts.attaches, [&] { run.getStructure().attach(request); });
}

bool LinkChanger::mayLead(const std::string& output, const std::string& input) const {
    if (range.order.empty()) return true;
    const auto placeOf = [this](const std::string& pin) {
        return std::find(range.order.begin(), range.order.end(), pin.substr(0, pin.find('.')));
    };
    return placeOf(output) < placeOf(input);
}

void LinkChanger::add() {
    if (counts.adds == kMostAdded) return;
    const std::string id = "added" + std::to_string(counts.adds);
    run.getStructure().add(id, "FilterGain", dice.oneOf(range.layouts));
    ++counts.adds;
    range.blocks.push_back(id);
    range.inputs.push_back(id + ".input");
    range.outputs.push_back(id + ".output");
    if (!range.order.empty()) range.order.push_back(id);
}

} // namespace Support
