// SPDX-License-Identifier: MIT
#include "blocks/BlockPoleZeroBase.h"

#include "blocks/FilterBessel.h"
#include "blocks/FilterButterworthV2.h"
#include "blocks/FilterChebyshev.h"
#include "blocks/FilterEllipticV1.h"
#include "tests/blocks/AttributeLog.h"
#include "tests/blocks/SendLog.h"
#include "tests/design/DesignKit.h"
#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"
#include "tests/support/SteadySteps.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

// What the four blocks share, tested on each of them.

using namespace Support;

namespace {

constexpr unsigned kLowPass = 0;
constexpr unsigned kHighPass = 1;
constexpr unsigned kBandPass = 2;
constexpr unsigned kBandStop = 3;

/// The recursion in one line, with the coefficients of a published design.
class OneLine {
public:
    OneLine(Eigen::Index feedForward, Eigen::Index feedback, Kit::Shape shape)
        : forward(feedForward), poles(feedback), u1(MatrixXd::Zero(shape.rows, shape.cols)), y1(u1) {}

    MatrixXd step(const MatrixXd& coeffs, const MatrixXd& u) {
        const double formerX = coeffs.row(0).head(forward - 1).sum();
        const double formerY = coeffs.row(1).head(poles).sum();
        MatrixXd y = coeffs(0, forward - 1) * u + formerX * u1 + formerY * y1;
        const auto largest = [](const MatrixXd& m) { return m.cwiseAbs().maxCoeff(); };
        // A sum of up to 42 terms, each rounding by half an ulp of at most the sum of their sizes.
        rounding =
            42.0 * 0x1p-53 * coeffs.cwiseAbs().sum() * std::max({largest(u), largest(u1), largest(y1)});
        u1 = u;
        return y;
    }
    /// What the filter made of the last step, which the next one looks back to.
    void sent(const MatrixXd& y) { y1 = y; }
    double getRounding() const { return rounding; }

private:
    Eigen::Index forward, poles;
    MatrixXd u1, y1;
    double rounding = 0.0;
};

template <class Block>
class PoleZeroBlocks : public testing::Test {
protected:
    static constexpr bool kIsElliptic = std::is_same_v<Block, FilterEllipticV1>;
    static constexpr const char* kLow = kIsElliptic ? "LowRelFreq" : "LowRelativeCutOffFreq";
    static constexpr const char* kHigh = kIsElliptic ? "HighRelFreq" : "HighRelativeCutOffFreq";

    /// Chooses a band mode with edges in order.
    void chooseBand(unsigned mode, double low, double high) {
        feed.set("Mode", mode);
        feed.set(kHigh, 1.0);
        feed.set(kLow, low);
        feed.set(kHigh, high);
    }

    /// How many feed-forward coefficients the run step uses.
    static Eigen::Index countForward(unsigned mode, int order, bool isMatched) {
        const bool isShort = kIsElliptic || isMatched; // without the zeros that the bilinear mapping adds
        if (isShort && mode == kLowPass) return 1;
        return (mode == kBandStop || (mode == kBandPass && !isShort) ? 2 * order : order) + 1;
    }

    /// Elliptic blocks have one mapping only, and ignore `isMatched`.
    static void expectOneLineRecursion(unsigned mode, int order, bool isMatched, Kit::Shape shape) {
        Block tested("filter");
        Feed testedFeed(tested);
        testedFeed.set("Mode", mode);
        if (mode >= kBandPass) testedFeed.set(kHigh, 0.4);
        testedFeed.set(kLow, 0.3);
        testedFeed.set("Order", order);
        if (!kIsElliptic) testedFeed.set("MatchedZ-Transform", isMatched);
        OneLine line(countForward(mode, order, isMatched), mode >= kBandPass ? 2 * order : order, shape);
        int steps = 0;
        for (const MatrixXd& sample : Kit::randomTrace(5, 300, shape.rows, shape.cols)) {
            const MatrixXd got = testedFeed.run("in", sample, steps, "out");
            const double divisor = kIsElliptic ? 1.0 : testedFeed.last("gain").value(0);
            const MatrixXd wanted = line.step(testedFeed.last("coeffs").value, sample / divisor);
            if (!(wanted.cwiseAbs().maxCoeff() < 1e280))
                break; // some of these grow without bound, as they must
            ASSERT_TRUE(agree(got, wanted, law(line.getRounding()))) << "step " << steps;
            line.sent(got);
            ++steps;
        }
        // An odd elliptic low-pass may be infinite from its first output on.
        EXPECT_GE(steps, kIsElliptic && mode == kLowPass && order == 3 ? 0 : 20);
    }

    RangeProperty<double>& high() { return dynamic_cast<RangeProperty<double>&>(block.getProperty(kHigh)); }

    Block block{"filter"};
    Feed feed{block};
};

using Blocks = testing::Types<FilterBessel, FilterButterworthV2, FilterChebyshev, FilterEllipticV1>;
TYPED_TEST_SUITE(PoleZeroBlocks, Blocks);
} // namespace

// ---- Worked samples

TYPED_TEST(PoleZeroBlocks, EveryDesignIsPublishedBeforeItsFirstOutput) {
    const std::vector<std::string> designs{"gain", "coeffs", "out"};
    const std::vector<std::string> runsOn{"out"};
    SendLog log(this->block);
    const auto step = [&] {
        log.order.clear();
        this->feed.run("in", matrix({{1.0}}), 0.0, "out");
        return log.order;
    };
    EXPECT_EQ(step(), designs) << "the first sample";
    EXPECT_EQ(step(), runsOn);
    this->feed.set("Order", 2);
    EXPECT_EQ(step(), designs) << "a later design";
    EXPECT_EQ(step(), runsOn);
}

TYPED_TEST(PoleZeroBlocks, TheDesignCarriesTheWallClockAndTheOutputTheInputsTime) {
    this->feed.run("in", matrix({{1.0}}), 12.5, "out");
    EXPECT_TRUE(agree(this->feed.last("out").timeStamp, 12.5, same));
    // Seconds since 1582: near 1.4e10 in our days.
    for (const char* const pin : {"gain", "coeffs"}) {
        EXPECT_GT(this->feed.last(pin).timeStamp, 1.3e10) << pin;
        EXPECT_LT(this->feed.last(pin).timeStamp, 2e10) << pin;
    }
    EXPECT_EQ(this->feed.last("gain").value.size(), 1);
    EXPECT_EQ(this->feed.last("coeffs").value.rows(), 2);
}

TYPED_TEST(PoleZeroBlocks, TheOutputIsTheOneLineRecursionOfThePublishedDesign) {
    for (const unsigned mode : {kLowPass, kHighPass, kBandPass, kBandStop})
        for (const int order : {1, 2, 3, 4, 10})
            for (const bool isMatched : {true, false})
                for (const Kit::Shape shape : Kit::kShapes) {
                    SCOPED_TRACE("mode " + std::to_string(mode) + ", order " + std::to_string(order) +
                                 (isMatched ? ", matched" : ""));
                    this->expectOneLineRecursion(mode, order, isMatched, shape);
                }
}

// ---- Edges

TYPED_TEST(PoleZeroBlocks, TheGainPinIsOneByOneFromTheStart) {
    const auto& gain = dynamic_cast<OutputPin<MatrixXd>&>(this->block.getOutputPin("gain"));
    EXPECT_EQ(gain.data.value.rows(), 1);
    EXPECT_EQ(gain.data.value.cols(), 1);
}

TYPED_TEST(PoleZeroBlocks, WithoutASampleNothingHappens) {
    this->feed.step();
    this->feed.step();
    for (const char* const pin : {"gain", "coeffs", "out"})
        EXPECT_TRUE(this->feed.sent(pin).empty()) << pin;
}

TYPED_TEST(PoleZeroBlocks, ADesignWaitsForItsSample) {
    this->feed.step();
    this->feed.run("in", matrix({{1.0}}), 0.0, "out");
    EXPECT_EQ(this->feed.sent("coeffs").size(), 1u);
    this->feed.set("Order", 2);
    this->feed.step();
    this->feed.step();
    EXPECT_EQ(this->feed.sent("coeffs").size(), 1u);
    this->feed.run("in", matrix({{1.0}}), 0.0, "out");
    EXPECT_EQ(this->feed.sent("gain").size(), 2u);
    EXPECT_EQ(this->feed.sent("coeffs").size(), 2u);
}

TYPED_TEST(PoleZeroBlocks, AnEmptySampleIsDroppedAndTheDesignWaits) {
    for (const MatrixXd& empty : {MatrixXd(0, 0), MatrixXd(0, 3), MatrixXd(2, 0)}) {
        this->feed.give("in", empty);
        this->feed.step();
    }
    for (const char* const pin : {"gain", "coeffs", "out"})
        EXPECT_TRUE(this->feed.sent(pin).empty()) << pin;
    this->feed.run("in", matrix({{1.0}}), 0.0, "out");
    EXPECT_EQ(this->feed.sent("gain").size(), 1u);
    EXPECT_EQ(this->feed.sent("coeffs").size(), 1u);
}

TYPED_TEST(PoleZeroBlocks, EveryDesignSettingPublishesOnce) {
    this->feed.run("in", matrix({{1.0}}), 0.0, "out");
    const auto expectPublished = [this](const char* what) {
        this->feed.forget();
        this->feed.run("in", matrix({{1.0}}), 0.0, "out");
        this->feed.run("in", matrix({{1.0}}), 0.0, "out");
        EXPECT_EQ(this->feed.sent("gain").size(), 1u) << what;
        EXPECT_EQ(this->feed.sent("coeffs").size(), 1u) << what;
    };
    this->feed.set("Mode", kBandStop);
    expectPublished("Mode");
    this->feed.set("Order", 2);
    expectPublished("Order");
    this->feed.set(this->kHigh, 0.3);
    expectPublished("high");
    this->feed.set(this->kLow, 0.2);
    expectPublished("low");
    if (this->kIsElliptic) {
        this->feed.set("Ripple BandPass", 1.0);
        expectPublished("Ripple BandPass");
        this->feed.set("Ripple BandStop", -20.0);
        expectPublished("Ripple BandStop");
    } else {
        this->feed.set("MatchedZ-Transform", false);
        expectPublished("MatchedZ-Transform");
    }
}

TYPED_TEST(PoleZeroBlocks, EqualEdgesAreNaNWithoutAMessage) {
    for (const unsigned mode : {kBandPass, kBandStop}) {
        this->chooseBand(mode, 0.3, 0.3);
        for (int n = 0; n < 3; ++n)
            EXPECT_TRUE(
                agree(this->feed.run("in", matrix({{1.0, 0.0}}), 0.0, "out"), matrix({{kNaN, kNaN}}), same));
        EXPECT_TRUE(std::isnan(this->feed.last("gain").value(0)));
        const MatrixXd coeffs = this->feed.last("coeffs").value;
        EXPECT_TRUE(coeffs.row(1).array().isNaN().all());
        EXPECT_TRUE(std::isnan(coeffs(0, 0))) << "the rest may be filled up with zeros";
    }
}

// ---- The edges of a band are kept in order

TYPED_TEST(PoleZeroBlocks, TheHighEdgeIsWritableInBandModesOnly) {
    const auto isWritable = [this] { return this->high().getIsWritable(); };
    const auto write = [this] { this->feed.set(this->kHigh, 0.7); };
    EXPECT_FALSE(isWritable());
    const std::string text = std::string("Property '") + this->kHigh + "' is not writable";
    EXPECT_EQ(refusal<Poco::NoPermissionException>(write), text);
    for (const unsigned mode : {kBandPass, kBandStop}) {
        this->feed.set("Mode", mode);
        EXPECT_TRUE(isWritable());
        this->feed.set("Mode", kHighPass);
        EXPECT_FALSE(isWritable());
        EXPECT_EQ(refusal<Poco::NoPermissionException>(write), text);
        this->feed.set("Mode", mode);
        this->feed.set("Mode", kLowPass);
        EXPECT_FALSE(isWritable());
    }
}

TYPED_TEST(PoleZeroBlocks, ABandModePullsTheHighEdgeUp) {
    this->feed.set(this->kLow, 0.4);
    EXPECT_LT(this->feed.template get<double>(this->kHigh), 0.4) << "nothing moves in a low-pass";
    this->feed.set("Mode", kBandPass);
    EXPECT_TRUE(agree(this->feed.template get<double>(this->kHigh), 0.4, same));
}

TYPED_TEST(PoleZeroBlocks, TheLowEdgeTakesTheHighOneAlong) {
    this->feed.set("Mode", kBandStop);
    this->feed.set(this->kHigh, 0.2);
    this->feed.set(this->kLow, 0.6);
    EXPECT_TRUE(agree(this->feed.template get<double>(this->kHigh), 0.6, same));
    this->feed.set(this->kLow, 0.5);
    EXPECT_TRUE(agree(this->feed.template get<double>(this->kHigh), 0.6, same));
}

TYPED_TEST(PoleZeroBlocks, TheHighEdgeTakesTheLowOneAlong) {
    this->feed.set("Mode", kBandPass);
    this->feed.set(this->kHigh, 0.8);
    this->feed.set(this->kLow, 0.6);
    this->feed.set(this->kHigh, 0.02);
    EXPECT_TRUE(agree(this->feed.template get<double>(this->kLow), 0.02, same));
    EXPECT_TRUE(agree(this->feed.template get<double>(this->kHigh), 0.02, same));
}

TYPED_TEST(PoleZeroBlocks, TheHighEdgeTakesTheLowOneAlongInAnyMode) {
    for (const unsigned mode : {kLowPass, kHighPass}) {
        this->feed.set("Mode", mode);
        this->feed.set(this->kLow, 0.5);
        this->high().setIsWritable(true); // a host may
        this->feed.set(this->kHigh, 0.02);
        EXPECT_TRUE(agree(this->feed.template get<double>(this->kLow), 0.02, same)) << mode;
        this->feed.set(this->kHigh, 0.6);
    }
}

TYPED_TEST(PoleZeroBlocks, TheLowEdgeAsksWhetherTheHighOneIsWritableNotForTheMode) {
    this->high().setIsWritable(true);
    this->feed.set(this->kLow, 0.7);
    EXPECT_TRUE(agree(this->feed.template get<double>(this->kHigh), 0.7, same)) << "in a low-pass";
    this->feed.set("Mode", kBandPass);
    this->high().setIsWritable(false);
    this->feed.set(this->kLow, 0.9);
    EXPECT_TRUE(agree(this->feed.template get<double>(this->kHigh), 0.7, same)) << "in a band-pass";
}

TYPED_TEST(PoleZeroBlocks, EveryModeTellsOfTheHighEdgesLock) {
    AttributeLog log(this->block);
    for (const unsigned mode : {kHighPass, kBandPass, kBandStop, kHighPass, kLowPass}) {
        log.names.clear();
        this->feed.set("Mode", mode);
        EXPECT_EQ(log.names, std::vector<std::string>{this->kHigh}) << mode;
        EXPECT_EQ(this->high().getIsWritable(), mode >= kBandPass) << mode;
    }
    log.names.clear();
    this->feed.set("Mode", kLowPass);
    EXPECT_TRUE(log.names.empty()) << "an equal write tells no one";
}

TYPED_TEST(PoleZeroBlocks, TheUnusedHighEdgePlaysNoPart) {
    TypeParam other("other");
    Feed otherFeed(other);
    otherFeed.set("Mode", kBandPass);
    otherFeed.set(this->kHigh, 0.9);
    otherFeed.set("Mode", kHighPass);
    this->feed.set("Mode", kHighPass);
    for (int n = 0; n < 5; ++n)
        EXPECT_TRUE(agree(this->feed.run("in", matrix({{n * 1.5}}), 0.0, "out"),
                          otherFeed.run("in", matrix({{n * 1.5}}), 0.0, "out"), same));
}

TYPED_TEST(PoleZeroBlocks, LimitsAreInterface) {
    EXPECT_EQ(refusal<Poco::RangeException>([this] { this->feed.set("Order", 0); }),
              "0 does not fit in [1;10], (step : 1)");
    EXPECT_EQ(refusal<Poco::RangeException>([this] { this->feed.set("Order", 11); }),
              "11 does not fit in [1;10], (step : 1)");
    EXPECT_EQ(refusal<Poco::RangeException>([this] { this->feed.set("Mode", 4u); }), "");
    EXPECT_EQ(refusal<Poco::RangeException>([this] { this->feed.set(this->kLow, 1.5); }),
              this->kIsElliptic ? "1.5 does not fit in [0.01;1], (step : 0.0001)"
                                : "1.5 does not fit in [0;1], (step : 1e-06)");
}

// ---- Memory

TYPED_TEST(PoleZeroBlocks, ResetZeroesTheStateAndKeepsTheDesign) {
    struct Row {
        const char* name;
        MatrixXd control;
        bool isFired, isReset;
    };
    const Row rows[] = {
        {.name = "one", .control = matrix({{1.0}}), .isFired = false, .isReset = true},
        {.name = "a NaN", .control = matrix({{kNaN}}), .isFired = false, .isReset = true},
        {.name = "only the first value counts",
         .control = matrix({{0.0, 1.0}}),
         .isFired = false,
         .isReset = false},
        {.name = "zero", .control = matrix({{0.0}}), .isFired = false, .isReset = false},
        {.name = "minus zero", .control = matrix({{-0.0}}), .isFired = false, .isReset = false},
        {.name = "an empty sample", .control = MatrixXd(1, 0), .isFired = false, .isReset = false},
        {.name = "the command", .control = matrix({{0.0}}), .isFired = true, .isReset = true},
    };
    for (const Row& row : rows) {
        TypeParam tested("filter");
        Feed testedFeed(tested);
        testedFeed.set("Mode", kHighPass);
        const MatrixXd fresh = testedFeed.run("in", matrix({{1.0, 2.0}}), 0.0, "out");
        testedFeed.run("in", matrix({{5.0, 3.0}}), 0.0, "out");
        testedFeed.forget();
        TypeParam twin("filter");
        Feed twinFeed(twin);
        twinFeed.set("Mode", kHighPass);
        twinFeed.run("in", matrix({{1.0, 2.0}}), 0.0, "out");
        twinFeed.run("in", matrix({{5.0, 3.0}}), 0.0, "out");
        const MatrixXd third = twinFeed.run("in", matrix({{1.0, 2.0}}), 0.0, "out");
        ASSERT_FALSE(agree(third, fresh, same)) << "or the rows below would show nothing";
        if (row.isFired)
            testedFeed.fire("Reset");
        else
            testedFeed.give("reset", row.control);
        const MatrixXd got = testedFeed.run("in", matrix({{1.0, 2.0}}), 0.0, "out");
        EXPECT_TRUE(agree(got, row.isReset ? fresh : third, same)) << row.name;
        EXPECT_TRUE(testedFeed.sent("gain").empty()) << row.name;
        EXPECT_TRUE(testedFeed.sent("coeffs").empty()) << row.name;
    }
}

TYPED_TEST(PoleZeroBlocks, AResetWithoutASampleHappensAtOnce) {
    const MatrixXd fresh = this->feed.run("in", matrix({{2.0}}), 0.0, "out");
    this->feed.give("reset", matrix({{1.0}}));
    this->feed.step();
    this->feed.give("reset", matrix({{0.0}}));
    EXPECT_TRUE(agree(this->feed.run("in", matrix({{2.0}}), 0.0, "out"), fresh, same));
}

TYPED_TEST(PoleZeroBlocks, ANewShapeStartsAnewAndPublishesNothing) {
    this->feed.run("in", matrix({{1.0, 2.0}}), 0.0, "out");
    this->feed.forget();
    TypeParam twin("filter");
    Feed twinFeed(twin);
    EXPECT_TRUE(agree(this->feed.run("in", matrix({{3.0}, {4.0}}), 0.0, "out"),
                      twinFeed.run("in", matrix({{3.0}, {4.0}}), 0.0, "out"), same));
    EXPECT_TRUE(this->feed.sent("gain").empty());
    EXPECT_TRUE(this->feed.sent("coeffs").empty());
}

TYPED_TEST(PoleZeroBlocks, ADesignAbsorbsAReset) {
    this->feed.run("in", matrix({{1.0}}), 0.0, "out");
    this->feed.set("Mode", kHighPass);
    this->feed.give("reset", matrix({{1.0}}));
    this->feed.run("in", matrix({{1.0}}), 0.0, "out");
    TypeParam twin("filter");
    Feed twinFeed(twin);
    twinFeed.set("Mode", kHighPass);
    twinFeed.run("in", matrix({{1.0}}), 0.0, "out");
    EXPECT_TRUE(agree(this->feed.run("in", matrix({{5.0}}), 0.0, "out"),
                      twinFeed.run("in", matrix({{5.0}}), 0.0, "out"), same))
        << "the reset was used up by the design";
}

TYPED_TEST(PoleZeroBlocks, ASteadyStepAllocatesNothing) {
    TypeParam own("own");
    own.getProperty("Order").setValueFromString("10");
    EXPECT_EQ(allocationsOfAHundredSteps(own, "in", MatrixXd::Ones(8, 9)), 0u);
}
