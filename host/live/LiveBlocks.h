// SPDX-License-Identifier: MIT
#pragma once

#include "framework/Quillmere.h"
#include "host/live/ControlException.h"

#include <mutex>
#include <string>
#include <vector>

namespace Quillmere::Host {

/// The blocks of a live run, and what they have, by name. Every operation may be called by any thread; a name
/// that there isn't raises a `ControlException`. [any]
class LiveBlocks {
public:
    /// A setting or command, and the block that has it.
    struct Setting {
        Core::Filter& block;
        Core::AbstractProperty& property;
    };

    /// In the order of the file, then in that in which they were added.
    std::vector<Core::Filter*> getAll() const;
    Core::Filter& getBlock(const std::string& id) const;
    bool getIsKnown(const std::string& id) const;
    /// By `block.Setting`, split at the first dot.
    Setting getSetting(const std::string& name) const;
    /// By `block.pin`.
    Core::AbstractInputPin& getInput(const std::string& name) const;
    Core::AbstractOutputPin& getOutput(const std::string& name) const;

    /// Takes memory for one more block, so that adding it can't fail.
    void reserveOne();
    /// The block is not owned and outlives the run.
    void add(Core::Filter& block);

private:
    Core::Filter* find(const std::string& id) const;

    mutable std::mutex names;          ///< Innermost; held for a look at `blocks`.
    std::vector<Core::Filter*> blocks; ///< Under `names`.
};

} // namespace Quillmere::Host
