// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Filter.h"
#include "framework/core/Synchronizer.h"

#include <vector>

namespace Quillmere::Core {

/// Blocks that run in one thread, and the gate between that thread and all others. Blocks are not owned.
class QUILLMERE_API LayoutManager : public NamedObject {
public:
    explicit LayoutManager(const std::string& name);
    /// Lets go of the blocks that are left, whatever they raise at the news; a link for whose new strategy
    /// there is no memory is taken down. Needs no memory. Requires: no loop runs, and nobody holds or wants
    /// the gate.
    ~LayoutManager();

    /// Appends the block, taking it out of the layout that held it; its links choose their strategies anew,
    /// and what was in flight on them is lost. A link for whose strategy there is no memory is taken down,
    /// and the reason raised when the block has moved. What the block's `setManager` raises leaves it where
    /// it was. [any, guarded]
    void add(Filter& filter);
    /// Lets go of the block, its links as in `add`; one of another layout is passed over. The block goes
    /// whatever is raised. [any, guarded]
    void remove(Filter& filter);

    /// In the order in which they run. Requires: the gate is held, or nobody changes the layout. [any,
    /// guarded]
    const std::vector<Filter*>& getFilters() const { return filters; }
    /// [any]
    Synchronizer& getSynchronizer() { return synchronizer; }

    /// One pass: each block's `process` once, in order, under the gate, which is given up between two blocks
    /// when somebody wants it. What a block raises ends the pass and goes to the caller. [run]
    void runStep();
    /// A pass by a loop of one's own: `pass.begin()` tells whether there is one, `pass.step(filter)` steps
    /// one block, `pass.end()` comes behind the last; all under the gate. [run]
    template <class Pass>
    void runPass(Pass& pass) {
        Synchronizer::StepLocker gate(synchronizer);
        nextFilter = 0;
        leftBehind.clear();
        if (!pass.begin()) return;
        while (Filter* const filter = takeNext()) {
            pass.step(*filter);
            gate.giveWayIfWanted();
        }
        pass.end();
    }

    /// Puts the blocks into the order in which `order` has them; those that it hasn't stay behind the others.
    /// A pass that is under way steps those that it hasn't stepped yet, in the new order. [any, guarded]
    void arrange(const std::vector<Filter*>& order);

private:
    static void place(Filter& filter, LayoutManager* destination);
    static void changeOver(Filter& filter, LayoutManager* destination);
    void forget(Filter& filter);
    /// The block that the pass steps next, null behind the last.
    Filter* takeNext() {
        if (nextFilter < filters.size()) return filters[nextFilter++];
        return leftBehind.empty() ? nullptr : takeLeftBehind();
    }
    Filter* takeLeftBehind();

    Synchronizer synchronizer;
    std::vector<Filter*> filters; ///< changed under the gate
    std::size_t nextFilter = 0;   ///< where the pass stands, so that a block removed meanwhile skips no other
    std::vector<Filter*> leftBehind; ///< what the pass has still to step since the order changed
};

} // namespace Quillmere::Core
