// SPDX-License-Identifier: MIT
#include "framework/core/FlowManager.h"

#include "tests/framework/core/Listening.h"

#include <gtest/gtest.h>

using namespace Quillmere::Core;

TEST(FlowManagerTest, ThereIsOneWithOneRegistry) {
    const FlowManager& manager = FlowManager::instance();
    EXPECT_EQ(&manager, &FlowManager::instance());
    EXPECT_EQ(&manager.getPluginManager(), &FlowManager::instance().getPluginManager());
}

TEST(FlowManagerTest, KeepsTheListenerThatItIsGiven) {
    EXPECT_EQ(FlowManager::instance().getLinkListener(), nullptr);
    {
        Listening listening;
        EXPECT_EQ(FlowManager::instance().getLinkListener(), &listening);
    }
    EXPECT_EQ(FlowManager::instance().getLinkListener(), nullptr);
}
