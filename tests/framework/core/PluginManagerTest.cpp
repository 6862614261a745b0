// SPDX-License-Identifier: MIT
#include "framework/core/PluginManager.h"

#include "tests/framework/core/TestPlugin.h"
#include "tests/support/Feed.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <type_traits>

using Support::refusal;

namespace {
PluginManager& registry() {
    return FlowManager::instance().getPluginManager();
}

std::string namesOf(const std::vector<AbstractFilterFactory*>& factories) {
    std::string names;
    for (const AbstractFilterFactory* const factory : factories)
        names += std::string(factory->getTypeName()) + " ";
    return names;
}

using Plugins = std::vector<Plugin*>;
} // namespace

TEST(PluginManagerTest, AnInstalledPluginsFactoriesAreFoundByName) {
    TestPlugin plugin("plug-in", "1", {"B", "A"});
    EXPECT_EQ(registry().findFactory("A"), nullptr);
    registry().installPlugin(plugin);
    EXPECT_EQ(registry().getPlugins(), Plugins{&plugin});
    EXPECT_EQ(registry().findFactory("A"), plugin.getFactories()[1]);
    EXPECT_EQ(registry().findFactory("a"), nullptr) << "unknown";
    EXPECT_EQ(registry().findFactory(""), nullptr);
    registry().uninstallPlugin(plugin);
    EXPECT_EQ(registry().findFactory("A"), nullptr);
    EXPECT_TRUE(registry().getPlugins().empty());
    EXPECT_EQ(TestFactory::live, 2) << "uninstalling deletes nothing";
}

TEST(PluginManagerTest, FactoriesComeInOrderOfInstallation) {
    TestPlugin later("later", "1", {"Z", "A"});
    TestPlugin first("first", "1", {"M", "Z"});
    registry().installPlugin(first);
    registry().installPlugin(later);
    EXPECT_EQ(namesOf(registry().getFactories()), "M Z Z A ");
    EXPECT_EQ(registry().findFactory("Z"), first.getFactories()[1]) << "of two, the one installed first";
    registry().uninstallPlugin(first);
    EXPECT_EQ(namesOf(registry().getFactories()), "Z A ");
    EXPECT_EQ(registry().findFactory("Z"), later.getFactories()[0]);
    registry().uninstallPlugin(later);
}

TEST(PluginManagerTest, APluginIsInstalledOnce) {
    TestPlugin plugin("Velmar", "1", {"A"});
    registry().installPlugin(plugin);
    EXPECT_EQ(refusal<Poco::ExistsException>([&] { registry().installPlugin(plugin); }),
              "Plug-in 'Velmar' is installed");
    EXPECT_EQ(registry().getFactories().size(), 1u);
    registry().uninstallPlugin(plugin);
    registry().uninstallPlugin(plugin); // passed over
    EXPECT_TRUE(registry().getFactories().empty());
}

TEST(PluginManagerTest, APluginIsToldToLeaveOnceAndAStrangerNotAtAll) {
    class Counted final : public TestPlugin {
    public:
        Counted() : TestPlugin("counted", "1", {"A"}) {}
        void uninstall() override {
            ++uninstalled;
            TestPlugin::uninstall();
        }
        int uninstalled = 0;
    } plugin, stranger;
    registry().installPlugin(plugin);
    registry().uninstallPlugin(stranger);
    registry().uninstallPlugin(plugin);
    registry().uninstallPlugin(plugin);
    EXPECT_EQ(stranger.uninstalled, 0);
    EXPECT_EQ(plugin.uninstalled, 1);
}

TEST(PluginManagerTest, APluginThatFailsToInstallIsUninstalledLikeAnyOther) {
    class Failing final : public TestPlugin {
    public:
        Failing() : TestPlugin("failing", "1", {"A"}) {}
        void install() override {
            TestPlugin::install();
            throw std::runtime_error("no room");
        }
    } plugin;
    EXPECT_EQ(refusal<std::runtime_error>([&] { registry().installPlugin(plugin); }), "no room");
    EXPECT_EQ(registry().getPlugins(), Plugins{&plugin});
    registry().uninstallPlugin(plugin);
    EXPECT_TRUE(registry().getFactories().empty());
    EXPECT_TRUE(registry().getPlugins().empty());
}

TEST(PluginManagerTest, NobodyMakesAnother) {
    EXPECT_FALSE(std::is_default_constructible_v<PluginManager>)
        << "plug-ins install their factories in the flow manager's, so another would stay empty";
    EXPECT_FALSE(std::is_copy_constructible_v<PluginManager>);
}
