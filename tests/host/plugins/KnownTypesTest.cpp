// SPDX-License-Identifier: MIT
#include "host/plugins/KnownTypes.h"

#include "framework/Quillmere.h"
#include "host/ends/MainInput.h"
#include "host/plugins/BlockCatalogue.h"
#include "tests/support/Numbers.h"
#include "tests/host/kit/Plugins.h"

#include <algorithm>
#include <deque>
#include <string>
#include <vector>

namespace {

using namespace Quillmere::Host;
namespace Core = Quillmere::Core;
using Core::MatrixXd;
using Output = Core::OutputPin<MatrixXd>;

/// A block of this project with a sender at each of its inputs and somebody who takes at each output.
class FedBlock {
public:
    FedBlock(const BlockCatalogue& catalogue, const std::string& type) : block(catalogue.create(type, "b")) {
        for (Core::AbstractInputPin* const input : block->getInputPins())
            senders.emplace_back("sender", nullptr).attach(*input, true);
        for (Core::AbstractOutputPin* const output : block->getOutputPins()) // some send only where one takes
            output->attach(receivers.emplace_back("receiver", nullptr), true);
        Core::AbstractProperty* const pause = block->getPropertyBag().find("Pause");
        if (auto* const flag = dynamic_cast<Core::ValueProperty<bool>*>(pause)) flag->setValue(false);
    }
    /// Gives a sample to the main input, and to the others if they are to have one.
    void feed(const MatrixXd& sample, double time, bool feedsAll = false) {
        for (Output& sender : senders) {
            const bool isMain = sender.getInputs().front() == mainInputOf(*block);
            if (!isMain && !feedsAll) continue;
            sender.data.value = sample;
            sender.send(isMain ? time : time - 0.004); // so that it matters which of them are of one time
        }
        block->process();
    }
    const Output& getOutput(std::size_t number) const {
        return dynamic_cast<const Output&>(*block->getOutputPins().at(number));
    }
    const Output& getLast() const { return getOutput(block->getOutputPins().size() - 1); }

    const BlockPtr block;

private:
    std::deque<Output> senders;
    std::deque<Core::InputPin<MatrixXd>> receivers;
};

class KnownTypesTest : public testing::Test {
protected:
    KnownTypesTest() {
        catalogue.load(VELMARIND_PLUGIN);
        catalogue.load(Support::everydayPlugin());
    }

    bool getSends(const char* type, Eigen::Index rows, Eigen::Index columns) const {
        FedBlock fed(catalogue, type);
        fed.feed(MatrixXd::Ones(rows, columns), 5.0);
        return fed.getLast().data.timeStamp == 5.0;
    }

    /// What stands at a block's outputs behind each of its steps, fed with the same values at these times.
    std::vector<MatrixXd> traceOf(const std::string& type, const std::vector<double>& times) const {
        FedBlock fed(catalogue, type);
        std::vector<MatrixXd> trace;
        for (std::size_t step = 0; step < times.size(); ++step) {
            const double x = static_cast<double>(step % 7);
            fed.feed(Support::matrix({{x, 1.0 - x, 0.1 * x * x}}), times[step], true);
            for (std::size_t i = 0; i < fed.block->getOutputPins().size(); ++i)
                trace.push_back(fed.getOutput(i).data.value);
        }
        return trace;
    }

    /// As many times, `step` apart.
    static std::vector<double> timesBy(double step) {
        std::vector<double> times;
        for (int i = 0; i < 300; ++i)
            times.push_back(step * i);
        return times;
    }

    BlockCatalogue catalogue;
};

TEST_F(KnownTypesTest, EachStandsOnceByName) {
    for (const KnownType& type : getKnownTypes()) {
        EXPECT_EQ(&getKnownType(type.name), &type) << type.name;
        EXPECT_NE(catalogue.create(type.name, "b"), nullptr) << type.name;
    }
}

TEST_F(KnownTypesTest, OfOthersNothingIsKnown) {
    const KnownType& type = getKnownType("FilterOfSomebodyElse");
    EXPECT_STREQ(type.name, "");
    EXPECT_FALSE(type.keepsShape || type.isWindow || type.isTransform || type.readsTimes ||
                 type.trustsFirstStep || type.getStampsWallClock("out"));
    EXPECT_EQ(type.startedBy, nullptr);
}

TEST_F(KnownTypesTest, BlocksTreatShapesAsTheTableSays) {
    for (const KnownType& type : getKnownTypes()) {
        SCOPED_TRACE(type.name);
        if (type.isWindow) {
            EXPECT_FALSE(getSends(type.name, 8, 3));
            EXPECT_FALSE(getSends(type.name, 1, 1));
            EXPECT_TRUE(getSends(type.name, 1, 3));
            EXPECT_TRUE(getSends(type.name, 8, 1));
        }
        if (type.isTransform) {
            EXPECT_FALSE(getSends(type.name, 1, 3));
        }
        if (!type.isTransform && !type.keepsShape) continue;
        FedBlock fed(catalogue, type.name);
        fed.feed(MatrixXd::Ones(8, 3), 5.0);
        EXPECT_EQ(fed.getLast().data.timeStamp, 5.0);
        EXPECT_EQ(fed.getLast().data.value.cols(), type.isTransform ? 1 : 3);
        if (!type.keepsShape) continue;
        for (std::size_t i = 0; i < fed.block->getOutputPins().size(); ++i) {
            EXPECT_EQ(fed.getOutput(i).data.timeStamp, 5.0);
            EXPECT_EQ(fed.getOutput(i).data.value.cols(), 3);
            EXPECT_EQ(fed.getOutput(i).data.value.rows(), 8);
        }
    }
}

TEST_F(KnownTypesTest, BlocksThatTakeManyRowsAtOnceReckonWithNoTimes) {
    std::vector<std::string> offering;
    for (const std::string& name : catalogue.getTypeNames()) {
        if (dynamic_cast<Core::RowStepper*>(catalogue.create(name, "b").get()) == nullptr) continue;
        offering.push_back(name);
        const KnownType& type = getKnownType(name);
        EXPECT_FALSE(type.readsTimes || type.makesTimes || type.trustsFirstStep) << name;
        EXPECT_EQ(type.wallClockOutputs.front(), nullptr) << name;
    }
    std::sort(offering.begin(), offering.end());
    // Each of them is compared with single steps in a RowStepperTest.
    const std::vector<std::string> compared = {
        "Affine",     "Columns", "FilterBandPass",   "FilterButterworth",
        "FilterGain", "Logic",   "MovingStatistics", "Norm"};
    EXPECT_EQ(offering, compared);
}

TEST_F(KnownTypesTest, BlocksStampTheWallClockWhereTheTableSaysSo) {
    for (const std::string& type : catalogue.getTypeNames()) {
        FedBlock fed(catalogue, type);
        const double lent = 77.0;
        const Core::StampClock::Lent clock(&lent);
        fed.feed(MatrixXd::Ones(1, 1), 5.0);
        for (std::size_t i = 0; i < fed.block->getOutputPins().size(); ++i) {
            const Output& output = fed.getOutput(i);
            EXPECT_EQ(output.data.timeStamp == 77.0, getKnownType(type).getStampsWallClock(output.getName()))
                << type << "." << output.getName();
        }
    }
}

TEST_F(KnownTypesTest, BlocksReckonWithTimesWhereTheTableSaysSo) {
    const auto slow = timesBy(0.01);
    const auto fast = timesBy(0.002);
    for (const std::string& type : catalogue.getTypeNames()) {
        if (mainInputOf(*catalogue.create(type, "b")) == nullptr) continue;
        const bool isOfTimes = !Support::agree(traceOf(type, slow), traceOf(type, fast), Support::same);
        EXPECT_EQ(isOfTimes, getKnownType(type).readsTimes) << type;
    }
}

TEST_F(KnownTypesTest, WhoTrustsTheFirstStepNeverForgetsIt) {
    const auto even = timesBy(0.01);
    auto odd = even;
    odd.front() = -1.0;
    for (const KnownType& type : getKnownTypes()) {
        if (!type.trustsFirstStep) continue;
        EXPECT_TRUE(type.readsTimes) << type.name;
        EXPECT_FALSE(
            Support::agree(traceOf(type.name, even).back(), traceOf(type.name, odd).back(), Support::same))
            << type.name;
    }
}

TEST_F(KnownTypesTest, WhatACommandStartsCountsNothingBefore) {
    for (const KnownType& type : getKnownTypes()) {
        if (type.startedBy == nullptr) continue;
        FedBlock fed(catalogue, type.name);
        const auto getHasCounted = [&] {
            bool hasCounted = false;
            for (const double x : {-1.0, 1.0, -1.0, 1.0}) {
                fed.feed(MatrixXd::Constant(1, 1, x), 5.0);
                for (std::size_t i = 0; i < fed.block->getOutputPins().size(); ++i)
                    hasCounted = hasCounted || fed.getOutput(i).data.value(0) > 0.0;
            }
            return hasCounted;
        };
        EXPECT_FALSE(getHasCounted()) << type.name;
        dynamic_cast<Core::CommandProperty&>(fed.block->getProperty(type.startedBy)).fire();
        EXPECT_TRUE(getHasCounted()) << type.name;
    }
}

} // namespace
