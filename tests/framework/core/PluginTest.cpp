// SPDX-License-Identifier: MIT
#include "framework/core/Plugin.h"

#include "tests/framework/core/TestPlugin.h"

#include <gtest/gtest.h>

TEST(PluginTest, HoldsNameVersionMetaDataAndFactories) {
    TestPlugin plugin("Some plug-in", "0.1", {"B", "A"});
    EXPECT_EQ(plugin.getName(), "Some plug-in");
    EXPECT_EQ(plugin.getVersion(), "0.1");
    const Plugin& root = plugin;
    EXPECT_EQ(root.getMetaData().description, "for tests");
    EXPECT_EQ(root.getMetaData().platform, "");
    ASSERT_EQ(plugin.getFactories().size(), 2u);
    EXPECT_STREQ(plugin.getFactories()[0]->getTypeName(), "B") << "in order of registration";
    EXPECT_STREQ(plugin.getFactories()[1]->getTypeName(), "A");
}

TEST(PluginTest, ItsEndDeletesEachFactoryOnceAndNoBlock) {
    Filter* block = nullptr;
    {
        const std::unique_ptr<Plugin> plugin =
            std::make_unique<TestPlugin>("plug-in", "1", std::vector<std::string>{"A", "B", "C"});
        EXPECT_EQ(TestFactory::live, 3);
        block = static_cast<TestPlugin&>(*plugin).getFactories()[1]->create("block");
    }
    EXPECT_EQ(TestFactory::live, 0);
    EXPECT_EQ(TestFactory::ended, 3);
    EXPECT_EQ(block->getName(), "block");
    delete block;
}

TEST(PluginTest, InstallAndUninstallOfferAndWithdrawTheFactories) {
    const PluginManager& registry = FlowManager::instance().getPluginManager();
    TestPlugin plugin("plug-in", "1", {"A", "B"});
    plugin.install();
    EXPECT_EQ(registry.getFactories(), plugin.getFactories());
    plugin.uninstall();
    EXPECT_TRUE(registry.getFactories().empty());
}
