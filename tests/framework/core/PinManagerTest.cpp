// SPDX-License-Identifier: MIT
#include "framework/core/PinManager.h"

#include "tests/framework/TestBlocks.h"
#include "tests/support/Feed.h"

#include <gtest/gtest.h>

using namespace Support;
using namespace TestBlocks;

namespace {
struct TwoAndOne final : Plain {
    using Plain::Plain;
    InputPin<MatrixXd> main{"in", this};
    InputPin<MatrixXd> reset{"reset", this};
    OutputPin<MatrixXd> out{"out", this};
};
} // namespace

TEST(PinManagerTest, KnowsItsPinsInOrderOfCreation) {
    TwoAndOne block("block");
    EXPECT_EQ(block.getInputPins(), (std::vector<AbstractInputPin*>{&block.main, &block.reset}));
    EXPECT_EQ(block.getOutputPins(), (std::vector<AbstractOutputPin*>{&block.out}));
}

TEST(PinManagerTest, FindsPinsByTheirLiteralNames) {
    TwoAndOne block("block");
    EXPECT_EQ(&block.getInputPin("in"), &block.main);
    EXPECT_EQ(&block.getInputPin("reset"), &block.reset);
    EXPECT_EQ(&block.getOutputPin("out"), &block.out);
}

TEST(PinManagerTest, AnUnknownPinIsNamedWithWhatThereIs) {
    const TwoAndOne block("smooth");
    EXPECT_EQ(refusal<Poco::NotFoundException>([&] { block.getInputPin("Reset"); }),
              "Block 'smooth' has no input pin 'Reset'; it has 'in', 'reset'");
    EXPECT_EQ(refusal<Poco::NotFoundException>([&] { block.getOutputPin("in"); }),
              "Block 'smooth' has no output pin 'in'; it has 'out'");
    const Plain empty("empty");
    EXPECT_EQ(refusal<Poco::NotFoundException>([&] { empty.getInputPin(""); }),
              "Block 'empty' has no input pin ''; it has none");
}

TEST(PinManagerTest, AGateMayBeOverridden) {
    class Private final : public Plain {
    public:
        using Plain::Plain;
        Synchronizer* getSynchronizer() override { return &gate; }
        Synchronizer gate;
    };
    Private block("block");
    const InputPin<MatrixXd> pin("pin", &block);
    const ValueProperty<int> setting("setting", &block.getPropertyBag());
    EXPECT_EQ(pin.getSynchronizer(), &block.gate);
    EXPECT_EQ(setting.getSynchronizer(), &block.gate);
}
