// SPDX-License-Identifier: MIT
#include "framework/core/PropertyBag.h"

#include "tests/framework/TestBlocks.h"
#include "tests/support/Feed.h"

#include <gtest/gtest.h>

using namespace Support;
using namespace TestBlocks;

TEST(PropertyBagTest, HoldsSettingsInOrderOfCreation) {
    Plain block("block");
    ValueProperty<int> z("z", &block.getPropertyBag());
    const CommandProperty reset("Reset", &block.getPropertyBag());
    ValueProperty<double> a("a", &block.getPropertyBag());
    std::vector<std::string> names;
    for (const AbstractProperty* const property : block.getPropertyBag())
        names.push_back(property->getName());
    EXPECT_EQ(names, (std::vector<std::string>{"z", "Reset", "a"}));
    EXPECT_EQ(block.getPropertyBag().size(), 3u);
}

TEST(PropertyBagTest, FindsByLiteralName) {
    Plain block("block");
    ValueProperty<int> size("Windows Size", &block.getPropertyBag());
    EXPECT_EQ(block.getPropertyBag().find("Windows Size"), &size);
    EXPECT_EQ(block.getPropertyBag().find("windows size"), nullptr);
    EXPECT_EQ(&block.getProperty("Windows Size"), &size);
    const PropertyBagOwner& owner = block;
    EXPECT_EQ(&owner.getProperty("Windows Size"), &size);
    EXPECT_EQ(&owner.getPropertyBag(), &block.getPropertyBag());
}

TEST(PropertyBagTest, AnUnknownSettingIsNamedWithWhatThereIs) {
    Plain block("smooth");
    EXPECT_EQ(refusal<Poco::NotFoundException>([&] { block.getProperty("Gain"); }),
              "Block 'smooth' has no property 'Gain'; it has none");
    ValueProperty<int> order("Order", &block.getPropertyBag());
    ValueProperty<int> mode("Mode", &block.getPropertyBag());
    EXPECT_EQ(refusal<Poco::NotFoundException>([&] { block.getProperty("Gain"); }),
              "Block 'smooth' has no property 'Gain'; it has 'Order', 'Mode'");
    const PropertyBagOwner& owner = block;
    EXPECT_EQ(refusal<Poco::NotFoundException>([&] { owner.getProperty("order"); }),
              "Block 'smooth' has no property 'order'; it has 'Order', 'Mode'");
}

TEST(PropertyBagTest, ABagWithoutABlockHasNoGate) {
    PropertyBag bag(nullptr);
    const ValueProperty<int> setting("x", &bag);
    EXPECT_EQ(bag.getSynchronizer(), nullptr);
    EXPECT_EQ(&bag.get("x"), &setting);
    EXPECT_EQ(refusal<Poco::NotFoundException>([&] { bag.get("y"); }),
              "Block '' has no property 'y'; it has 'x'");
}
