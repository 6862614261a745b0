// SPDX-License-Identifier: MIT
#include "host/live/LiveBlocks.h"

#include "host/text/Address.h"
#include "host/text/Complaint.h"

#include <algorithm>

namespace Quillmere::Host {

namespace {
template <class Things>
[[noreturn]] void refuse(const Things& things, const std::string& name, const std::string& found) {
    std::vector<std::string> known;
    for (const auto* const thing : things)
        known.push_back(thing->getName());
    throw ControlException(Complaint::unknown({}, found, name, known, "one of ", "something that is there"));
}

/// The thing of that name; null where there is none.
template <class Things>
auto find(const Things& things, const std::string& name) {
    const auto found = std::find_if(things.begin(), things.end(),
                                    [&](const auto* thing) { return thing->getName() == name; });
    return found == things.end() ? nullptr : *found;
}

/// A member of a block, or a refusal that lists those that there are.
template <class Things>
auto& require(const Things& things, const Address& address, const char* what) {
    if (auto* const thing = find(things, address.member)) return *thing;
    refuse(things, address.member,
           std::string("the ") + what + " '" + address.member + "' of '" + address.block + "'");
}

Address addressOf(const std::string& name, const char* member) {
    Address address(name);
    if (!address.hasMember) throw ControlException({{}, "'" + name + "'", std::string("BLOCK.") + member});
    return address;
}
} // namespace

std::vector<Core::Filter*> LiveBlocks::getAll() const {
    const std::lock_guard lock(names);
    return blocks;
}

Core::Filter* LiveBlocks::find(const std::string& id) const {
    const std::lock_guard lock(names);
    return Host::find(blocks, id);
}

Core::Filter& LiveBlocks::getBlock(const std::string& id) const {
    if (Core::Filter* const block = find(id)) return *block;
    refuse(getAll(), id, "the block '" + id + "'");
}

bool LiveBlocks::getIsKnown(const std::string& id) const {
    return find(id) != nullptr;
}

LiveBlocks::Setting LiveBlocks::getSetting(const std::string& name) const {
    const Address address = addressOf(name, "SETTING");
    Core::Filter& block = getBlock(address.block);
    return {block, require(block.getPropertyBag(), address, "setting")};
}

Core::AbstractInputPin& LiveBlocks::getInput(const std::string& name) const {
    const Address address = addressOf(name, "PIN");
    return require(getBlock(address.block).getInputPins(), address, "input");
}

Core::AbstractOutputPin& LiveBlocks::getOutput(const std::string& name) const {
    const Address address = addressOf(name, "PIN");
    return require(getBlock(address.block).getOutputPins(), address, "output");
}

void LiveBlocks::reserveOne() {
    const std::lock_guard lock(names);
    blocks.reserve(blocks.size() + 1);
}

void LiveBlocks::add(Core::Filter& block) {
    const std::lock_guard lock(names);
    blocks.push_back(&block);
}

} // namespace Quillmere::Host
