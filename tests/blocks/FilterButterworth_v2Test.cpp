// SPDX-License-Identifier: MIT
#include "blocks/FilterButterworth_v2.h"

#include "tests/design/DesignKit.h"
#include "tests/support/Allocations.h"
#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

using namespace Support;

namespace {

constexpr unsigned kLowPass = 0;
constexpr unsigned kHiPass = 1;

/// The recursion in one line, for one element.
struct Plain {
    double x = 0.0;
    double y = 0.0;

    void start(double u) { x = y = u; }
    double step(double cutOff, double u) {
        const double t = std::tan(cutOff * (4.0 * std::atan(1.0)) * 0.5);
        y = (1.0 - t) / (1.0 + t) * y + t / (1.0 + t) * (x + u);
        x = u;
        return y;
    }
};

/// A block with one element on its pins.
struct Scalar {
    FilterButterworth_v2 block{"smooth"};
    Feed feed{block};

    double run(double u) { return feed.run("in", matrix({{u}}))(0); }
    void cutOff(double value) { feed.give("RelativeCutOffFreq", matrix({{value}})); }
};

/// A block between bare links, which allocate nothing, so that what the block allocates can be counted.
/// Restarts are off.
class Counted {
public:
    Counted() {
        sender.attach(block.getInputPin("in"), false);
        cutOffs.attach(block.getInputPin("RelativeCutOffFreq"), false);
        block.getOutputPin("out").attach(receiver, false);
        set("ReinitOnCutOffFreqUpdate", false);
        sender.data.value = MatrixXd::Ones(1, 3);
        cutOffs.data.value = MatrixXd::Ones(1, 1);
    }

    template <class T>
    void set(const char* name, const T& value) {
        block.getProperty(name).setValueFromAny(&value);
    }

    /// A start with the shown cut-off.
    void restart() {
        set("ReinitOnCutOffFreqUpdate", true);
        dynamic_cast<CommandProperty&>(block.getProperty("Init")).fire();
        step();
        set("ReinitOnCutOffFreqUpdate", false);
    }

    /// The allocations of a step that a new cut-off goes before.
    std::uint64_t visit(double cutOff) {
        cutOffs.data.value(0) = cutOff;
        const AllocationCounter counter;
        cutOffs.send(1.0);
        step();
        return counter.count();
    }

private:
    void step() {
        sender.send(1.0);
        block.process();
        ASSERT_TRUE(receiver.hasData());
        receiver.take();
    }

    FilterButterworth_v2 block{"smooth"};
    Quillmere::Core::OutputPin<MatrixXd> sender{"sender", nullptr};
    Quillmere::Core::OutputPin<MatrixXd> cutOffs{"cutOffs", nullptr};
    InputPin<MatrixXd> receiver{"receiver", nullptr};
};

} // namespace

TEST(FilterButterworth_v2Test, Catalogue) {
    FilterButterworth_v2 block("smooth");
    EXPECT_STREQ(block.getTypeName(), "FilterButterworth_v2");
    EXPECT_EQ(catalogue(block), "input \"in\" blocking\n"
                                "input \"RelativeCutOffFreq\" blocking\n"
                                "input \"reset\" non-blocking\n"
                                "output \"out\"\n"
                                "command \"Init\"\n"
                                "range double \"RelativeCutOffFreq\" 0.050000000000000003 in [0;1] step "
                                "9.9999999999999995e-07\n"
                                "range int \"Order\" 1 in [0;1] step 1\n"
                                "enum \"Mode\" 0 of LowPass, HiPass\n"
                                "value bool \"ReinitOnCutOffFreqUpdate\" true\n"
                                "value bool \"MemorizeCoef\" false\n");
}

TEST(FilterButterworth_v2Test, WorkedSample) {
    // At half the band t is tan(pi/4), one unit below 1: a1 is a rounding error, so y is the mean of two
    // inputs.
    Scalar smooth;
    smooth.feed.set("RelativeCutOffFreq", 0.5);
    const double inputs[] = {4.0, 2.0, -1.0, 7.0};
    const double wanted[] = {4.0, 3.0, 0.5, 3.0};
    for (int n = 0; n < 4; ++n)
        EXPECT_TRUE(agree(smooth.run(inputs[n]), wanted[n], law(1e-14))) << n;
}

TEST(FilterButterworth_v2Test, TheFirstOutputIsTheFirstInputAndAConstantStays) {
    const MatrixXd input = matrix({{1, -2.5, 0}, {3, 1e3, 7}});
    for (const unsigned mode : {kLowPass, kHiPass}) {
        FilterButterworth_v2 block("smooth");
        Feed feed(block);
        feed.set("Mode", mode);
        for (int n = 0; n < 50; ++n) {
            const MatrixXd wanted = mode == kLowPass ? input : MatrixXd::Zero(2, 3);
            EXPECT_TRUE(agree(feed.run("in", input), wanted, law(1e-11))); // 1e3 to fourteen digits
        }
    }
}

TEST(FilterButterworth_v2Test, OrderZeroGivesTheInputInBothModes) {
    for (const unsigned mode : {kLowPass, kHiPass}) {
        FilterButterworth_v2 block("smooth");
        Feed feed(block);
        feed.set("Order", 0);
        feed.set("Mode", mode);
        for (const MatrixXd& input : {matrix({{1, kNaN, -0.0}}), matrix({{2}, {3}}), MatrixXd(0, 0)}) {
            feed.give("RelativeCutOffFreq", matrix({{0.7}}));
            EXPECT_TRUE(agree(feed.run("in", input), input, same));
        }
    }
}

TEST(FilterButterworth_v2Test, ACutOffTakenInABypassLeavesNothingToRunOn) {
    // Without restarts a filter sleeps through a bypass and goes on. A cut-off that comes meanwhile is
    // designed at once, for order 0, which has no coefficients; so the way back is a start, at the cut-off
    // that the setting shows.
    for (const bool moves : {false, true}) {
        Scalar smooth;
        smooth.feed.set("ReinitOnCutOffFreqUpdate", false);
        Plain plain;
        plain.start(1.0);
        EXPECT_TRUE(agree(smooth.run(1.0), plain.step(0.05, 1.0), same)) << moves;
        EXPECT_TRUE(agree(smooth.run(3.0), plain.step(0.05, 3.0), same)) << moves;
        smooth.feed.set("Order", 0);
        EXPECT_TRUE(agree(smooth.run(40.0), 40.0, same)) << moves;
        if (moves) smooth.cutOff(0.7);
        EXPECT_TRUE(agree(smooth.run(50.0), 50.0, same)) << moves;
        smooth.feed.set("Order", 1);
        if (moves) plain.start(2.0);
        EXPECT_TRUE(agree(smooth.run(2.0), plain.step(0.05, 2.0), same)) << moves;
        EXPECT_TRUE(agree(smooth.run(5.0), plain.step(0.05, 5.0), same)) << moves;
    }
}

TEST(FilterButterworth_v2Test, WhatEachEventDoes) {
    // After 1 and 3 at 0.05, the event, then 10: which cut-off meets it, and whether the state does.
    struct Row {
        const char* name;
        void (*act)(Feed&);
        bool restarts; // with "ReinitOnCutOffFreqUpdate"
        double cutOff; // afterwards
    };
    const Row rows[] = {
        {.name = "nothing", .act = [](Feed&) {}, .restarts = false, .cutOff = 0.05},
        {.name = "cut-off by pin",
         .act =
             [](Feed& feed) {
                 feed.give("RelativeCutOffFreq", matrix({{0.4, 9.0}}));
             },
         .restarts = true,
         .cutOff = 0.4},
        {.name = "cut-off by pin, beyond 1",
         .act = [](Feed& feed) { feed.give("RelativeCutOffFreq", matrix({{1.3}})); },
         .restarts = true,
         .cutOff = 1.3},
        {.name = "the present cut-off by pin",
         .act = [](Feed& feed) { feed.give("RelativeCutOffFreq", matrix({{0.05}})); },
         .restarts = false,
         .cutOff = 0.05},
        {.name = "an empty sample as cut-off",
         .act = [](Feed& feed) { feed.give("RelativeCutOffFreq", MatrixXd(1, 0)); },
         .restarts = false,
         .cutOff = 0.05},
        {.name = "cut-off by setting",
         .act = [](Feed& feed) { feed.set("RelativeCutOffFreq", 0.4); },
         .restarts = true,
         .cutOff = 0.4},
        {.name = "Init", .act = [](Feed& feed) { feed.fire("Init"); }, .restarts = true, .cutOff = 0.05},
        {.name = "reset 1",
         .act = [](Feed& feed) { feed.give("reset", matrix({{1}})); },
         .restarts = true,
         .cutOff = 0.05},
        {.name = "reset not-a-number",
         .act = [](Feed& feed) { feed.give("reset", matrix({{kNaN}})); },
         .restarts = true,
         .cutOff = 0.05},
        {.name = "reset 0",
         .act = [](Feed& feed) { feed.give("reset", matrix({{0}})); },
         .restarts = false,
         .cutOff = 0.05},
        {.name = "reset empty",
         .act = [](Feed& feed) { feed.give("reset", MatrixXd(0, 0)); },
         .restarts = false,
         .cutOff = 0.05},
        {.name = "the pin against the setting: the pin comes last",
         .act =
             [](Feed& feed) {
                 feed.set("RelativeCutOffFreq", 0.4);
                 feed.give("RelativeCutOffFreq", matrix({{0.3}}));
             },
         .restarts = true,
         .cutOff = 0.3},
        {.name = "the pin, then any setting: the shown value comes back",
         .act =
             [](Feed& feed) {
                 feed.give("RelativeCutOffFreq", matrix({{0.4}}));
                 feed.step();
                 feed.fire("Init");
             },
         .restarts = true,
         .cutOff = 0.05},
    };
    for (const Row& row : rows)
        for (const bool reinit : {true, false}) {
            Scalar smooth;
            smooth.feed.set("ReinitOnCutOffFreqUpdate", reinit);
            Plain plain;
            plain.start(1.0);
            EXPECT_TRUE(agree(smooth.run(1.0), plain.step(0.05, 1.0), same)) << row.name;
            EXPECT_TRUE(agree(smooth.run(3.0), plain.step(0.05, 3.0), same)) << row.name;
            row.act(smooth.feed);
            if (row.restarts && reinit) plain.start(10.0);
            EXPECT_TRUE(agree(smooth.run(10.0), plain.step(row.cutOff, 10.0), same))
                << row.name << ", reinit " << reinit;
            EXPECT_TRUE(agree(smooth.run(-4.0), plain.step(row.cutOff, -4.0), same))
                << row.name << ", reinit " << reinit;
        }
}

TEST(FilterButterworth_v2Test, AModeWithoutRestartsSwapsTheOutput) {
    for (const bool reinit : {true, false}) {
        Scalar smooth;
        smooth.feed.set("ReinitOnCutOffFreqUpdate", reinit);
        Plain plain;
        plain.start(1.0);
        smooth.run(1.0);
        plain.step(0.05, 1.0);
        smooth.feed.set("Mode", kHiPass);
        if (reinit) plain.start(6.0);
        EXPECT_TRUE(agree(smooth.run(6.0), 6.0 - plain.step(0.05, 6.0), same)) << reinit;
        if (reinit) {
            EXPECT_TRUE(agree(smooth.feed.last().value(0), 0.0, law(1e-15)));
        }
    }
}

TEST(FilterButterworth_v2Test, AnOrderWithoutRestartsKeepsCoefficientsAndState) {
    Scalar smooth;
    smooth.feed.set("ReinitOnCutOffFreqUpdate", false);
    Plain plain;
    plain.start(1.0);
    EXPECT_TRUE(agree(smooth.run(1.0), plain.step(0.05, 1.0), same));
    smooth.feed.set("Order", 0);
    EXPECT_TRUE(agree(smooth.run(50.0), 50.0, same));
    smooth.feed.set("Order", 1);
    EXPECT_TRUE(agree(smooth.run(4.0), plain.step(0.05, 4.0), same));
    // With the order, a cut-off written meanwhile is stored but not designed.
    smooth.feed.set("Order", 0);
    smooth.run(50.0);
    smooth.feed.set("RelativeCutOffFreq", 0.9);
    smooth.feed.set("Order", 1);
    EXPECT_TRUE(agree(smooth.run(2.0), plain.step(0.05, 2.0), same));
}

TEST(FilterButterworth_v2Test, AnOrderWithRestartsStartsAnew) {
    Scalar smooth;
    smooth.run(1.0);
    smooth.feed.set("Order", 0);
    smooth.run(50.0);
    smooth.feed.set("Order", 1);
    Plain plain;
    plain.start(4.0);
    EXPECT_TRUE(agree(smooth.run(4.0), plain.step(0.05, 4.0), same));
}

TEST(FilterButterworth_v2Test, MemorizedCutOffsFilterTheSame) {
    Scalar kept;
    Scalar fresh;
    kept.feed.set("MemorizeCoef", true);
    for (Scalar* const each : {&kept, &fresh})
        each->feed.set("ReinitOnCutOffFreqUpdate", false);
    for (int n = 0; n < 200; ++n) {
        const double cutOff = 0.1 * (n % 7 + 1);
        kept.cutOff(cutOff);
        fresh.cutOff(cutOff);
        const double u = std::sin(n * 0.7);
        EXPECT_TRUE(agree(kept.run(u), fresh.run(u), same)) << n;
    }
}

TEST(FilterButterworth_v2Test, AResetWithoutASampleHappensAtOnce) {
    Scalar f;
    f.run(0.0);
    f.feed.give("reset", matrix({{1}}));
    f.feed.step(); // nothing on "in", and yet the request is taken from its pin
    f.feed.give("reset", matrix({{0}}));
    EXPECT_TRUE(agree(f.run(8.0), 8.0, withinRel(1e-14))) << "in the steady state of 8";
}

TEST(FilterButterworth_v2Test, AnotherShapeStartsAnew) {
    FilterButterworth_v2 block("smooth");
    Feed feed(block);
    feed.set("ReinitOnCutOffFreqUpdate", false);
    feed.run("in", matrix({{1, 2, 3}}));
    feed.run("in", matrix({{9, 9, 9}}));
    for (const MatrixXd& input : {matrix({{1, 2}, {3, 4}}), matrix({{5}, {6}, {7}, {8}})}) {
        MatrixXd wanted = input;
        for (Eigen::Index i = 0; i < input.size(); ++i) {
            Plain plain;
            plain.start(input(i));
            wanted(i) = plain.step(0.05, input(i));
        }
        EXPECT_TRUE(agree(feed.run("in", input), wanted, same));
    }
}

TEST(FilterButterworth_v2Test, AnEmptySampleIsSentOnWithItsTimeStamp) {
    FilterButterworth_v2 block("smooth");
    Feed feed(block);
    for (const MatrixXd& input : {MatrixXd(0, 0), MatrixXd(0, 4), matrix({{1}}), MatrixXd(3, 0)}) {
        EXPECT_EQ(feed.run("in", input, 2.5).size(), input.size());
        EXPECT_TRUE(agree(feed.last().timeStamp, 2.5, same));
    }
}

TEST(FilterButterworth_v2Test, ControlSamplesAloneSendNothing) {
    Scalar smooth;
    smooth.cutOff(0.3);
    smooth.feed.give("reset", matrix({{1}}));
    smooth.feed.step();
    EXPECT_TRUE(smooth.feed.sent().empty());
}

TEST(FilterButterworth_v2Test, RefusesWhatDoesNotFit) {
    Scalar smooth;
    EXPECT_EQ(refusal<Poco::RangeException>([&] { smooth.feed.set("Order", 2); }),
              "2 does not fit in [0;1], (step : 1)");
    EXPECT_EQ(refusal<Poco::RangeException>([&] { smooth.feed.set("RelativeCutOffFreq", -0.5); }),
              "-0.5 does not fit in [0;1], (step : 1e-06)");
}

TEST(FilterButterworth_v2Test, MemorizedCutOffsAreKeptAtTheirFirstVisitOnly) {
    Counted smooth;
    smooth.visit(0.05);
    EXPECT_EQ(smooth.visit(0.1), 0u) << "without the cache a cut-off is designed in place";
    smooth.set("MemorizeCoef", true);
    for (const double cutOff : {0.2, 0.3})
        EXPECT_GT(smooth.visit(cutOff), 0u) << cutOff;
    for (const double cutOff : {0.2, 0.3, 0.2})
        EXPECT_EQ(smooth.visit(cutOff), 0u) << cutOff;
}

TEST(FilterButterworth_v2Test, MemorizeCoefWaitsForTheNextCutOff) {
    Counted smooth;
    smooth.visit(0.05);
    smooth.set("MemorizeCoef", true);
    smooth.restart(); // would keep the shown cut-off, 0.05
    EXPECT_GT(smooth.visit(0.1), 0u);
    EXPECT_GT(smooth.visit(0.05), 0u) << "it was not kept by the start";
    EXPECT_EQ(smooth.visit(0.1), 0u);
    EXPECT_EQ(smooth.visit(0.05), 0u);
    smooth.set("MemorizeCoef", false);
    smooth.restart(); // would empty the cache
    smooth.set("MemorizeCoef", true);
    EXPECT_EQ(smooth.visit(0.1), 0u) << "nor was it emptied";
    smooth.set("MemorizeCoef", false);
    smooth.visit(0.05);
    smooth.restart();
    smooth.set("MemorizeCoef", true);
    EXPECT_GT(smooth.visit(0.1), 0u) << "a cut-off has passed it on, and the start has emptied the cache";
}

TEST(FilterButterworth_v2Test, AnOrderPassesMemorizeCoefOn) {
    Counted smooth;
    smooth.visit(0.05);
    smooth.set("MemorizeCoef", true);
    smooth.set("Order", 0);
    smooth.visit(0.05);
    smooth.set("Order", 1);
    smooth.restart(); // keeps the shown cut-off now
    EXPECT_GT(smooth.visit(0.1), 0u);
    EXPECT_EQ(smooth.visit(0.05), 0u);
}

TEST(FilterButterworth_v2Test, ASteadyStepAllocatesNothing) {
    Counted smooth;
    smooth.set("MemorizeCoef", true);
    for (const double cutOff : {0.1, 0.2, 0.3})
        smooth.visit(cutOff);
    std::uint64_t allocations = 0;
    for (int n = 0; n < 100; ++n)
        for (const double cutOff : {0.1, 0.2, 0.3})
            allocations += smooth.visit(cutOff);
    EXPECT_EQ(allocations, 0u);
}

TEST(FilterButterworth_v2Test, LongTraces) {
    std::mt19937_64 random(9);
    std::uniform_int_distribution<int> dice(0, 9);
    for (const Kit::Shape shape : Kit::kShapes) {
        FilterButterworth_v2 block("smooth");
        Feed feed(block);
        feed.set("ReinitOnCutOffFreqUpdate", false);
        std::vector<Plain> plain(static_cast<std::size_t>(shape.rows * shape.cols));
        double cutOff = 0.05;
        bool highPass = false;
        bool isFirst = true;
        for (const MatrixXd& sample : Kit::randomTrace(41, 1000, shape.rows, shape.cols)) {
            const bool moves = dice(random) == 0;
            const bool swaps = dice(random) == 0;
            if (moves) cutOff = 0.1 * (1 + dice(random));
            if (swaps) {
                highPass = !highPass;
                feed.set("Mode", highPass ? kHiPass : kLowPass);
            }
            // Any setting brings the shown cut-off back, and the pin's sample, if one waits, comes after it.
            if (moves || swaps) feed.give("RelativeCutOffFreq", matrix({{cutOff}}));
            MatrixXd wanted = sample;
            for (Eigen::Index i = 0; i < sample.size(); ++i) {
                Plain& element = plain[static_cast<std::size_t>(i)];
                if (isFirst) element.start(sample(i));
                const double y = element.step(cutOff, sample(i));
                wanted(i) = highPass ? sample(i) - y : y;
            }
            isFirst = false;
            ASSERT_TRUE(agree(feed.run("in", sample), wanted, same)) << shape.rows << " by " << shape.cols;
        }
    }
}
