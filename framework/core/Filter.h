// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/PinManager.h"
#include "framework/core/PropertyBag.h"
#include "framework/core/Tally.h"

namespace Quillmere::Core {

/// Base of every block: named, with pins and settings, placed in a layout by the host.
class QUILLMERE_API Filter : public PinManager, public PropertyBagOwner {
public:
    /// Every block passes true for the second argument, which nothing reads.
    Filter(const std::string& name, bool);
    /// Leaves the layout. Requires: the layout's loop is not in this block; better, the host has removed it.
    ~Filter() override;

    /// The run step: at most one step of work, and an immediate return when nothing is there. [run]
    virtual void process() = 0;

protected:
    friend class LayoutManager;
    /// The host's word on the layout that now holds the block, null for none. [any, guarded]
    virtual void setManager(LayoutManager* const layout);

public:
    /// The block's type name, the same static text as its factory's. [any]
    virtual const char* getTypeName() const = 0;

    /// What a loop counts of this block's steps, if it counts at all. [run to write, any to read]
    StepTally stepTally;
};

} // namespace Quillmere::Core
