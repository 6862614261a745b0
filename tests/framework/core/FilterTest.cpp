// SPDX-License-Identifier: MIT
#include "framework/core/Filter.h"

#include "tests/framework/TestBlocks.h"
#include "tests/support/Feed.h"

#include <gtest/gtest.h>

#include <memory>

using namespace Support;
using namespace TestBlocks;

TEST(FilterTest, OutsideAnyLayoutItHasNoManagerAndNoGate) {
    Receiving block("block");
    EXPECT_EQ(block.getName(), "block");
    EXPECT_EQ(block.getManager(), nullptr);
    EXPECT_EQ(block.getSynchronizer(), nullptr);
    EXPECT_EQ(block.input.getSynchronizer(), nullptr);
}

TEST(FilterTest, OutsideAnyLayoutSettingsAndLinksWork) {
    Receiving block("block");
    ValueProperty<int> setting("setting", &block.getPropertyBag());
    setting.setValue(4);
    EXPECT_EQ(setting.getValue(), 4);
    OutputPin<MatrixXd> sender("sender", nullptr);
    sender.attach(block.input, false);
    std::vector<double> seen;
    block.received = [&](const MatrixXd& value, double) { seen.push_back(value(0)); };
    sendNumber(sender, 2.5);
    block.process();
    block.process();
    EXPECT_EQ(seen, std::vector<double>{2.5});
}

TEST(FilterTest, ItsBasesAreAPinManagerAndABagOwner) {
    Plain block("block");
    PinManager& pins = block;
    PropertyBagOwner& settings = block;
    EXPECT_EQ(pins.getName(), "block");
    EXPECT_EQ(settings.getPropertyBag().size(), 0u);
    EXPECT_EQ(static_cast<void*>(&pins), static_cast<void*>(&block)) << "the first base";
}

TEST(FilterTest, ABlockThatEndsLeavesItsLayoutAndItsLinks) {
    LayoutManager layout("layout");
    Counting sender("sender");
    layout.add(sender);
    {
        auto block = std::make_unique<Receiving>("block");
        layout.add(*block);
        sender.output.attach(block->input, false);
        EXPECT_EQ(layout.getFilters().size(), 2u);
    }
    EXPECT_EQ(layout.getFilters(), std::vector<Filter*>{&sender});
    EXPECT_FALSE(sender.output.isAttached());
    layout.runStep();
}

TEST(FilterTest, TheHostTellsABlockOfItsLayout) {
    class Told final : public Plain {
    public:
        using Plain::Plain;
        std::vector<LayoutManager*> layouts;

    protected:
        void setManager(LayoutManager* const layout) override {
            layouts.push_back(layout);
            Plain::setManager(layout);
        }
    };
    LayoutManager one("one");
    LayoutManager two("two");
    Told block("block");
    one.add(block);
    two.add(block);
    two.remove(block);
    EXPECT_EQ(block.layouts, (std::vector<LayoutManager*>{&one, &two, nullptr}));
}
