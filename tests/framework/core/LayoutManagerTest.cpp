// SPDX-License-Identifier: MIT
#include "framework/core/LayoutManager.h"

#include "tests/framework/TestBlocks.h"
#include "tests/framework/core/Listening.h"
#include "tests/support/Allocations.h"
#include "tests/support/Feed.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

using namespace Support;
using namespace TestBlocks;

namespace {
using Blocks = std::vector<Filter*>;
} // namespace

TEST(LayoutManagerTest, HoldsBlocksInTheirOrder) {
    LayoutManager layout("layout");
    Plain one("one");
    Plain two("two");
    EXPECT_EQ(layout.getName(), "layout");
    layout.add(one);
    layout.add(two);
    EXPECT_EQ(layout.getFilters(), (Blocks{&one, &two}));
    EXPECT_EQ(one.getManager(), &layout);
    EXPECT_EQ(one.getSynchronizer(), &layout.getSynchronizer());
    layout.remove(one);
    EXPECT_EQ(layout.getFilters(), Blocks{&two});
    EXPECT_EQ(one.getManager(), nullptr);
    EXPECT_EQ(one.getSynchronizer(), nullptr);
    layout.add(one);
    EXPECT_EQ(layout.getFilters(), (Blocks{&two, &one}));
}

TEST(LayoutManagerTest, ABlockIsInOneLayoutOnly) {
    LayoutManager first("first");
    LayoutManager second("second");
    Plain block("block");
    first.add(block);
    second.add(block);
    EXPECT_TRUE(first.getFilters().empty());
    EXPECT_EQ(second.getFilters(), Blocks{&block});
    EXPECT_EQ(block.getManager(), &second);
    first.remove(block); // another's block is passed over
    EXPECT_EQ(block.getManager(), &second);
    second.add(block); // again
    EXPECT_EQ(second.getFilters(), Blocks{&block});
}

TEST(LayoutManagerTest, TwoLayoutsHaveTwoGates) {
    LayoutManager first("first");
    LayoutManager second("second");
    EXPECT_NE(&first.getSynchronizer(), &second.getSynchronizer());
}

TEST(LayoutManagerTest, AStepIsOnePassInOrder) {
    std::string order;
    LayoutManager layout("layout");
    Plain a("a", [&] { order += 'a'; });
    Plain b("b", [&] { order += 'b'; });
    Plain c("c", [&] { order += 'c'; });
    layout.add(b);
    layout.add(a);
    layout.add(c);
    layout.runStep();
    EXPECT_EQ(order, "bac");
    layout.runStep();
    EXPECT_EQ(order, "bacbac");
    LayoutManager("empty").runStep();
}

TEST(LayoutManagerTest, ABlocksExceptionEndsThePassAndReachesTheCaller) {
    std::string order;
    LayoutManager layout("layout");
    Plain a("a", [&] { order += 'a'; });
    Plain b("b", [&] { throw std::runtime_error("bad step"); });
    Plain c("c", [&] { order += 'c'; });
    for (Plain* const block : {&a, &b, &c})
        layout.add(*block);
    EXPECT_EQ(refusal<std::runtime_error>([&] { layout.runStep(); }), "bad step");
    EXPECT_EQ(order, "a");

    b.action = [&] { order += 'b'; };
    layout.runStep();
    EXPECT_EQ(order, "aabc") << "the next pass begins at the first block";
    ValueProperty<int> setting("x", &a.getPropertyBag());
    setting.setValue(1); // would wait for ever, had the pass kept the gate
    EXPECT_EQ(setting.getValue(), 1);
}

TEST(LayoutManagerTest, ABlockRemovedInAPassSkipsNoOther) {
    struct Row {
        const char* name;
        char removing;
        char removed;
        const char* order;
    };
    const Row rows[] = {
        {.name = "an earlier one", .removing = 'b', .removed = 'a', .order = "abcd|bcd"},
        {.name = "itself", .removing = 'b', .removed = 'b', .order = "abcd|acd"},
        {.name = "the next one", .removing = 'b', .removed = 'c', .order = "abd|abd"},
        {.name = "the last one", .removing = 'a', .removed = 'd', .order = "abc|abc"},
    };
    for (const Row& row : rows) {
        std::string order;
        LayoutManager layout("layout");
        std::vector<std::unique_ptr<Plain>> blocks;
        for (const char name : std::string("abcd")) {
            blocks.push_back(std::make_unique<Plain>(std::string(1, name)));
            layout.add(*blocks.back());
        }
        for (const auto& block : blocks)
            block->action = [&, self = block.get()] {
                order += self->getName();
                if (self->getName()[0] == row.removing)
                    layout.remove(*blocks[static_cast<std::size_t>(row.removed - 'a')]);
            };
        layout.runStep();
        order += '|';
        layout.runStep();
        EXPECT_EQ(order, row.order) << row.name;
    }
}

TEST(LayoutManagerTest, ABlockAddedInAPassRunsInIt) {
    std::string order;
    LayoutManager layout("layout");
    Plain late("late", [&] { order += "late "; });
    Plain first("first", [&] {
        order += "first ";
        if (late.getManager() == nullptr) layout.add(late);
    });
    layout.add(first);
    layout.runStep();
    EXPECT_EQ(order, "first late ");
}

TEST(LayoutManagerTest, ItsEndLetsGoOfTheBlocks) {
    Plain block("block");
    Counting sender("sender");
    Receiving receiver("receiver");
    sender.output.attach(receiver.input, false);
    {
        LayoutManager layout("layout");
        layout.add(block);
        layout.add(sender);
        layout.add(receiver);
    }
    EXPECT_EQ(block.getManager(), nullptr);
    EXPECT_EQ(receiver.getSynchronizer(), nullptr);
    EXPECT_TRUE(isPlainLink(sender.output, receiver.input)) << "the link stays and needs no gate";
}

namespace {
std::string kindOfLink(Counting& sender, Receiving& receiver) {
    return isPlainLink(sender.output, receiver.input) ? "plain" : "locked";
}
} // namespace

TEST(LayoutManagerTest, LinksFollowTheLayoutsOfTheirBlocks) {
    LayoutManager one("one");
    LayoutManager two("two");
    Counting sender("sender");
    Receiving receiver("receiver");
    receiver.input.setIsBlocking(false);
    sender.output.attach(receiver.input, false);
    EXPECT_EQ(kindOfLink(sender, receiver), "plain") << "no layouts, synchronous";
    one.add(sender);
    EXPECT_EQ(kindOfLink(sender, receiver), "locked") << "one in a layout, the other in none";
    one.add(receiver);
    EXPECT_EQ(kindOfLink(sender, receiver), "plain") << "one layout";
    two.add(receiver);
    EXPECT_EQ(kindOfLink(sender, receiver), "locked") << "two layouts";
    two.add(sender);
    EXPECT_EQ(kindOfLink(sender, receiver), "plain") << "one again";
    two.remove(sender);
    EXPECT_EQ(kindOfLink(sender, receiver), "locked");
    two.remove(receiver);
    EXPECT_EQ(kindOfLink(sender, receiver), "plain");
}

TEST(LayoutManagerTest, AMoveLosesWhatIsInFlight) {
    for (const bool movesSender : {true, false}) {
        LayoutManager one("one");
        LayoutManager two("two");
        Counting sender("sender");
        Receiving receiver("receiver");
        receiver.input.setIsBlocking(false);
        receiver.input.setBufferCapacity(5);
        sender.output.attach(receiver.input, false);
        one.add(sender);
        one.add(receiver);
        sender.process();
        sender.process();
        ASSERT_TRUE(receiver.input.hasData());
        EXPECT_EQ(receiver.input.getTimeStamp(), 1.0);
        two.add(movesSender ? static_cast<Filter&>(sender) : receiver);
        EXPECT_EQ(receiver.input.getTimeStamp(), 0.0);
        EXPECT_FALSE(receiver.input.hasData());
        sender.process();
        EXPECT_EQ(drain(receiver.input), std::vector<double>{3.0}) << "the link itself stays";
    }
}

TEST(LayoutManagerTest, AMoveTellsNoOneOfLinks) {
    Listening listening;
    LayoutManager layout("layout");
    Counting sender("sender");
    Receiving receiver("receiver");
    sender.output.attach(receiver.input, false);
    listening.log.clear();
    layout.add(sender);
    layout.add(receiver);
    layout.remove(sender);
    EXPECT_TRUE(listening.log.empty());
}

TEST(LayoutManagerTest, TheStepRunsInsideTheGateAndMayUseItsOwnSettings) {
    LayoutManager layout("layout");
    Plain block("block");
    ValueProperty<int> setting("x", &block.getPropertyBag());
    layout.add(block);
    block.action = [&] { setting.setValue(setting.getValue() + 1); };
    layout.runStep();
    layout.runStep();
    EXPECT_EQ(setting.getValue(), 2);
}

TEST(LayoutManagerTest, ASteadyPassAllocatesNothing) {
    LayoutManager layout("layout");
    Counting sender("sender");
    Receiving receiver("receiver");
    ValueProperty<double> setting("x", &receiver.getPropertyBag());
    double sum = 0.0;
    receiver.received = [&](const MatrixXd& value, double stamp) {
        sum += value(0) + stamp;
        setting.setValue(sum);
    };
    sender.output.attach(receiver.input, false);
    layout.add(sender);
    layout.add(receiver);
    layout.runStep();
    const AllocationCounter counter;
    for (int i = 0; i < 100; ++i)
        layout.runStep();
    EXPECT_EQ(counter.count(), 0u);
    EXPECT_EQ(setting.getValue(), 2.0 * 101.0 * 102.0 / 2.0) << "twice the sum of the numbers to 101";
}

namespace {
/// Keeps the news to itself instead of handing it on, and may raise at it.
class Deaf final : public Plain {
public:
    using Plain::Plain;
    bool isRaising = false;
    InputPin<MatrixXd> input{"input", this};

protected:
    void setManager(LayoutManager* const) override {
        if (isRaising) throw std::runtime_error("not this layout");
    }
};
} // namespace

TEST(LayoutManagerTest, ABlockThatKeepsTheNewsToItselfIsPlacedAllTheSame) {
    Deaf block("deaf");
    Counting sender("sender");
    sender.output.attach(block.input, false);
    {
        LayoutManager layout("layout");
        layout.add(block);
        EXPECT_EQ(block.getManager(), &layout);
        EXPECT_EQ(block.getSynchronizer(), &layout.getSynchronizer());
        layout.remove(block);
        EXPECT_TRUE(layout.getFilters().empty());
        layout.add(block);
    } // ends
    EXPECT_EQ(block.getManager(), nullptr);
    EXPECT_TRUE(isPlainLink(sender.output, block.input));
}

TEST(LayoutManagerTest, WhatABlockRaisesAtTheNewsKeepsItOutButNotIn) {
    Deaf block("deaf");
    auto one = std::make_unique<LayoutManager>("one");
    LayoutManager two("two");
    one->add(block);
    block.isRaising = true;
    EXPECT_EQ(refusal<std::runtime_error>([&] { two.add(block); }), "not this layout");
    EXPECT_EQ(block.getManager(), one.get());
    EXPECT_EQ(one->getFilters(), Blocks{&block});
    EXPECT_TRUE(two.getFilters().empty());
    one.reset(); // swallows it
    EXPECT_EQ(block.getManager(), nullptr);
    block.isRaising = false;
    two.add(block);
    block.isRaising = true;
    EXPECT_EQ(refusal<std::runtime_error>([&] { two.remove(block); }), "not this layout");
    EXPECT_EQ(block.getManager(), nullptr);
    EXPECT_TRUE(two.getFilters().empty());
}

TEST(LayoutManagerTest, ItsEndAndABlocksEndNeedNoMemory) {
    if (!MemoryShortage::getIsPossible()) GTEST_SKIP() << "a sanitizer's allocator refuses nothing";
    auto one = std::make_unique<LayoutManager>("one");
    auto two = std::make_unique<LayoutManager>("two");
    auto sender = std::make_unique<Counting>("sender");
    auto near = std::make_unique<Receiving>("near");
    Receiving far("far");
    one->add(*sender);
    one->add(*near);
    two->add(far);
    sender->output.attach(near->input, false);
    sender->output.attach(far.input, false);
    EXPECT_TRUE(succeedsWith(0, [&] {
        near.reset(); // a block that is in a layout, with a link
        two.reset();  // a layout with a block whose link slept on its gate
    }));
    EXPECT_EQ(far.getManager(), nullptr);
    EXPECT_FALSE(far.input.isAttached()) << "no memory for a strategy without that gate";
    EXPECT_FALSE(far.input.hasData());
    EXPECT_FALSE(sender->output.isAttached());
    EXPECT_EQ(one->getFilters(), Blocks{sender.get()});
}

TEST(LayoutManagerTest, AMoveWithoutMemoryEitherHappensOrDoesNot) {
    if (!MemoryShortage::getIsPossible()) GTEST_SKIP() << "a sanitizer's allocator refuses nothing";
    bool hasMovedWithoutLink = false;
    bool hasStayed = false;
    withEveryShortage([&](std::uint64_t granted) {
        LayoutManager one("one");
        LayoutManager two("two");
        Counting sender("sender");
        Receiving receiver("receiver");
        receiver.input.setIsBlocking(false);
        sender.output.attach(receiver.input, false);
        one.add(sender);
        one.add(receiver);
        const bool isDone = succeedsWith(granted, [&] { two.add(receiver); });
        const bool hasMoved = receiver.getManager() == &two;
        EXPECT_EQ(two.getFilters().size(), hasMoved ? 1u : 0u);
        EXPECT_EQ(one.getFilters().size(), hasMoved ? 1u : 2u);
        EXPECT_EQ(receiver.input.isAttached(), isDone || !hasMoved) << granted;
        EXPECT_EQ(receiver.input.isAttached(), sender.output.isAttached());
        hasStayed = hasStayed || !hasMoved;
        hasMovedWithoutLink = hasMovedWithoutLink || (hasMoved && !isDone);
        sender.process();
        EXPECT_EQ(receiver.input.hasData(), receiver.input.isAttached());
        return isDone;
    });
    EXPECT_TRUE(hasStayed);
    EXPECT_TRUE(hasMovedWithoutLink);
}
