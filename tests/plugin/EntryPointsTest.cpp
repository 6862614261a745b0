// SPDX-License-Identifier: MIT
#include "plugin/EntryPoints.h"

#include "framework/Quillmere.h"
#include "plugin/VelmarindPlugin.h"
#include "tests/support/Feed.h"

#include <gtest/gtest.h>

#include <malloc.h>

using namespace Quillmere::Core;

namespace {
PluginManager& registry() {
    return FlowManager::instance().getPluginManager();
}

VelmarindPlugin* installed() {
    return registry().getPlugins().empty() ? nullptr
                                           : dynamic_cast<VelmarindPlugin*>(registry().getPlugins().front());
}

class EntryPointsTest : public testing::Test {
protected:
    ~EntryPointsTest() override { dllStopPlugin(); }
};
} // namespace

TEST_F(EntryPointsTest, StartInstallsThePlugin) {
    ASSERT_EQ(installed(), nullptr);
    dllStartPlugin();
    ASSERT_NE(installed(), nullptr);
    EXPECT_EQ(registry().getPlugins().size(), 1u);
    EXPECT_EQ(registry().getFactories(), installed()->getFactories());
    EXPECT_NE(registry().findFactory("FilterGain"), nullptr);
}

TEST_F(EntryPointsTest, ASecondStartIsHarmless) {
    dllStartPlugin();
    const VelmarindPlugin* const first = installed();
    const std::size_t factories = registry().getFactories().size();
    dllStartPlugin();
    EXPECT_EQ(installed(), first);
    EXPECT_EQ(registry().getPlugins().size(), 1u);
    EXPECT_EQ(registry().getFactories().size(), factories);
    dllStopPlugin();
    EXPECT_TRUE(registry().getPlugins().empty()) << "one stop is enough";
    EXPECT_TRUE(registry().getFactories().empty());
}

TEST_F(EntryPointsTest, StopWithoutStartDoesNothing) {
    dllStopPlugin();
    dllStartPlugin();
    dllStopPlugin();
    dllStopPlugin();
    EXPECT_TRUE(registry().getPlugins().empty());
}

TEST_F(EntryPointsTest, AStartAfterAStopBuildsAFreshPlugin) {
    dllStartPlugin();
    const std::size_t factories = registry().getFactories().size();
    dllStopPlugin();
    dllStartPlugin();
    ASSERT_NE(installed(), nullptr);
    EXPECT_EQ(registry().getFactories().size(), factories);
    AbstractFilterFactory* const factory = registry().getFactories().front();
    Filter* const block = factory->create("again");
    EXPECT_EQ(block->getName(), "again");
    factory->destroy(block);
}

/// Under a sanitizer the heap tells nothing here, but a second deletion or a forgotten one ends the program
/// there.
TEST_F(EntryPointsTest, StopDeletesThePluginAndAllThatItOwns) {
    const auto inUse = [] { return ::mallinfo2().uordblks; };
    dllStartPlugin(); // the registry's own lists grow once
    dllStopPlugin();
    const std::size_t before = inUse();
    dllStartPlugin();
    const std::size_t started = inUse();
    dllStartPlugin();
    EXPECT_EQ(inUse(), started) << "a second start makes nothing";
    dllStopPlugin();
    EXPECT_EQ(inUse(), before);
}

TEST_F(EntryPointsTest, TheFrameworkVersionIsToldInAnyState) {
    EXPECT_STREQ(dllGetQuillmereVersion(), "0.10.0");
    EXPECT_TRUE(registry().getPlugins().empty()) << "asking starts nothing";
    dllStartPlugin();
    EXPECT_STREQ(dllGetQuillmereVersion(), "0.10.0");
    dllStopPlugin();
    EXPECT_STREQ(dllGetQuillmereVersion(), "0.10.0");
}

TEST_F(EntryPointsTest, BlocksOutliveTheFactoriesThatMadeThem) {
    dllStartPlugin();
    Filter* const block = registry().findFactory("FilterGain")->create("left over");
    dllStopPlugin();
    EXPECT_EQ(block->getName(), "left over") << "the plug-in keeps no list of blocks";
    block->process();
    delete block;
}
