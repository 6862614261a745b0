// SPDX-License-Identifier: MIT
#pragma once

#include "framework/core/Factory.h"

#include <memory>
#include <string>
#include <vector>

namespace Quillmere::Core {

/// What a plug-in tells of itself.
struct PluginMetaData {
    std::string pluginVersion;
    std::string hostVersion;
    std::string pluginName;
    std::string description;
    std::string platform;
    std::string buildDate;
};

/// What `PluginManager` installs.
class QUILLMERE_API Plugin : public NamedObject {
public:
    using NamedObject::NamedObject;
    virtual ~Plugin();

    /// Makes the plug-in's factories usable, and unusable again. [setup]
    virtual void install() = 0;
    virtual void uninstall() = 0;
    virtual const PluginMetaData& getMetaData() const = 0;
};

/// A plug-in with meta data and a list of factories, which it owns.
class QUILLMERE_API DefaultPlugin : public Plugin {
public:
    DefaultPlugin(const std::string& name, const std::string& version);
    /// Deletes the factories, not the blocks that they made.
    ~DefaultPlugin() override;

    void install() override;
    void uninstall() override;
    const PluginMetaData& getMetaData() const override { return metaData; }

    const std::string& getVersion() const { return version; }
    /// In order of registration. [any]
    const std::vector<AbstractFilterFactory*>& getFactories() const { return factories; }

protected:
    /// Appends `factory`, whose owner the plug-in becomes. [setup]
    void addFactory(std::unique_ptr<AbstractFilterFactory> factory);

    PluginMetaData metaData; ///< filled by the constructor of the concrete plug-in

private:
    const std::string version;
    std::vector<AbstractFilterFactory*> factories; ///< owned
};

} // namespace Quillmere::Core
