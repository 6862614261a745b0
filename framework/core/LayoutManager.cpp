// SPDX-License-Identifier: MIT
#include "framework/core/LayoutManager.h"

#include "framework/core/AbstractInputPin.h"
#include "framework/core/AbstractOutputPin.h"

#include <algorithm>
#include <deque>
#include <functional>
#include <set>

namespace Quillmere::Core {

namespace {
using Gates = std::set<Synchronizer*, std::less<>>;

/// The gates of all blocks that a block is linked with, and its own.
Gates gatesAround(Filter& filter) {
    const Synchronizer::SubjectLocker<Filter> guard(filter);
    Gates gates{filter.getSynchronizer()};
    for (const AbstractInputPin* const input : filter.getInputPins())
        if (const AbstractOutputPin* const output = input->getConnectedOutput())
            gates.insert(output->getSynchronizer());
    for (const AbstractOutputPin* const output : filter.getOutputPins())
        for (const AbstractInputPin* const input : output->getAttachedInputs())
            gates.insert(input->getSynchronizer());
    gates.erase(nullptr);
    return gates;
}

void refreshLinks(Filter& filter) {
    for (AbstractOutputPin* const output : filter.getOutputPins())
        output->refreshInputs();
    for (AbstractInputPin* const input : filter.getInputPins())
        if (input->getConnectedOutput() != nullptr) input->rebuildStrategy();
}
} // namespace

LayoutManager::LayoutManager(const std::string& name) : NamedObject(name) {}

LayoutManager::~LayoutManager() {
    while (!filters.empty())
        remove(*filters.back());
}

void LayoutManager::add(Filter& filter) {
    place(filter, this);
}

void LayoutManager::remove(Filter& filter) {
    if (filter.getManager() == this) place(filter, nullptr);
}

void LayoutManager::place(Filter& filter, LayoutManager* destination) {
    for (;;) {
        Gates gates = gatesAround(filter);
        if (destination != nullptr) gates.insert(&destination->getSynchronizer());
        std::deque<Synchronizer::DisablerLocker> guards;
        for (Synchronizer* const gate : gates) // in the order of their addresses, as every guard takes them
            guards.emplace_back(gate, nullptr);
        // Until all gates were held, the block may have been moved, and its links changed; then the set of gates is not
        // the right one. The gate that a moved block has now would be taken out of order behind these.
        Synchronizer* const own = filter.getSynchronizer();
        if (own != nullptr && !gates.contains(own)) continue;
        const Gates now = gatesAround(filter);
        if (!std::includes(gates.begin(), gates.end(), now.begin(), now.end(), std::less<>())) continue;

        if (LayoutManager* const former = filter.getManager()) former->forget(filter);
        filter.setManager(destination);
        if (destination != nullptr) destination->filters.push_back(&filter);
        refreshLinks(filter);
        return;
    }
}

void LayoutManager::forget(Filter& filter) {
    std::erase(leftBehind, &filter);
    const auto found = std::find(filters.begin(), filters.end(), &filter);
    if (found == filters.end()) return;
    if (static_cast<std::size_t>(found - filters.begin()) < nextFilter) --nextFilter;
    filters.erase(found);
}

Filter* LayoutManager::takeLeftBehind() {
    Filter* const filter = leftBehind.front();
    leftBehind.erase(leftBehind.begin());
    return filter;
}

void LayoutManager::runStep() {
    struct PlainPass {
        bool begin() const { return true; }
        void step(Filter& filter) const { filter.process(); }
        void end() const {}
    } pass;
    runPass(pass);
}

void LayoutManager::arrange(const std::vector<Filter*>& order) {
    const auto rank = [&](const Filter* filter) { return std::find(order.begin(), order.end(), filter); };
    const Synchronizer::DisablerLocker guard(&synchronizer, nullptr);
    const auto isBefore = [&](const Filter* a, const Filter* b) { return rank(a) < rank(b); };
    leftBehind.insert(leftBehind.end(), filters.begin() + static_cast<std::ptrdiff_t>(nextFilter),
                      filters.end());
    std::stable_sort(leftBehind.begin(), leftBehind.end(), isBefore);
    std::stable_sort(filters.begin(), filters.end(), isBefore);
    nextFilter = filters.size();
}

} // namespace Quillmere::Core
