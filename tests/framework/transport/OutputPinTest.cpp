// SPDX-License-Identifier: MIT
#include "framework/transport/OutputPin.h"

#include "tests/framework/TestBlocks.h"
#include "tests/framework/core/Listening.h"
#include "tests/support/Allocations.h"
#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>

using namespace Support;
using namespace TestBlocks;

namespace {
/// An input that carries something else.
class TextInput final : public AbstractInputPin {
public:
    TextInput() : Pin("text", nullptr), AbstractInputPin("text", nullptr) {}
    AbstractOutputPin* getConnectedOutput() const override { return nullptr; }
    void clear() override {}
    void rebuildStrategy() override {}
    void setConnectedOutput(AbstractOutputPin*, bool) override {
        FAIL() << "an input that doesn't fit was linked";
    }
    void detachAll() override {}
    void detachSynchronous() override {}
    bool isAttached() const override { return false; }
    const std::string& getDataTypeName() const override { return typeName; }

private:
    std::string typeName = "text";
};

using Inputs = std::set<AbstractInputPin*>;
} // namespace

TEST(OutputPinTest, StartsEmptyAndUnattached) {
    const OutputPin<MatrixXd> output("output", nullptr);
    EXPECT_EQ(output.getName(), "output");
    EXPECT_EQ(output.data.value.size(), 0);
    EXPECT_TRUE(agree(output.data.timeStamp, 0.0, same));
    EXPECT_FALSE(output.isAttached());
    EXPECT_TRUE(output.getAttachedInputs().empty());
    EXPECT_TRUE(output.getConnections().empty());
}

TEST(OutputPinTest, ThreeInputsReceiveOneSampleAndLoseEachForItself) {
    OutputPin<MatrixXd> output("output", nullptr);
    InputPin<MatrixXd> plain("plain", nullptr);
    InputPin<MatrixXd> fifo("fifo", nullptr);
    InputPin<MatrixXd> lifo("lifo", nullptr);
    fifo.setBufferCapacity(2);
    lifo.setBufferCapacity(9);
    lifo.setIsLifo(true);
    for (InputPin<MatrixXd>* const input : {&plain, &fifo, &lifo})
        output.attach(*input, false);
    EXPECT_EQ(output.getAttachedInputs(), (Inputs{&plain, &fifo, &lifo}));
    for (const double value : {1.0, 2.0, 3.0})
        sendNumber(output, value);
    EXPECT_EQ(drain(plain), std::vector<double>{3});
    EXPECT_EQ(drain(fifo), (std::vector<double>{2, 3}));
    EXPECT_EQ(drain(lifo), (std::vector<double>{3, 2, 1}));
}

TEST(OutputPinTest, InputsReceiveInTheOrderOfTheirAddresses) {
    struct Ordered final : InputPinBase<MatrixXd> {
        Ordered() : Pin("ordered", nullptr), InputPinBase("ordered", nullptr) {}
        ~Ordered() override { InputPinBase::detachAll(); }
        void clear() override {}
        void rebuildStrategy() override {}
        void setConnectedOutput(AbstractOutputPin* output, bool) override { connectedOutput = output; }
        void receive(const Sample&) override { order->push_back(this); }
        std::vector<const Ordered*>* order = nullptr;
    };
    std::vector<const Ordered*> order;
    OutputPin<MatrixXd> output("output", nullptr);
    Ordered inputs[4];
    for (const int i : {2, 0, 3, 1}) {
        inputs[i].order = &order;
        output.attach(inputs[i], false);
    }
    output.send(0.0);
    EXPECT_EQ(order, (std::vector<const Ordered*>{&inputs[0], &inputs[1], &inputs[2], &inputs[3]}));
}

TEST(OutputPinTest, WithoutInputsASendStoresTheTimeStamp) {
    OutputPin<MatrixXd> output("output", nullptr);
    output.data.value = matrix({{1, 2}});
    output.send(1.0 / 3.0);
    EXPECT_TRUE(agree(output.data.timeStamp, 1.0 / 3.0, same));
    EXPECT_TRUE(agree(output.data.value, matrix({{1, 2}}), same));
}

TEST(OutputPinTest, TheOtherSendStampsTheWallClock) {
    // Days from 15 October 1582 to 1 January 1970, counted from Julian day numbers.
    constexpr double kSecondsToUnixEpoch = (2440588.0 - 2299161.0) * 86400.0;
    const auto now = [] {
        return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
    };
    OutputPin<MatrixXd> output("output", nullptr);
    const double before = now();
    output.send();
    const double after = now();
    // A clock tick of a microsecond and a rounding of 1.4e10 to 2e-6 seconds lie between the two clocks.
    EXPECT_GE(output.data.timeStamp, before + kSecondsToUnixEpoch - 1e-5);
    EXPECT_LE(output.data.timeStamp, after + kSecondsToUnixEpoch + 1e-5);
}

TEST(OutputPinTest, AnInputTakesOneLinkOnly) {
    OutputPin<MatrixXd> output("output", nullptr);
    OutputPin<MatrixXd> other("other", nullptr);
    InputPin<MatrixXd> input("input", nullptr);
    output.attach(input, false);
    sendNumber(output, 1.0, 5.0);
    Listening listening;
    for (const bool isSilent : {false, true}) {
        EXPECT_EQ(refusal<Poco::ExistsException>([&] { output.attach(input, isSilent); }), "");
        EXPECT_EQ(refusal<Poco::ExistsException>([&] { other.attach(input, isSilent); }), "");
    }
    EXPECT_TRUE(listening.log.empty());
    EXPECT_EQ(input.getConnectedOutput(), &output) << "all is as it was";
    EXPECT_EQ(output.getAttachedInputs(), Inputs{&input});
    EXPECT_FALSE(other.isAttached());
    EXPECT_EQ(drain(input), std::vector<double>{1.0}) << "nothing was lost";
}

TEST(OutputPinTest, AnInputOfOtherDataIsRefused) {
    Listening listening;
    OutputPin<MatrixXd> output("output", nullptr);
    TextInput text;
    EXPECT_EQ(refusal<Poco::DataFormatException>([&] { output.attach(text, false); }), "");
    EXPECT_FALSE(output.isAttached());
    EXPECT_TRUE(listening.log.empty());
    output.detach(text, false); // not attached: nothing happens
}

TEST(OutputPinTest, AfterADetachTheInputIsUnconnected) {
    OutputPin<MatrixXd> output("output", nullptr);
    InputPin<MatrixXd> input("input", nullptr);
    InputPin<MatrixXd> stays("stays", nullptr);
    output.attach(input, false);
    output.attach(stays, false);
    sendNumber(output, 1.0);
    output.detach(input, false);
    EXPECT_FALSE(input.isAttached());
    EXPECT_FALSE(input.hasData());
    EXPECT_EQ(output.getAttachedInputs(), Inputs{&stays});
    sendNumber(output, 2.0);
    EXPECT_FALSE(input.hasData());
    EXPECT_EQ(drain(stays), std::vector<double>{2.0});
    output.detach(input, false); // again: nothing happens
    OutputPin<MatrixXd>("another", nullptr).detach(stays, false);
    EXPECT_TRUE(stays.isAttached()) << "another's link is passed over";
}

TEST(OutputPinTest, DetachSynchronousLeavesTheOthers) {
    Listening listening;
    OutputPin<MatrixXd> output("output", nullptr);
    InputPin<MatrixXd> inputs[4] = {{"a", nullptr}, {"b", nullptr}, {"c", nullptr}, {"d", nullptr}};
    for (int i = 0; i < 4; ++i) {
        listening.answer = i % 2 == 0;
        output.attach(inputs[i], false);
    }
    listening.log.clear();
    output.detach(inputs[1], true);
    EXPECT_TRUE(inputs[1].isAttached());
    output.detachSynchronous();
    EXPECT_EQ(output.getAttachedInputs(), (Inputs{&inputs[1], &inputs[3]}));
    EXPECT_EQ(listening.log, (std::vector<std::string>{"detached output from a", "detached output from c"}));
    EXPECT_FALSE(inputs[0].isAttached());
    output.detachAll();
    EXPECT_FALSE(output.isAttached());
    EXPECT_FALSE(inputs[3].isAttached());
    EXPECT_EQ(listening.log.size(), 2u) << "not synchronous: taken down without a word";
}

TEST(OutputPinTest, ItsEndTakesAllLinksDownAndTheInputsSurvive) {
    Listening listening;
    InputPin<MatrixXd> told("told", nullptr);
    InputPin<MatrixXd> silent("silent", nullptr);
    {
        OutputPin<MatrixXd> output("output", nullptr);
        output.attach(told, false);
        output.attach(silent, true);
        sendNumber(output, 1.0);
        listening.log.clear();
    }
    EXPECT_EQ(listening.log, std::vector<std::string>{"detached output from told"});
    for (InputPin<MatrixXd>* const input : {&told, &silent}) {
        EXPECT_FALSE(input->isAttached());
        EXPECT_FALSE(input->hasData());
        OutputPin<MatrixXd> next("next", nullptr);
        next.attach(*input, false);
        EXPECT_TRUE(isPlainLink(next, *input));
    }
}

TEST(OutputPinTest, ConnectionsNameLayoutBlockAndPin) {
    LayoutManager layout("fast");
    Counting sender("sender");
    Receiving placed("smooth");
    Receiving unplaced("unplaced");
    InputPin<MatrixXd> ownerless("ownerless", nullptr);
    layout.add(placed);
    for (InputPin<MatrixXd>* const input : {&placed.input, &unplaced.input, &ownerless})
        sender.output.attach(*input, false);
    const std::vector<ConnectionName> connections = sender.output.getConnections();
    ASSERT_EQ(connections.size(), 1u) << "inputs without a block or a layout are left out";
    EXPECT_EQ(connections[0].layout, "fast");
    EXPECT_EQ(connections[0].block, "smooth");
    EXPECT_EQ(connections[0].pin, "input");
    layout.add(unplaced);
    EXPECT_EQ(sender.output.getConnections().size(), 2u);
}

TEST(OutputPinTest, RefreshRebuildsEveryInputAndLosesWhatIsInFlight) {
    LayoutManager one("one");
    LayoutManager two("two");
    Counting sender("sender");
    Receiving near("near");
    Receiving far("far");
    one.add(sender);
    one.add(near);
    two.add(far);
    far.input.setIsBlocking(false);
    sender.output.attach(near.input, false);
    sender.output.attach(far.input, false);
    sender.process();
    const Synchronizer::DisablerLocker guard(&one.getSynchronizer(), nullptr);
    sender.output.refreshInputs();
    EXPECT_FALSE(near.input.hasData());
    EXPECT_FALSE(far.input.hasData());
    sender.process();
    EXPECT_EQ(drain(near.input), std::vector<double>{2.0});
    EXPECT_EQ(drain(far.input), std::vector<double>{2.0});
}

TEST(OutputPinTest, AnInputHearsOfItsLinkBeforeItEntersTheSet) {
    struct Looking final : InputPinBase<MatrixXd> {
        Looking() : Pin("looking", nullptr), InputPinBase("looking", nullptr) {}
        ~Looking() override { InputPinBase::detachAll(); }
        void clear() override {}
        void rebuildStrategy() override {}
        void setConnectedOutput(AbstractOutputPin* output, bool) override {
            seen += output != nullptr && output->isAttached() ? "in the set " : "not in the set ";
            connectedOutput = output;
        }
        void receive(const Sample&) override {}
        std::string seen;
    } input;
    OutputPin<MatrixXd> output("output", nullptr);
    output.attach(input, false);
    EXPECT_EQ(input.seen, "not in the set ");
    EXPECT_EQ(output.getAttachedInputs(), Inputs{&input});
}

TEST(OutputPinTest, ALinkThatFindsNoMemoryIsNotMade) {
    if (!MemoryShortage::getIsPossible()) GTEST_SKIP() << "a sanitizer's allocator refuses nothing";
    for (const bool isSilent : {false, true}) {
        for (const std::uint32_t capacity : {1u, 3u}) {
            const auto failures = withEveryShortage([&](std::uint64_t granted) {
                OutputPin<MatrixXd> output("output", nullptr);
                InputPin<MatrixXd> input("input", nullptr);
                input.setBufferCapacity(capacity);
                const bool isMade = succeedsWith(granted, [&] { output.attach(input, isSilent); });
                EXPECT_EQ(output.isAttached(), isMade);
                EXPECT_EQ(input.isAttached(), isMade);
                const Sample alone{.value = matrix({{7}}), .timeStamp = 1.0};
                input.receive(alone);
                EXPECT_TRUE(input.hasData()) << "there is a buffer, whatever came of the link";
                input.clear();
                if (!isMade) output.attach(input, isSilent);
                sendNumber(output, 2.0);
                EXPECT_EQ(drain(input), std::vector<double>{2.0}) << granted << " allocations granted";
                return isMade;
            });
            EXPECT_GT(failures, 0u);
        }
    }
}

TEST(OutputPinTest, TheHostHearsThatALinkCameToNothing) {
    if (!MemoryShortage::getIsPossible()) GTEST_SKIP() << "a sanitizer's allocator refuses nothing";
    OutputPin<MatrixXd> output("output", nullptr);
    InputPin<MatrixXd> first("first", nullptr);
    InputPin<MatrixXd> input("input", nullptr);
    output.attach(first, true);
    output.detach(first, false); // leaves room in the set
    struct Brief final : LinkListener {
        Brief() { FlowManager::instance().setLinkListener(this); }
        ~Brief() override { FlowManager::instance().setLinkListener(nullptr); }
        void linkAttached(AbstractOutputPin&, AbstractInputPin&, bool&) override { ++attached; }
        void linkDetached(AbstractOutputPin&, AbstractInputPin&) override { ++detached; }
        int attached = 0;
        int detached = 0;
    } host;
    EXPECT_FALSE(succeedsWith(0, [&] { output.attach(input, false); }));
    EXPECT_EQ(host.attached, 1);
    EXPECT_EQ(host.detached, 1);
}

TEST(OutputPinTest, LinksAreTakenDownWithoutMemory) {
    if (!MemoryShortage::getIsPossible()) GTEST_SKIP() << "a sanitizer's allocator refuses nothing";
    for (const bool isSilent : {false, true}) {
        auto output = std::make_unique<OutputPin<MatrixXd>>("output", nullptr);
        InputPin<MatrixXd> detached("detached", nullptr);
        InputPin<MatrixXd> left("left", nullptr);
        auto gone = std::make_unique<InputPin<MatrixXd>>("gone", nullptr);
        left.setBufferCapacity(2);
        for (InputPin<MatrixXd>* const input : {&detached, &left, gone.get()})
            output->attach(*input, isSilent);
        EXPECT_TRUE(succeedsWith(0, [&] {
            output->detach(detached, false);
            gone.reset();
            output.reset();
        }));
        for (InputPin<MatrixXd>* const input : {&detached, &left}) {
            EXPECT_FALSE(input->isAttached());
            EXPECT_FALSE(input->hasData());
            EXPECT_TRUE(input->getIsSynchronous());
        }
        for (const double value : {1.0, 2.0}) {
            const Sample sample{.value = matrix({{value}}), .timeStamp = value};
            left.receive(sample);
        }
        EXPECT_EQ(drain(left), (std::vector<double>{1, 2})) << "with its own capacity";
    }
}

TEST(OutputPinTest, ALinkThatCannotBeRebuiltIsTakenDownAndTheOthersAreNot) {
    if (!MemoryShortage::getIsPossible()) GTEST_SKIP() << "a sanitizer's allocator refuses nothing";
    std::set<std::size_t> survivors;
    withEveryShortage([&](std::uint64_t granted) {
        Counting sender("sender");
        Receiving receivers[2] = {Receiving("one"), Receiving("two")};
        for (Receiving& receiver : receivers)
            sender.output.attach(receiver.input, false);
        const bool isDone = succeedsWith(granted, [&] { sender.output.refreshInputs(); });
        const std::size_t linked = sender.output.getAttachedInputs().size();
        EXPECT_EQ(isDone, linked == 2);
        survivors.insert(linked);
        sender.process();
        for (Receiving& receiver : receivers)
            EXPECT_EQ(receiver.input.hasData(), receiver.input.isAttached());
        return isDone;
    });
    EXPECT_EQ(survivors, (std::set<std::size_t>{0, 1, 2}));
}
