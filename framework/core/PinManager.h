// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/NamedObject.h"

#include <atomic>
#include <vector>

namespace Quillmere::Core {

class AbstractInputPin;
class AbstractOutputPin;
class LayoutManager;
class Synchronizer;

/// Knows a block's pins by name, and the layout that holds the block. Pins enter and leave by themselves;
/// they are members of the block, not owned here.
class QUILLMERE_API PinManager : public NamedObject {
public:
    explicit PinManager(const std::string& name);
    virtual ~PinManager();

    /// The gate of the block's layout; null while it is in none. [any]
    virtual Synchronizer* getSynchronizer() { return synchronizer.load(std::memory_order_acquire); }

    /// The layout that holds the block; null while none does. [any]
    LayoutManager* getManager() const { return manager.load(std::memory_order_acquire); }

    /// The pin of that name. Raises `Poco::NotFoundException`, which tells what there is. [any]
    AbstractInputPin& getInputPin(const std::string& pinName) const;
    AbstractOutputPin& getOutputPin(const std::string& pinName) const;

    /// All pins in order of creation. [any]
    const std::vector<AbstractInputPin*>& getInputPins() const { return inputs; }
    const std::vector<AbstractOutputPin*>& getOutputPins() const { return outputs; }

protected:
    /// Requires: the gates of the former layout and of `layout` are held. [any, guarded]
    void storeManager(LayoutManager* layout);

private:
    friend class AbstractInputPin;
    friend class AbstractOutputPin;
    friend class PropertyBag;

    std::vector<AbstractInputPin*> inputs;
    std::vector<AbstractOutputPin*> outputs;
    // Published with release and read with acquire: who finds a layout here finds a whole one.
    std::atomic<LayoutManager*> manager{nullptr};
    /// that of `manager`, kept so that a guard finds it in one load
    std::atomic<Synchronizer*> synchronizer{nullptr};
    /// the same for its settings, which look here first; null where `getSynchronizer` tells another one
    std::atomic<Synchronizer*> gateOfSettings{nullptr};
};

} // namespace Quillmere::Core
