// SPDX-License-Identifier: MIT
#include "framework/core/CommandProperty.h"

#include "tests/framework/TestBlocks.h"
#include "tests/framework/properties/CountedFunction.h"
#include "tests/support/Feed.h"

#include <gtest/gtest.h>

#include <stdexcept>

using namespace Support;
using namespace TestBlocks;

namespace {
struct Target {
    void reset() {
        ++resets;
        if (gate != nullptr) wasGuarded = gate->getIsWanted();
    }
    void raise() { throw std::runtime_error("no reset now"); }
    void called() { ++resets; }
    int resets = 0;
    Synchronizer* gate = nullptr;
    bool wasGuarded = false;
};
} // namespace

TEST(CommandPropertyTest, FiringTwiceCallsTheHandlerTwice) {
    Target target;
    CommandProperty command("reset", nullptr);
    command.setChangeHandler(&target, &Target::reset);
    command.fire();
    command.fire();
    EXPECT_EQ(target.resets, 2);
}

TEST(CommandPropertyTest, WithoutAHandlerFiringDoesNothing) {
    CommandProperty command("reset", nullptr);
    command.fire();
}

TEST(CommandPropertyTest, TheHandlerRunsInsideTheGuard) {
    LayoutManager layout("layout");
    Plain block("block");
    layout.add(block);
    Target target;
    target.gate = &layout.getSynchronizer();
    CommandProperty command("reset", &block.getPropertyBag());
    command.setChangeHandler(&target, &Target::reset);
    command.fire();
    EXPECT_TRUE(target.wasGuarded);
    EXPECT_FALSE(target.gate->getIsWanted());
}

TEST(CommandPropertyTest, AHandlersExceptionReachesWhoFired) {
    LayoutManager layout("layout");
    Plain block("block");
    layout.add(block);
    Target target;
    CommandProperty command("reset", &block.getPropertyBag());
    command.setChangeHandler(&target, &Target::raise);
    EXPECT_EQ(refusal<std::runtime_error>([&] { command.fire(); }), "no reset now");
    EXPECT_FALSE(layout.getSynchronizer().getIsWanted());
}

TEST(CommandPropertyTest, OneFunctionMayServeACommandAndASetting) {
    Target target;
    CommandProperty command("reset", nullptr);
    ValueProperty<int> mode("mode", nullptr);
    command.setChangeHandler(&target, &Target::reset);
    mode.setChangeHandler(&target, &Target::reset);
    command.fire();
    mode.setValue(2);
    mode.setValue(2);
    EXPECT_EQ(target.resets, 2);
}

TEST(CommandPropertyTest, ItHasNoValue) {
    Plain block("block");
    CommandProperty command("reset", &block.getPropertyBag());
    EXPECT_FALSE(command.getIsWritable());
    EXPECT_FALSE(command.getIsReadable());
    std::string text = "what was there before";
    command.getValueAsString(text);
    EXPECT_EQ(text, "");
    EXPECT_TRUE(command.getValueAsAny().empty());
    const std::string refused = "Property 'reset' is not writable";
    EXPECT_EQ(refusal<Poco::NoPermissionException>([&] { command.setValueFromString("1"); }), refused);
    EXPECT_EQ(refusal<Poco::NoPermissionException>([&] { command.setValueFromAny(Poco::Any(1)); }), refused);
    EXPECT_EQ(&block.getProperty("reset"), &command);
}

TEST(CommandPropertyTest, AVisitorKnowsItByItsType) {
    struct Finder final : Util::System::AbstractVisitor,
                          Util::System::Visitor<CommandProperty, void, void, 1> {
        void visit(const CommandProperty& property) override { seen = &property; }
        const CommandProperty* seen = nullptr;
    };
    const CommandProperty command("reset", nullptr);
    const ValueProperty<int> other("other", nullptr);
    Finder finder;
    other.accept(finder);
    EXPECT_EQ(finder.seen, nullptr);
    command.accept(finder);
    EXPECT_EQ(finder.seen, &command);
}

TEST(CommandPropertyTest, ItsHandlerIsDeletedWithIt) {
    Target target;
    int live = 0;
    {
        CommandProperty command("reset", nullptr);
        command.setChangeHandler(&target, CountedFunction<Target>(live));
        command.setChangeHandler(&target, CountedFunction<Target>(live));
        EXPECT_EQ(live, 1);
        command.fire();
        EXPECT_EQ(target.resets, 1);
    }
    EXPECT_EQ(live, 0);
}
