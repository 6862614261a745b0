// SPDX-License-Identifier: MIT
#include "host/live/LiveGraph.h"

#include "framework/Quillmere.h"
#include "host/live/ControlException.h"
#include "tests/host/kit/Fifo.h"
#include "tests/host/kit/TimelineSend.h"
#include "tests/host/run/ScriptedSource.h"

#include <gtest/gtest.h>

#include <limits>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace Quillmere::Host;
namespace Core = Quillmere::Core;
using Core::MatrixXd;

class Relay final : public Core::Filter {
public:
    explicit Relay(const std::string& name) : Filter(name, true), in("in", this), out("out", this) {
        in.setIsBlocking(false);
    }
    ~Relay() override {
        if (dies != nullptr) *dies = true;
    }
    void process() override {}
    const char* getTypeName() const override { return "Relay"; }

    Core::InputPin<MatrixXd> in;
    Core::OutputPin<MatrixXd> out;
    bool* dies = nullptr;
};

/// A graph with the layouts `a`, `b` and `c`, put together in code.
class LiveGraphTest : public testing::Test {
protected:
    LiveGraphTest() {
        catalogue.add("Relay", [](const std::string& name) { return new Relay(name); });
        catalogue.add("Ended", [](const std::string& name) { return new Support::ScriptedSource(name, {}); });
        for (const char* const id : {"a", "b", "c"})
            description.layouts.emplace_back().id = id;
    }
    ~LiveGraphTest() override {
        if (live) live->stop();
    }

    void add(const std::string& id, const std::string& type, const std::string& layout) {
        description.addBlock(id, type).layout = layout;
    }
    /// Builds what was described. Nothing has started.
    LiveGraph& deal() {
        Complaints complaints;
        graph.emplace(description, catalogue, complaints);
        complaints.raise();
        drive.emplace(LiveClock::kMaximum, RunLimit{}, false, graph->getTimeline());
        return live.emplace(*graph, *drive, std::nullopt);
    }
    /// Sends 5 to an input when the time is 1.
    /// Two relays that feed each other.
    void addPair(const std::string& layoutOfFirst, const std::string& layoutOfSecond) {
        add("first", "Relay", layoutOfFirst);
        add("second", "Relay", layoutOfSecond);
        description.connect("first.out", "second.in");
        description.connect("second.out", "first.in");
    }
    const Core::Filter& block(const std::string& id) const { return *graph->find(id)->block; }
    std::string namesIn(const std::string& layout) {
        std::string names;
        for (const Core::Filter* const held : live->getLayout(layout).getBlocks().getFilters())
            names += held->getName() + " ";
        return names;
    }

    BlockCatalogue catalogue;
    GraphDescription description;
    std::optional<Graph> graph;
    std::optional<LiveDrive> drive;
    std::optional<LiveGraph> live;
};

TEST_F(LiveGraphTest, BlocksAreDealtOutAsTheGraphSaysInTheOrderInWhichTheyRun) {
    add("last", "Relay", "b");
    add("other", "Relay", "a");
    add("first", "Relay", "b");
    description.connect("first.out", "last.in");
    description.connect("last.out", "other.in");
    description.connect("other.out", "first.in");
    deal();
    EXPECT_EQ(namesIn("a"), "other ");
    EXPECT_EQ(namesIn("b"), "first last ");
    EXPECT_EQ(namesIn("c"), "");
    EXPECT_TRUE(graph->getLayout().getFilters().empty());
    EXPECT_EQ(live->layoutOf(block("first")), &live->getLayout("b"));
    const Relay loose("loose");
    EXPECT_EQ(live->layoutOf(loose), nullptr);
}

TEST_F(LiveGraphTest, ALayoutThatThereIsNotIsRefusedByName) {
    description.layouts.emplace_back().id = "fast";
    addPair("a", "b");
    deal();
    try {
        live->getLayout("fats");
        FAIL();
    } catch (const ControlException& exception) {
        EXPECT_STREQ(exception.what(),
                     "found the layout 'fats'; expected one of a, b, c and fast; did you mean fast?");
    }
}

TEST_F(LiveGraphTest, EachSourceKeepsTheRunGoing) {
    add("x", "Ended", "a");
    add("y", "Ended", "b");
    deal();
    drive->endDriver();
    EXPECT_FALSE(drive->getIsOver());
    drive->endDriver();
    EXPECT_TRUE(drive->getIsOver());
}

TEST_F(LiveGraphTest, TheTimelineStandsWhereASourceTellsItsTime) {
    add("relay", "Relay", "a");
    add("source", "Ended", "c");
    Support::sendAtOneSecond(description, "relay", "in", 5);
    deal();
    EXPECT_EQ(namesIn("c"), "source timeline ");
    EXPECT_EQ(namesIn("a"), "relay ");
}

TEST_F(LiveGraphTest, OnlyALoopBoundsWhatIsLetOutAtTheEnd) {
    add("first", "Relay", "a");
    add("second", "Relay", "b");
    description.connect("first.out", "second.in");
    add("feed", "Relay", "a");
    description.connect("feed.out", "first.in");
    Support::sendAtOneSecond(description, "feed", "in", 5);
    deal();
    EXPECT_EQ(drive->mostDrainRounds, std::numeric_limits<std::uint64_t>::max());
    live.reset();
    description = {};
    for (const char* const id : {"a", "b"})
        description.layouts.emplace_back().id = id;
    addPair("a", "b");
    deal();
    const std::uint64_t within = live->getLayout("a").getMostRounds() + live->getLayout("b").getMostRounds();
    EXPECT_EQ(drive->mostDrainRounds, within * 3) << "a sample may cross each of the two links once more";
}

TEST_F(LiveGraphTest, AStandstillHoldsEveryGateAndTheTimeline) {
    addPair("a", "b");
    deal();
    const auto getIsHeld = [&](const char* layout) { return live->getLayout(layout).getGate().getIsOwn(); };
    const auto getIsTimelineFree = [&] {
        bool isFree = false;
        std::thread([&] { // a mutex isn't asked by the thread that may hold it
            isFree = drive->timelineMutex.try_lock();
            if (isFree) drive->timelineMutex.unlock();
        })
            .join();
        return isFree;
    };
    {
        const LiveGraph::Standstill still(*live);
        for (const char* const layout : {"a", "b", "c"})
            EXPECT_TRUE(getIsHeld(layout)) << layout;
        EXPECT_FALSE(getIsTimelineFree());
    }
    for (const char* const layout : {"a", "b", "c"})
        EXPECT_FALSE(getIsHeld(layout)) << layout;
    EXPECT_TRUE(getIsTimelineFree());
}

TEST_F(LiveGraphTest, ABlockThatIsAddedIsItsOwn) {
    addPair("a", "b");
    deal();
    auto* const relay = new Relay("third");
    bool isDead = false;
    relay->dies = &isDead;
    {
        const LiveGraph::Standstill still(*live);
        live->add(BlockPtr(relay), live->getLayout("c"));
    }
    EXPECT_EQ(namesIn("c"), "third ");
    EXPECT_EQ(live->layoutOf(*relay), &live->getLayout("c"));
    EXPECT_EQ(live->getStatistics().blocks.size(), 3u);
    live.reset();
    EXPECT_TRUE(isDead);
}

TEST_F(LiveGraphTest, ItIsAtRestWhenAllLayoutsSleepAndAfterALookAgain) {
    addPair("a", "b");
    LiveGraph& dealt = deal();
    EXPECT_FALSE(dealt.getIsAtRest()) << "nobody sleeps who hasn't begun";
    dealt.start();
    ASSERT_TRUE(Support::waitUntil([&] { return dealt.getIsAtRest(); }));
    const auto sleeps = dealt.getLayout("b").getGate().getSleeps();
    dealt.stir();
    EXPECT_TRUE(Support::waitUntil([&] { return dealt.getLayout("b").getGate().getSleeps() > sleeps; }));
    EXPECT_TRUE(Support::waitUntil([&] { return dealt.getIsAtRest(); }));
    EXPECT_EQ(dealt.getRounds(), 0u) << "there is nothing that a round begins with";
    dealt.stop();
}

} // namespace
