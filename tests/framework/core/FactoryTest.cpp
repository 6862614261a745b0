// SPDX-License-Identifier: MIT
#include "framework/core/Factory.h"

#include "tests/framework/TestBlocks.h"

#include <gtest/gtest.h>

using namespace TestBlocks;

namespace {
int liveBlocks = 0;

class Mortal final : public Plain {
public:
    explicit Mortal(const std::string& name) : Plain(name) { ++liveBlocks; }
    ~Mortal() override { --liveBlocks; }
    const char* getTypeName() const override { return "Mortal"; }
};

class MortalFactory final : public AbstractFilterFactory {
public:
    using AbstractFilterFactory::AbstractFilterFactory;
    const char* getTypeName() const override { return "Mortal"; }
    Filter* create(const std::string& instanceName) override { return new Mortal(instanceName); }
};
} // namespace

TEST(FactoryTest, KnowsThePluginThatOffersIt) {
    const MortalFactory factory("Some plug-in", ComponentVersion("1.2"));
    EXPECT_EQ(factory.getPluginName(), "Some plug-in");
    EXPECT_EQ(factory.getVersion(), ComponentVersion("1.2"));
    const AbstractFactory<Filter>& root = factory;
    EXPECT_STREQ(root.getTypeName(), "Mortal");
}

TEST(FactoryTest, DestroyEndsTheBlockAndIgnoresNull) {
    MortalFactory factory("plug-in", ComponentVersion("1"));
    AbstractFactory<Filter>& root = factory;
    Filter* const block = root.create("name");
    EXPECT_EQ(liveBlocks, 1);
    root.destroy(nullptr);
    EXPECT_EQ(liveBlocks, 1);
    root.destroy(block);
    EXPECT_EQ(liveBlocks, 0);
}

TEST(FactoryTest, TwoBlocksOfOneNameAreIndependent) {
    MortalFactory factory("plug-in", ComponentVersion("1"));
    Filter* const one = factory.create("name");
    Filter* const two = factory.create("name");
    EXPECT_NE(one, two);
    EXPECT_EQ(one->getName(), "name");
    EXPECT_EQ(two->getName(), "name");
    factory.destroy(one);
    EXPECT_EQ(liveBlocks, 1);
    EXPECT_EQ(two->getName(), "name");
    factory.destroy(two);
    EXPECT_EQ(liveBlocks, 0);
}
