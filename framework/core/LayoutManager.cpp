// SPDX-License-Identifier: MIT
#include "framework/core/LayoutManager.h"

#include "framework/core/AbstractInputPin.h"
#include "framework/core/AbstractOutputPin.h"

#include <algorithm>
#include <exception>
#include <functional>

namespace Quillmere::Core {

namespace {
/// The gates of a block, of those that it is linked with, and `also`, each at least once.
/// Requires: the block's gate is held.
template <class Visit>
void visitGatesAround(Filter& filter, Synchronizer* also, Visit visit) {
    visit(also);
    visit(filter.getSynchronizer());
    for (const AbstractInputPin* const input : filter.getInputPins())
        if (const AbstractOutputPin* const output = input->getConnectedOutput())
            visit(output->getSynchronizer());
    for (const AbstractOutputPin* const output : filter.getOutputPins())
        for (const AbstractInputPin* const input : output->getInputs())
            visit(input->getSynchronizer());
}

bool getIsBehind(const Synchronizer* gate, const Synchronizer* last) {
    return std::less<>()(last, gate);
}

/// Runs `action` with all gates around a block held, taken from the one behind `last` on in the order of
/// their addresses, as every guard takes them. Each has its guard in a call of its own, so that it needs no
/// memory: destructors come here. False, with nothing done, when block or links have changed meanwhile: then
/// the gates weren't the right ones.
template <class Action>
bool withGatesBehind(Synchronizer* last, Filter& filter, Synchronizer* also, const Action& action) {
    Synchronizer* next = nullptr;
    {
        // The gate of a block that was moved would be taken out of order behind those that are held.
        Synchronizer* const own = filter.getSynchronizer();
        if (own != nullptr && last != nullptr && !getIsBehind(own, last) && !own->getIsOwn()) return false;
        const Synchronizer::DisablerLocker look(own, nullptr);
        if (filter.getSynchronizer() != own) return false;
        bool holdsAll = true;
        visitGatesAround(filter, also, [&](Synchronizer* gate) {
            if (gate == nullptr) return;
            holdsAll = holdsAll && gate->getIsOwn();
            if (getIsBehind(gate, last) && (next == nullptr || getIsBehind(next, gate))) next = gate;
        });
        if (next == nullptr) {
            if (holdsAll) action();
            return holdsAll;
        }
    }
    const Synchronizer::DisablerLocker guard(next, nullptr);
    return withGatesBehind(next, filter, also, action);
}

/// Runs `action`; the first that such actions raise is kept in `reason`.
template <class Action>
void attempt(std::exception_ptr& reason, Action action) {
    try {
        action();
    } catch (...) {
        if (reason == nullptr) reason = std::current_exception();
    }
}

/// Lets the links of a block choose anew; one that can't is taken down.
void refreshLinks(Filter& filter, std::exception_ptr& reason) {
    for (AbstractOutputPin* const output : filter.getOutputPins())
        attempt(reason, [&] { output->refreshInputs(); });
    for (AbstractInputPin* const input : filter.getInputPins()) {
        if (input->getConnectedOutput() == nullptr) continue;
        attempt(reason, [&] {
            try {
                input->rebuildStrategy();
            } catch (...) {
                input->detachAll();
                throw;
            }
        });
    }
}
} // namespace

LayoutManager::LayoutManager(const std::string& name) : NamedObject(name) {}

LayoutManager::~LayoutManager() {
    while (!filters.empty()) {
        Filter& filter = *filters.back();
        std::exception_ptr nobodyToTell;
        if (filter.getManager() == this) attempt(nobodyToTell, [&] { place(filter, nullptr); });
        forget(filter); // one that says that it is elsewhere must not stand here for ever
    }
}

void LayoutManager::add(Filter& filter) {
    place(filter, this);
}

void LayoutManager::remove(Filter& filter) {
    if (filter.getManager() == this) place(filter, nullptr);
}

void LayoutManager::place(Filter& filter, LayoutManager* destination) {
    Synchronizer* const also = destination != nullptr ? &destination->synchronizer : nullptr;
    while (!withGatesBehind(nullptr, filter, also, [&] { changeOver(filter, destination); })) {
    }
}

void LayoutManager::changeOver(Filter& filter, LayoutManager* destination) {
    LayoutManager* const former = filter.getManager();
    if (destination != nullptr) destination->filters.push_back(&filter); // first: this one may fail
    std::exception_ptr reason;
    attempt(reason, [&] { filter.setManager(destination); });
    if (reason != nullptr && destination != nullptr) {
        destination->filters.pop_back();
        filter.storeManager(former);
        std::rethrow_exception(reason);
    }
    filter.storeManager(destination); // an override of `setManager` may have left that out
    if (former != nullptr) former->forget(filter);
    refreshLinks(filter, reason);
    if (reason != nullptr) std::rethrow_exception(reason);
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
