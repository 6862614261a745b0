// SPDX-License-Identifier: MIT
#include "blocks/FilterFunctionGenerator.h"

#include "tests/blocks/AttributeLog.h"
#include "tests/support/Allocations.h"
#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>
#include <string>
#include <vector>

#include <Poco/Exception.h>

using namespace Support;

namespace {
enum Mode : unsigned { kSinusoid, kTriangular, kRectangular, kContinuous };

/// The rule, told once more: what a step sends, from the settings and the phase as they stand.
struct Rule {
    unsigned mode = kSinusoid;
    double period = 1000.0;
    double amplitude = 100.0;
    double offset = 0.0;
    int step = 10;
    double phase = 0.0;
    double time = 0.0;

    double next() {
        const double value = valueNow();
        phase += step;
        time += step;
        if (phase >= period) phase -= period;
        return value;
    }

private:
    double valueNow() const {
        switch (mode) {
        case kSinusoid:
            return std::sin(phase * (2.0 * std::numbers::pi) / period) * amplitude + offset;
        case kTriangular:
            return (2.0 * phase / period - 1.0) * amplitude + offset;
        case kRectangular:
            return 2.0 * phase <= period ? offset + amplitude : offset - amplitude;
        default:
            return offset;
        }
    }
};
} // namespace

class FilterFunctionGeneratorTest : public testing::Test {
protected:
    double next() {
        feed.step();
        return feed.last().value(0);
    }
    /// What the samples from here on are, at phases 0, step, 2 * step and so on.
    std::vector<double> take(int count) {
        std::vector<double> values;
        for (int i = 0; i < count; ++i)
            values.push_back(next());
        return values;
    }

    FilterFunctionGenerator block{"generator"};
    Feed feed{block};
};

TEST_F(FilterFunctionGeneratorTest, Catalogue) {
    EXPECT_STREQ(block.getTypeName(), "FilterFunctionGenerator");
    EXPECT_EQ(block.getName(), "generator");
    EXPECT_EQ(catalogue(block),
              "output \"out\"\n"
              "enum \"Mode\" 0 of sinusoid, triangular, rectangular, continuous\n"
              "range double \"SignalPeriod\" 1000 in [1;60000] step 1\n"
              "range double \"SignalAmplitude\" 100 in [0;1000] step 0.10000000000000001\n"
              "range double \"SignalOffset\" 0 in [-1000;1000] step 9.9999999999999995e-07\n"
              "range int \"SampleRate\" 10 in [0;1000] step 1\n");
}

TEST_F(FilterFunctionGeneratorTest, HoldsMinusTheDefaultAmplitudeBeforeTheFirstStep) {
    const auto& out = dynamic_cast<const OutputPin<MatrixXd>&>(block.getOutputPin("out"));
    EXPECT_TRUE(agree(out.data.value, matrix({{-100}}), same));
    feed.set("SignalAmplitude", 7.0);
    EXPECT_TRUE(agree(out.data.value, matrix({{-100}}), same));
    EXPECT_TRUE(feed.sent().empty());
}

TEST_F(FilterFunctionGeneratorTest, SinusoidStartsAtZeroStampedWithTheFirstStep) {
    EXPECT_TRUE(agree(next(), 0.0, same));
    EXPECT_TRUE(agree(feed.last().timeStamp, 10.0, same));
    EXPECT_TRUE(agree(next(), std::sin(2.0 * std::numbers::pi * 10.0 / 1000.0) * 100.0, withinUlp(2)));
    EXPECT_TRUE(agree(feed.last().timeStamp, 20.0, same));
}

TEST_F(FilterFunctionGeneratorTest, SinusoidOfADozenSteps) {
    feed.set("SignalPeriod", 12.0);
    feed.set("SampleRate", 1);
    feed.set("SignalAmplitude", 2.0);
    feed.set("SignalOffset", 0.5);
    const double root = std::sqrt(3.0);
    const double wanted[] = {0, 1, root, 2, root, 1, 0, -1, -root, -2, -root, -1, 0, 1};
    for (const double value : wanted)
        EXPECT_TRUE(agree(next(), value + 0.5, withinRel(1e-15)));
}

TEST_F(FilterFunctionGeneratorTest, TriangularIsARampThatJumpsBack) {
    feed.set<unsigned>("Mode", kTriangular);
    const std::vector<double> values = take(101);
    EXPECT_TRUE(agree(values[0], -100.0, same));
    EXPECT_TRUE(agree(values[50], 0.0, same)) << "at phase 500";
    EXPECT_TRUE(agree(values[75], 50.0, same));
    EXPECT_TRUE(agree(values[99], 98.0, same));
    EXPECT_TRUE(agree(values[100], -100.0, same)) << "the next period";
}

TEST_F(FilterFunctionGeneratorTest, RectangularFallsBehindHalfThePeriod) {
    feed.set<unsigned>("Mode", kRectangular);
    feed.set("SignalOffset", 3.0);
    const std::vector<double> values = take(101);
    EXPECT_TRUE(agree(values[0], 103.0, same));
    EXPECT_TRUE(agree(values[50], 103.0, same)) << "exactly half the period is still up";
    EXPECT_TRUE(agree(values[51], -97.0, same));
    EXPECT_TRUE(agree(values[99], -97.0, same));
    EXPECT_TRUE(agree(values[100], 103.0, same));
}

TEST_F(FilterFunctionGeneratorTest, ContinuousIsTheOffset) {
    feed.set<unsigned>("Mode", kContinuous);
    feed.set("SignalOffset", -0.0);
    EXPECT_TRUE(agree(next(), -0.0, same));
    feed.set("SignalOffset", -12.5);
    EXPECT_TRUE(agree(next(), -12.5, same));
    EXPECT_TRUE(agree(feed.last().timeStamp, 20.0, same)) << "time goes on";
}

TEST_F(FilterFunctionGeneratorTest, AStepOfZeroStandsStill) {
    next();
    feed.set("SampleRate", 0);
    const double value = next();
    for (int i = 0; i < 5; ++i) {
        EXPECT_TRUE(agree(next(), value, same));
        EXPECT_TRUE(agree(feed.last().timeStamp, 10.0, same));
    }
}

TEST_F(FilterFunctionGeneratorTest, AStepBeyondThePeriodLetsThePhaseGrow) {
    feed.set("SampleRate", 1000);
    feed.set("SignalPeriod", 1.0);
    for (int i = 0; i < 100; ++i) {
        const double phase = 999.0 * i;
        EXPECT_TRUE(agree(next(), std::sin(phase * (2.0 * std::numbers::pi) / 1.0) * 100.0, same))
            << "step " << i;
        EXPECT_TRUE(agree(feed.last().timeStamp, 1000.0 * (i + 1), same));
    }
}

TEST_F(FilterFunctionGeneratorTest, ASmallerPeriodIsWorkedOffOnceAStep) {
    feed.set<unsigned>("Mode", kTriangular);
    take(90); // phase 900
    feed.set("SignalPeriod", 300.0);
    // 900, then 910 - 300 = 610, 320, 30: three single subtractions.
    for (const double phase : {900.0, 610.0, 320.0, 30.0, 40.0})
        EXPECT_TRUE(agree(next(), (2.0 * phase / 300.0 - 1.0) * 100.0, same)) << "phase " << phase;
}

TEST_F(FilterFunctionGeneratorTest, AModeChangeGoesOnFromThePhase) {
    take(25); // phase 250
    feed.set<unsigned>("Mode", kTriangular);
    EXPECT_TRUE(agree(next(), -50.0, same));
    feed.set<unsigned>("Mode", kRectangular);
    EXPECT_TRUE(agree(next(), 100.0, same));
}

TEST_F(FilterFunctionGeneratorTest, ContinuousModeLocksWhatItDoesNotUse) {
    using Poco::NoPermissionException;
    const auto period = [&] { feed.set("SignalPeriod", 500.0); };
    const auto amplitude = [&] { feed.setText("SignalAmplitude", "5"); };
    const auto rate = [&] { feed.set("SampleRate", 5); };
    feed.set<unsigned>("Mode", kContinuous);
    EXPECT_EQ(refusal<NoPermissionException>(period), "Property 'SignalPeriod' is not writable");
    EXPECT_EQ(refusal<NoPermissionException>(amplitude), "Property 'SignalAmplitude' is not writable");
    EXPECT_EQ(refusal<NoPermissionException>(rate), "Property 'SampleRate' is not writable");
    EXPECT_NO_THROW(feed.set("SignalOffset", 5.0));
    EXPECT_TRUE(agree(feed.get<double>("SignalPeriod"), 1000.0, same)) << "present values remain";
    next();
    EXPECT_TRUE(agree(feed.last().timeStamp, 10.0, same)) << "the rate goes on";
    feed.set<unsigned>("Mode", kRectangular);
    EXPECT_NO_THROW(period());
    EXPECT_NO_THROW(amplitude());
    EXPECT_NO_THROW(rate());
}

TEST_F(FilterFunctionGeneratorTest, ModeTellsOfTheLocksInOrder) {
    AttributeLog log(block);
    const std::vector<std::string> once{"SignalAmplitude", "SignalPeriod", "SampleRate"};
    feed.set<unsigned>("Mode", kContinuous);
    EXPECT_EQ(log.names, once);
    log.names.clear();
    feed.set<unsigned>("Mode", kTriangular);
    EXPECT_EQ(log.names, once);
    log.names.clear();
    feed.set<unsigned>("Mode", kTriangular);
    EXPECT_TRUE(log.names.empty()) << "an equal write tells no one";
}

TEST_F(FilterFunctionGeneratorTest, RefusesWhatLiesOutside) {
    using Poco::RangeException;
    EXPECT_EQ(refusal<RangeException>([&] { feed.set("SignalPeriod", 0.5); }),
              "0.5 does not fit in [1;60000], (step : 1)");
    EXPECT_EQ(refusal<RangeException>([&] { feed.set("SignalAmplitude", -0.1); }),
              "-0.1 does not fit in [0;1000], (step : 0.1)");
    EXPECT_EQ(refusal<RangeException>([&] { feed.set("SignalOffset", 1000.5); }),
              "1000.5 does not fit in [-1000;1000], (step : 1e-06)");
    EXPECT_EQ(refusal<RangeException>([&] { feed.set("SampleRate", 1001); }),
              "1001 does not fit in [0;1000], (step : 1)");
    EXPECT_EQ(refusal<RangeException>([&] { feed.set("Mode", 4U); }), "");
}

TEST(FilterFunctionGeneratorTraceTest, AMillionStepsFollowTheRule) {
    std::mt19937_64 random(31);
    FilterFunctionGenerator block("generator");
    auto& mode = dynamic_cast<EnumProperty<std::string>&>(block.getProperty("Mode"));
    auto& period = dynamic_cast<RangeProperty<double>&>(block.getProperty("SignalPeriod"));
    auto& amplitude = dynamic_cast<RangeProperty<double>&>(block.getProperty("SignalAmplitude"));
    auto& offset = dynamic_cast<RangeProperty<double>&>(block.getProperty("SignalOffset"));
    auto& rate = dynamic_cast<RangeProperty<int>&>(block.getProperty("SampleRate"));
    InputPin<MatrixXd> receiver("receiver", nullptr);
    block.getOutputPin("out").attach(receiver, true);
    Rule rule;
    for (int step = 0; step < 1000000; ++step) {
        if (step % 1000 == 999) {
            mode.setValue(rule.mode = static_cast<unsigned>(random() % 4));
            offset.setValue(rule.offset = static_cast<double>(random() % 2000) / 7.0 - 100.0);
        }
        if (step % 5000 == 4999 && rule.mode != kContinuous) {
            period.setValue(rule.period = 1.0 + static_cast<double>(random() % 50000) / 3.0);
            amplitude.setValue(rule.amplitude = static_cast<double>(random() % 1000) / 1.5);
            rate.setValue(rule.step = static_cast<int>(random() % 40));
        }
        block.process();
        ASSERT_TRUE(receiver.hasData());
        ASSERT_TRUE(agree(receiver.take()(0), rule.next(), same)) << "step " << step;
        ASSERT_TRUE(agree(receiver.getTimeStamp(), rule.time, same)) << "step " << step;
    }
}

TEST_F(FilterFunctionGeneratorTest, AStepAllocatesNothing) {
    FilterFunctionGenerator own("own");
    own.process();
    const AllocationCounter counter;
    for (int i = 0; i < 100; ++i)
        own.process();
    EXPECT_EQ(counter.count(), 0u);
}
