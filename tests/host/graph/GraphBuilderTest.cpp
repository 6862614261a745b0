// SPDX-License-Identifier: MIT
#include "host/graph/GraphBuilder.h"

#include "framework/Quillmere.h"
#include "tests/host/kit/TimelineSend.h"

#include <gtest/gtest.h>

#include <deque>
#include <string>
#include <vector>

namespace {

using namespace Quillmere::Host;
namespace Core = Quillmere::Core;
using Core::MatrixXd;
using Strings = std::vector<std::string>;

class Relay final : public Core::Filter {
public:
    explicit Relay(const std::string& name)
        : Filter(name, true), in("in", this), extra("extra", this), out("out", this),
          gain("Gain", &getPropertyBag()) {}
    void process() override {}
    const char* getTypeName() const override { return "Relay"; }

    Core::InputPin<MatrixXd> in;
    Core::InputPin<MatrixXd> extra;
    Core::OutputPin<MatrixXd> out;
    Core::ValueProperty<double> gain;
};

/// Makes outputs of the names that its settings have, and complains of one called "bad".
class Feeder final : public Source, public WakingSource {
public:
    explicit Feeder(const std::string& name) : Source(name, true) {}
    void process() override {}
    const char* getTypeName() const override { return "Feeder"; }
    void configure(const GraphDescription::Block& description, const std::string& folder,
                   Complaints& complaints) override {
        seenFolder = folder;
        for (const GraphDescription::Setting& setting : description.settings)
            if (setting.name == "bad")
                complaints.add(setting.where, "a bad setting", "a good one");
            else
                outputs.emplace_back(setting.name, this);
    }
    void open(Complaints&) override {}
    bool prepare() override { return false; }
    double getNextTimeStamp() const override { return 0.0; }
    void release() override {}
    bool getComesByItself() const override { return false; }
    int getDescriptor() const override { return -1; }
    void setStop(const std::stop_token&) override {}

    std::string seenFolder;
    std::deque<Core::OutputPin<MatrixXd>> outputs;
};

/// Has one pin of its own.
class Drain final : public Sink {
public:
    explicit Drain(const std::string& name) : Sink(name, true), in("in", this) {}
    void process() override {}
    const char* getTypeName() const override { return "Drain"; }
    void open() override {}
    void complete() override {}
    void abandon() override {}
    void discard() override {}
    std::uint64_t getRows() const override { return 0; }
    bool getIsComplete() const override { return false; }

    Core::InputPin<MatrixXd> in;
};

template <class Block>
BlockCatalogue::Maker makerOf() {
    return [](const std::string& name) { return new Block(name); };
}

/// A graph put together in code, of blocks that no plug-in makes.
class GraphBuilderTest : public testing::Test {
protected:
    GraphBuilderTest() {
        catalogue.add("Relay", makerOf<Relay>());
        catalogue.add("Feeder", makerOf<Feeder>());
        catalogue.add("Drain", makerOf<Drain>());
        catalogue.add("Unborn", [](const std::string&) -> Core::Filter* {
            throw PluginException(Complaint::sentence({}, "it is not in the mood", "patience"));
        });
        written.path = "folder/g.yaml";
    }

    /// Builds what `written` says. What is complained of, a line each.
    std::string build() {
        Complaints complaints;
        parts.reset();
        description = written.resolved(complaints);
        parts.emplace(description);
        GraphBuilder(*parts, description, catalogue, complaints).build();
        std::string lines;
        for (const Complaint& complaint : complaints.getSorted())
            lines += complaint.getText() + "\n";
        return lines;
    }
    /// Sends 5 to an input when the time is 1.
    template <class Block>
    Block& at(const std::string& id) {
        return dynamic_cast<Block&>(*parts->find(id)->block);
    }

    BlockCatalogue catalogue;
    GraphDescription written;
    GraphDescription description; ///< The same, resolved.
    std::optional<GraphParts> parts;
};

TEST_F(GraphBuilderTest, ABlockThatIsMadeOnlyOnceCannotTryTheTimeline) {
    int made = 0;
    catalogue.add("Once", [&made](const std::string& name) -> Core::Filter* {
        if (made++ > 0) throw PluginException(Complaint::sentence({}, "once is enough", "patience"));
        return new Relay(name);
    });
    written.addBlock("once", "Once");
    for (const double at : {1.0, 2.0}) {
        GraphDescription::TimelineEntry& entry = written.timeline.emplace_back();
        entry.at = at;
        GraphDescription::TimelineChange& change = entry.changes.emplace_back();
        change.kind = GraphDescription::TimelineChange::Kind::Set;
        change.block = "once";
        change.name = "Gain";
        change.value = valueOf(5);
    }
    EXPECT_EQ(build(), "found the main input 'in' of 'once' (Once) open; expected a connection to 'once.in'\n"
                       "found a block that its plug-in doesn't make once more, to try the timeline on (once "
                       "is enough); expected one that it makes whenever it is asked\n");
}

TEST_F(GraphBuilderTest, WhatEachBlockIsBesidesABlockIsFoundOnce) {
    written.addBlock("relay", "Relay");
    written.addBlock("drain", "Drain");
    written.addBlock("feeder", "Feeder").set("a", valueOf(1));
    written.connect("feeder.a", "relay.in");
    written.connect("relay", "drain");
    ASSERT_EQ(build(), "");
    const GraphParts::Node& relay = parts->nodes.at(0);
    EXPECT_EQ(relay.description, &description.blocks.at(0));
    EXPECT_EQ(relay.hostBlock, nullptr);
    EXPECT_EQ(relay.source, nullptr);
    EXPECT_EQ(relay.sink, nullptr);
    const GraphParts::Node& drain = parts->nodes.at(1);
    EXPECT_EQ(drain.sink, &at<Drain>("drain"));
    EXPECT_EQ(drain.hostBlock, drain.sink);
    EXPECT_EQ(drain.source, nullptr);
    EXPECT_EQ(drain.result, nullptr) << "it writes no file";
    const GraphParts::Node& feeder = parts->nodes.at(2);
    EXPECT_EQ(feeder.source, &at<Feeder>("feeder"));
    EXPECT_EQ(feeder.waking, &at<Feeder>("feeder"));
    EXPECT_EQ(feeder.file, nullptr);
    EXPECT_EQ(parts->sources, std::vector<Source*>{feeder.source});
    EXPECT_EQ(parts->sinks, std::vector<Sink*>{drain.sink});
}

TEST_F(GraphBuilderTest, SettingsGoToTheBlockOrToItsProperties) {
    written.addBlock("feeder", "Feeder").set("a", valueOf(1)).set("b", valueOf(2));
    written.addBlock("relay", "Relay").set("Gain", valueOf(2.5));
    written.connect("feeder.b", "relay.in");
    ASSERT_EQ(build(), "");
    EXPECT_EQ(at<Feeder>("feeder").seenFolder, "folder") << "what its paths are relative to";
    EXPECT_EQ(at<Feeder>("feeder").outputs.size(), 2u);
    EXPECT_EQ(at<Relay>("relay").gain.getValue(), 2.5);
}

TEST_F(GraphBuilderTest, AnInputKnowsTheConnectionOfItsLink) {
    written.addBlock("first", "Relay");
    written.addBlock("second", "Relay");
    written.connect("second.out", "first.in");
    GraphDescription::Connection& connection = written.connect("first.out", "second.in");
    connection.buffer = 3;
    connection.isNewestFirst = true;
    ASSERT_EQ(build(), "");
    Relay& second = at<Relay>("second");
    EXPECT_EQ(second.in.getConnectedOutput(), &at<Relay>("first").out);
    EXPECT_EQ(second.in.getBufferCapacity(), 3u);
    EXPECT_TRUE(second.in.getIsLifo());
    ASSERT_EQ(parts->connections.size(), 2u);
    EXPECT_EQ(parts->connections.at(&second.in), &description.connections.at(1));
    EXPECT_FALSE(parts->connections.contains(&second.extra));
}

TEST_F(GraphBuilderTest, TheLayoutHoldsTheBlocksAsTheyRun) {
    written.addBlock("last", "Relay");
    written.addBlock("first", "Feeder").set("a", valueOf(1));
    written.addBlock("middle", "Relay");
    written.connect("middle.out", "last.in");
    written.connect("first.a", "middle.in");
    ASSERT_EQ(build(), "");
    Strings order;
    for (const GraphParts::Node* const node : parts->runOrder)
        order.push_back(node->description->id);
    EXPECT_EQ(order, (Strings{"first", "middle", "last"}));
    Strings held;
    for (const Core::Filter* const block : parts->layout.getFilters())
        held.push_back(block->getName());
    EXPECT_EQ(held, order);
    EXPECT_EQ(parts->layout.getName(), "g") << "the graph's";
}

TEST_F(GraphBuilderTest, AValueOfTheTimelineComesFromASenderInTheSameLayout) {
    written.addBlock("relay", "Relay");
    Support::sendAtOneSecond(written, "relay", "in", 5);
    ASSERT_EQ(build(), "") << "its main input isn't open";
    Core::Filter* const sender = parts->timeline.getSender();
    ASSERT_NE(sender, nullptr);
    EXPECT_EQ(sender->getManager(), &parts->layout);
    EXPECT_EQ(at<Relay>("relay").in.getConnectedOutput(), sender->getOutputPins().at(0));
    EXPECT_TRUE(parts->connections.empty()) << "no connection of the file";
    EXPECT_FALSE(parts->timeline.getIsDue(0.9));
    parts->timeline.apply(1.0);
    ASSERT_TRUE(at<Relay>("relay").in.hasData());
    EXPECT_EQ(at<Relay>("relay").in.take()(0), 5.0);
}

TEST_F(GraphBuilderTest, WhatFollowsFromOneFaultIsNotToldAsAnother) {
    written.addBlock("unborn", "Unborn");
    written.addBlock("feeder", "Feeder").set("bad", valueOf(1));
    written.addBlock("relay", "Relay");
    written.addBlock("other", "Relay");
    written.addBlock("third", "Relay");
    written.connect("unborn.out", "relay.in");
    written.connect("feeder.a", "other.in"); // a pin that the bad setting may have kept it from making
    written.connect("third.uot", "third.in");
    EXPECT_EQ(build(),
              "found a block that its plug-in doesn't make (it is not in the mood); expected one that "
              "it makes\n"
              "found a bad setting; expected a good one\n"
              "found the output 'uot' of 'third' (Relay); expected one of out; did you mean out?\n");
    EXPECT_EQ(parts->nodes.at(0).block, nullptr);
    EXPECT_TRUE(parts->nodes.at(1).isFaulty);
    EXPECT_FALSE(parts->nodes.at(2).isFaulty);
    EXPECT_EQ(parts->layout.getFilters().size(), 4u) << "all that there are";
}

} // namespace
