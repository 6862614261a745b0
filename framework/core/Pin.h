// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/PinManager.h"

#include <string>

namespace Quillmere::Core {

/// A named connection point of a block.
class QUILLMERE_API Pin : public NamedObject {
public:
    /// `pinManager` is not owned and may be null.
    Pin(const std::string& name, PinManager* const pinManager) : NamedObject(name), owner(pinManager) {}
    virtual ~Pin() = default;

    /// Takes down all links of this pin. [any, guarded]
    virtual void detachAll() = 0;
    /// Takes down those that run in the sender's thread. [any, guarded]
    virtual void detachSynchronous() = 0;
    /// Whether there is a link. [any, guarded]
    virtual bool isAttached() const = 0;
    /// Run-time type name of the sample's payload; both ends of a link give the same text. [any]
    virtual const std::string& getDataTypeName() const = 0;

    /// The owner, may be null. [any]
    PinManager* getManager() const { return owner; }
    /// The owner's gate, may be null. [any]
    Synchronizer* getSynchronizer() const { return owner != nullptr ? owner->getSynchronizer() : nullptr; }

private:
    PinManager* const owner;
};

/// The layout that holds a pin's block, null if either is missing. [any]
inline LayoutManager* layoutOf(const Pin& pin) {
    return pin.getManager() != nullptr ? pin.getManager()->getManager() : nullptr;
}

} // namespace Quillmere::Core
