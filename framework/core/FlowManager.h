// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/PluginManager.h"

#include <atomic>

namespace Quillmere::Core {

class AbstractInputPin;
class AbstractOutputPin;

/// How a host hears of links, and decides which of them run in the sender's thread.
class QUILLMERE_API LinkListener {
public:
    virtual ~LinkListener() = default;
    /// Before `input` learns of the link. `isSynchronous` comes in true; clear it for a link that changes
    /// threads (it counts for two blocks that are in no layout). What this raises goes to who attached, and
    /// no link is made. Called with the gates of both ends held. [any, guarded]
    virtual void linkAttached(AbstractOutputPin& output, AbstractInputPin& input, bool& isSynchronous) = 0;
    /// A synchronous link is about to be taken down, or couldn't be made after all since memory failed. Must
    /// not raise: pins take their links down in their destructors, too. [any, guarded]
    virtual void linkDetached(AbstractOutputPin& output, AbstractInputPin& input) = 0;
};

/// The process-wide manager.
class QUILLMERE_API FlowManager {
public:
    static FlowManager& instance();

    /// [any]
    PluginManager& getPluginManager() const { return pluginManager; }

    /// The listener is not owned; null for none, which leaves every link synchronous. [setup]
    void setLinkListener(LinkListener* listener) { linkListener = listener; }
    LinkListener* getLinkListener() const { return linkListener; }

private:
    FlowManager() = default;

    mutable PluginManager pluginManager;
    std::atomic<LinkListener*> linkListener{nullptr};
};

} // namespace Quillmere::Core
