// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/ComponentVersion.h"
#include "framework/core/Filter.h"

#include <string>

namespace Quillmere::Core {

/// Makes and destroys objects of one kind by name.
template <class Product>
class AbstractFactory {
public:
    /// `pluginName` is the name of the plug-in that offers the factory, not the product's.
    AbstractFactory(const std::string& pluginName, const ComponentVersion& pluginVersion)
        : name(pluginName), version(pluginVersion) {}
    virtual ~AbstractFactory() = default;
    AbstractFactory(const AbstractFactory&) = delete;
    AbstractFactory& operator=(const AbstractFactory&) = delete;

    /// Ends what `create` made; null is ignored. [setup]
    virtual void destroy(Product* product) = 0;
    /// The product's type name, a static text. [any]
    virtual const char* getTypeName() const = 0;
    /// A new product, owned by the caller, who gives it back through `destroy`; null if there is no memory.
    /// The factory keeps no record of names. [setup]
    virtual Product* create(const std::string& instanceName) = 0;

    const std::string& getPluginName() const { return name; }
    const ComponentVersion& getVersion() const { return version; }

private:
    const std::string name;
    const ComponentVersion version;
};

/// What a plug-in lists for each of its blocks.
class QUILLMERE_API AbstractFilterFactory : public AbstractFactory<Filter> {
public:
    using AbstractFactory::AbstractFactory;
    ~AbstractFilterFactory() override;
    void destroy(Filter* filter) override;
};

} // namespace Quillmere::Core
