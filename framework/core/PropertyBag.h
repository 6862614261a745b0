// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/PinManager.h"

#include <atomic>
#include <string>
#include <vector>

namespace Quillmere::Core {

class AbstractProperty;

/// A block's settings by name. Settings enter and leave by themselves; they are members of the block, not
/// owned here.
class QUILLMERE_API PropertyBag {
public:
    /// `blockOfBag` names the block in messages and gives the gate; not owned, may be null.
    explicit PropertyBag(PinManager* blockOfBag) : block(blockOfBag) {}
    PropertyBag(const PropertyBag&) = delete;
    PropertyBag& operator=(const PropertyBag&) = delete;

    /// In order of creation. [any]
    auto begin() const { return properties.begin(); }
    auto end() const { return properties.end(); }
    std::size_t size() const { return properties.size(); }

    /// Null when there is none of that name. [any]
    AbstractProperty* find(const std::string& propertyName) const;
    /// Raises `Poco::NotFoundException`, which tells what there is. [any]
    AbstractProperty& get(const std::string& propertyName) const;

    /// The gate of the block, may be null. [any]
    Synchronizer* getSynchronizer() const { return block != nullptr ? block->getSynchronizer() : nullptr; }

private:
    friend class AbstractProperty;

    /// Where the gate of the block stands, if it is that of its layout.
    const std::atomic<Synchronizer*>* findGate() const {
        return block != nullptr ? &block->gateOfSettings : &kNoGate;
    }

    static const std::atomic<Synchronizer*> kNoGate;
    PinManager* const block;
    std::vector<AbstractProperty*> properties;
};

/// Owns one `PropertyBag`.
class QUILLMERE_API PropertyBagOwner {
public:
    explicit PropertyBagOwner(PinManager* block) : bag(block) {}
    virtual ~PropertyBagOwner();

    /// [any]
    PropertyBag& getPropertyBag() { return bag; }
    const PropertyBag& getPropertyBag() const { return bag; }

    /// The setting of that name. Raises `Poco::NotFoundException`, which tells what there is. [any]
    const AbstractProperty& getProperty(const std::string& propertyName) const {
        return bag.get(propertyName);
    }
    AbstractProperty& getProperty(const std::string& propertyName) { return bag.get(propertyName); }

private:
    PropertyBag bag;
};

} // namespace Quillmere::Core
