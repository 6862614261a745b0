// SPDX-License-Identifier: MIT
// A plug-in for the tests that breaks every rule that a plug-in can break. RUDE in the environment says how
// it breaks those of being loaded; its blocks break the others.
#include "framework/Quillmere.h"
#include "plugin/EntryPoints.h"
#include "plugin/FilterFactory.h"

#include <cstdlib>
#include <exception>
#include <memory>
#include <string>

namespace {

using namespace Quillmere::Core;

/// Known to nobody outside this file.
class OwnTrouble : public std::exception {
public:
    const char* what() const noexcept override { return "a trouble of its own"; }
};

bool isTold(const char* how) {
    const char* const told = std::getenv("RUDE");
    return told != nullptr && std::string(told) == how;
}

/// Raises when it is made: an own exception, or a number for a block named "number".
class RudeMade final : public Filter {
public:
    static constexpr const char* kTypeName = "RudeMade";
    explicit RudeMade(const std::string& name) : Filter(name, true) {
        if (name == "number") throw 42;
        throw OwnTrouble();
    }
    void process() override {}
    const char* getTypeName() const override { return kTypeName; }
};

/// Raises at the first sample; and in its handler, when "Fire" is set: an own exception, or a number with
/// "Number".
class RudeStep final : public Filter {
public:
    static constexpr const char* kTypeName = "RudeStep";
    explicit RudeStep(const std::string& name)
        : Filter(name, true), in("in", this), out("out", this), number("Number", &getPropertyBag()),
          fire("Fire", &getPropertyBag()) {
        fire.setChangeHandler(this, &RudeStep::raise);
    }
    void process() override {
        if (in.hasData()) raise();
    }
    const char* getTypeName() const override { return kTypeName; }

private:
    void raise() {
        if (number.getValue()) throw 42;
        throw OwnTrouble();
    }
    InputPin<MatrixXd> in;
    OutputPin<MatrixXd> out;
    ValueProperty<bool> number;
    ValueProperty<bool> fire;
};

/// Makes nothing.
class NullFactory final : public AbstractFilterFactory {
public:
    using AbstractFilterFactory::AbstractFilterFactory;
    const char* getTypeName() const override { return "RudeNull"; }
    Filter* create(const std::string&) override { return nullptr; }
};

/// Makes blocks under any name, or under none.
class NamedFactory final : public AbstractFilterFactory {
public:
    NamedFactory(const char* blockType, const std::string& plugin)
        : AbstractFilterFactory(plugin, ComponentVersion("0.1")), typeName(blockType) {}
    const char* getTypeName() const override { return typeName; }
    Filter* create(const std::string& instanceName) override { return new RudeStep(instanceName); }

private:
    const char* typeName;
};

class RudePlugin final : public DefaultPlugin {
public:
    RudePlugin() : DefaultPlugin("Rude", "0.1") {
        const ComponentVersion own(getVersion());
        addFactory(std::make_unique<FilterFactory<RudeMade>>(getName(), own));
        addFactory(std::make_unique<FilterFactory<RudeStep>>(getName(), own));
        addFactory(std::make_unique<NullFactory>(getName(), own));
        if (isTold("null name")) enter(nullptr);
        if (isTold("empty name")) enter("");
        if (isTold("one name twice")) enter("RudeStep");
        if (isTold("name of Velmarind's")) enter("FilterGain");
        if (isTold("name of the host's")) enter("RecordingSink");
    }

private:
    void enter(const char* name) { addFactory(std::make_unique<NamedFactory>(name, getName())); }
};

RudePlugin* rude = nullptr;

} // namespace

void dllStartPlugin() {
    if (rude != nullptr) return;
    if (isTold("start")) throw OwnTrouble();
    if (isTold("start by number")) throw 42;
    rude = new RudePlugin();
    FlowManager::instance().getPluginManager().installPlugin(*rude);
}

void dllStopPlugin() {
    if (rude == nullptr) return;
    FlowManager::instance().getPluginManager().uninstallPlugin(*rude);
    delete rude;
    rude = nullptr;
    if (isTold("stop")) throw OwnTrouble();
    if (isTold("stop by number")) throw 42;
}

const char* dllGetQuillmereVersion() {
    return kFrameworkVersion;
}
