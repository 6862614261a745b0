// SPDX-License-Identifier: MIT
#include "everyday/Resample.h"

#include "tests/support/Allocations.h"
#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <numbers>
#include <vector>

using namespace Support;

namespace {

struct Figures {
    std::vector<double> fast;
    std::vector<double> slow;
};

const Figures kFigures =
#include "tests/everyday/ResampleFigures.inc"
    ;

constexpr unsigned kHold = 1;
constexpr double kReach = 20.0; // steps of the low-pass on either side

struct Pair {
    double time;
    double value;
    bool operator==(const Pair&) const = default;
};
using Pairs = std::vector<Pair>;

void give(Feed& feed, double time, double value) {
    feed.give("in", matrix({{value}}), time);
    feed.step();
}

Pairs sentBy(Feed& feed) {
    Pairs pairs;
    for (const Sample& sample : feed.sent())
        pairs.push_back({sample.timeStamp, sample.value(0)});
    return pairs;
}

Pairs run(Feed& feed, const Pairs& samples) {
    feed.forget();
    for (const auto& [time, value] : samples)
        give(feed, time, value);
    return sentBy(feed);
}

Pairs finish(Feed& feed) {
    feed.forget();
    feed.fire("Finish");
    feed.step();
    return sentBy(feed);
}

double wave(double frequency, double time) {
    return std::sin(2.0 * std::numbers::pi * frequency * time + 0.3);
}

/// A wave at 100 samples a second, at another rate, without the ends.
Pairs resampledWave(double frequency, double rate) {
    Resample block("even");
    Feed feed(block);
    feed.set("Rate", rate);
    for (int n = 0; n < 1000; ++n)
        give(feed, 0.01 * n, wave(frequency, 0.01 * n));
    Pairs pairs = sentBy(feed);
    std::erase_if(pairs, [&](const Pair& pair) { return pair.time < kReach / rate; });
    return pairs;
}

} // namespace

TEST(ResampleTest, Catalogue) {
    Resample block("even");
    EXPECT_STREQ(block.getTypeName(), "Resample");
    EXPECT_EQ(catalogue(block), "input \"in\" blocking\n"
                                "output \"out\"\n"
                                "range double \"Rate\" 100 in [0.001;100000] step 1\n"
                                "enum \"Mode\" 0 of Linear, Hold\n"
                                "value bool \"LowPass\" true\n"
                                "range double \"Gap\" 1 in [0.001;1000000] step 0.10000000000000001\n"
                                "command \"Reset\"\n"
                                "command \"Finish\"\n");
}

TEST(ResampleTest, DrawsLinesBetweenUnevenSamples) {
    Resample block("even");
    Feed feed(block);
    feed.set("Rate", 4.0);
    feed.set("LowPass", false);
    EXPECT_EQ(run(feed, {{10.0, 0}, {10.5, 2}, {10.625, 2.5}, {11.125, 6.5}}),
              (Pairs{{10.0, 0}, {10.25, 1}, {10.5, 2}, {10.75, 3.5}, {11.0, 5.5}}));
}

TEST(ResampleTest, HoldsTheNewest) {
    Resample block("even");
    Feed feed(block);
    feed.set("Rate", 4.0);
    feed.set("Mode", kHold);
    EXPECT_EQ(run(feed, {{10.0, 0}, {10.5, 2}, {10.6, 3}, {11.0, 6}, {11.1, 7}}),
              (Pairs{{10.0, 0}, {10.25, 0}, {10.5, 2}, {10.75, 3}, {11.0, 6}}));
    feed.set("Rate", 100.0);
    Pairs even; // times that are meant to be one may differ in their last digits
    for (int n = 0; n < 200; ++n)
        even.push_back({1e9 + 0.01 * n, static_cast<double>(n)});
    const Pairs held = run(feed, even);
    ASSERT_EQ(held.size(), 199U);
    for (std::size_t n = 0; n < held.size(); ++n)
        EXPECT_EQ(held[n].value, static_cast<double>(n));
}

TEST(ResampleTest, DrawsNothingAcrossAGap) {
    for (const bool hasLowPass : {false, true}) {
        Resample block("even");
        Feed feed(block);
        feed.set("Rate", 2.0);
        feed.set("LowPass", hasLowPass);
        feed.set("Gap", 2.0);
        const Pairs found = run(feed, {{0.0, 1}, {1.0, 3}, {5.25, 7}, {6.25, 9}, {20.0, 0}, {25.0, 1}});
        Pairs wanted{{0.0, 1}, {0.5, 2}, {1.0, 3}, {5.5, 7.5}, {6.0, 8.5}, {20.0, 0}};
        if (!hasLowPass) wanted.push_back({25.0, 1}); // else nobody knows yet whether it is needed
        EXPECT_EQ(found, wanted) << "the times stay those of one grid";
    }
}

TEST(ResampleTest, FromSlowerSamplesThereIsNoLowPass) {
    Resample block("even");
    Feed feed(block);
    feed.set("Rate", 4.0);
    feed.set("Gap", 100.0);
    Pairs slow;
    for (int n = 0; n < 12; ++n)
        slow.push_back({static_cast<double>(n), n % 2 == 0 ? 0.0 : 4.0});
    const Pairs found = run(feed, slow);
    ASSERT_EQ(found.size(), 45U);
    for (std::size_t k = 0; k < found.size(); ++k)
        EXPECT_EQ(found[k].value, std::abs(static_cast<double>((k + 4) % 8) - 4.0)) << k;
}

// The law: what is below 0.4 of the new rate keeps its size within 0.1 dB, 1.2 %, and its place in time;
// what is beyond half of it is below a thousandth.
TEST(ResampleTest, PassesWhatTheRateHoldsAndNothingElse) {
    for (const double rate : {10.0, 20.0, 37.0, 64.0, 90.0}) {
        for (double part = 0.02; part <= 0.4; part += 0.02) {
            for (const auto& [time, value] : resampledWave(part * rate, rate))
                ASSERT_TRUE(agree(value, wave(part * rate, time), law(0.0115))) << part << " of " << rate;
        }
        for (double part = 0.5; part * rate <= 50.0; part += 0.013) {
            for (const auto& [time, value] : resampledWave(part * rate, rate))
                ASSERT_LE(std::abs(value), 1e-3) << part << " of " << rate << " at " << time;
        }
    }
}

TEST(ResampleTest, TheTimesAreEvenAndAllThere) {
    const double rate = 20.0;
    Resample block("even");
    Feed feed(block);
    feed.set("Rate", rate);
    Pairs constant;
    for (int n = 0; n < 1000; ++n)
        constant.push_back({3.0 + 0.01 * n, 7.0});
    const Pairs found = run(feed, constant);
    // Up to 9.99 - 20 / 20 seconds behind the first.
    ASSERT_EQ(found.size(), 180U);
    for (std::size_t k = 0; k < found.size(); ++k) {
        EXPECT_EQ(found[k].time, 3.0 + static_cast<double>(k) / rate);
        EXPECT_TRUE(agree(found[k].value, 7.0, withinRel(1e-14))) << "a constant stays, at the begin, too";
    }
}

TEST(ResampleTest, AtTheFinishTheRestComesBehindWhatWasSent) {
    const double rate = 20.0;
    Resample block("even");
    Feed feed(block);
    feed.set("Rate", rate);
    Pairs constant;
    for (int n = 0; n < 1000; ++n)
        constant.push_back({3.0 + 0.01 * n, 7.0});
    ASSERT_EQ(run(feed, constant).size(), 180U);
    const Pairs rest = finish(feed);
    ASSERT_EQ(rest.size(), 20U) << "to 12.95, the last time within what came";
    for (std::size_t k = 0; k < rest.size(); ++k) {
        EXPECT_EQ(rest[k].time, 3.0 + static_cast<double>(180 + k) / rate);
        EXPECT_TRUE(agree(rest[k].value, 7.0, withinRel(1e-14))) << k;
    }
    EXPECT_TRUE(finish(feed).empty()) << "once";
    EXPECT_EQ(run(feed, {{20.0, 1}, {20.1, 1}}), Pairs()) << "begins anew";
    EXPECT_EQ(finish(feed), (Pairs{{20.0, 1}, {20.05, 1}, {20.1, 1}}));
}

// The law: the end of a course is the begin of the course that runs backward.
TEST(ResampleTest, TheEndIsMadeAsTheBeginIs) {
    for (const double rate : {4.0, 10.0, 20.0, 50.0}) {
        Pairs results[2];
        for (const int direction : {0, 1}) {
            Resample block("even");
            Feed feed(block);
            feed.set("Rate", rate);
            Pairs samples;
            for (int n = 0; n <= 1000; ++n) {
                const double at = 0.01 * (direction == 0 ? n : 1000 - n);
                samples.push_back({0.01 * n, wave(0.3, at) + wave(3.1, at)});
            }
            results[direction] = run(feed, samples);
            const Pairs rest = finish(feed);
            results[direction].insert(results[direction].end(), rest.begin(), rest.end());
        }
        const std::size_t count = static_cast<std::size_t>(10.0 * rate) + 1;
        ASSERT_EQ(results[0].size(), count) << rate;
        ASSERT_EQ(results[1].size(), count) << rate;
        for (std::size_t k = 0; k < count;
             ++k) // because times near the end have fewer digits than at the begin
            EXPECT_TRUE(agree(results[0][k].value, results[1][count - 1 - k].value, law(1e-9)))
                << rate << " " << k;
    }
}

TEST(ResampleTest, AShortRecordingHasItsRowsToo) {
    for (const double rate : {1.0, 2.0, 4.0, 5.0, 10.0, 20.0, 50.0}) {
        Resample block("even");
        Feed feed(block);
        feed.set("Rate", rate);
        Pairs found;
        Pairs samples;
        for (int n = 0; n < 861; ++n)
            samples.push_back({n / 92.77, 1.0});
        found = run(feed, samples);
        const Pairs rest = finish(feed);
        found.insert(found.end(), rest.begin(), rest.end());
        EXPECT_EQ(found.size(), static_cast<std::size_t>(860 / 92.77 * rate) + 1) << rate;
    }
    Resample block("even");
    Feed feed(block);
    EXPECT_EQ(run(feed, {{4.0, 3}}), Pairs());
    EXPECT_EQ(finish(feed), (Pairs{{4.0, 3}}));
}

TEST(ResampleTest, AnotherRateIsThatOfWhatComesFromThenOn) {
    Resample block("even");
    Feed feed(block);
    feed.set("Rate", 10.0);
    Pairs samples;
    for (int n = 0; n < 500; ++n)
        samples.push_back({0.01 * n, 1.0});
    ASSERT_EQ(run(feed, samples).size(), 30U);
    feed.set("Rate", 5.0);
    const Pairs rest = run(feed, {{5.003, 2.0}});
    ASSERT_EQ(rest.size(), 20U) << "to 4.9";
    EXPECT_EQ(rest.back().time, 49 / 10.0);
    EXPECT_EQ(finish(feed), (Pairs{{5.003, 2.0}}));
    run(feed, samples);
    feed.fire("Reset");
    EXPECT_TRUE(run(feed, {{9.0, 1.0}}).empty()) << "a reset forgets what wasn't sent";
}

TEST(ResampleTest, AgreesWithSciPyWhereBothPass) {
    Resample block("even");
    Feed feed(block);
    feed.set("Rate", 25.0);
    for (std::size_t n = 0; n < kFigures.fast.size(); ++n)
        give(feed, 0.01 * static_cast<double>(n), kFigures.fast[n]);
    const Pairs found = sentBy(feed);
    ASSERT_GE(found.size(), 125U);
    // SciPy's filter is as long; both keep 0.1 % of what stops and of what passes.
    for (std::size_t k = 25; k < 125; ++k)
        EXPECT_TRUE(agree(found[k].value, kFigures.slow[k], law(4e-3))) << k;
}

TEST(ResampleTest, UnevenSamplesStandForTheirTime) {
    Resample block("even");
    Feed feed(block);
    feed.set("Rate", 10.0);
    Pairs jittered;
    for (int n = 0; n < 1000; ++n) {
        const double time = 0.01 * n + 0.003 * std::sin(1.7 * n * n);
        jittered.push_back({time, wave(1.0, time)});
    }
    Pairs found = run(feed, jittered);
    std::erase_if(found, [](const Pair& pair) { return pair.time < 2.0; });
    ASSERT_FALSE(found.empty());
    for (const auto& [time, value] : found)
        EXPECT_TRUE(agree(value, wave(1.0, time), law(0.01))) << time; // because samples aren't even
}

TEST(ResampleTest, WhatIsNoNumberStaysNearby) {
    Resample block("even");
    Feed feed(block);
    feed.set("Rate", 10.0);
    Pairs samples;
    for (int n = 0; n < 1000; ++n)
        samples.push_back({0.01 * n, n == 500 ? kNaN : 1.0});
    for (const auto& [time, value] : run(feed, samples))
        EXPECT_EQ(std::isnan(value), std::abs(time - 5.0) < kReach / 10.0 - 1e-9) << time;
}

TEST(ResampleTest, DropsTimesThatDoNotGrow) {
    Resample block("even");
    Feed feed(block);
    feed.set("Rate", 1.0);
    feed.set("LowPass", false);
    feed.set("Gap", 10.0);
    const Pairs wanted{{0.0, 0}, {1.0, 1}, {2.0, 2}};
    EXPECT_EQ(run(feed, {{0.0, 0}, {0.0, 9}, {-1.0, 9}, {kNaN, 9}, {kInf, 9}, {1e300, 9}, {2.0, 2}}), wanted);
    feed.fire("Reset");
    EXPECT_EQ(run(feed, {{-7.0, 3}}), (Pairs{{-7.0, 3}})) << "a reset forgets the times";
    feed.give("in", MatrixXd(0, 2), -6.5);
    feed.step();
    feed.give("in", matrix({{5, 6}}), -9.0);
    feed.step();
    EXPECT_TRUE(agree(feed.last().value, matrix({{5, 6}}), same)) << "another shape";
}

TEST(ResampleTest, ASteadyStepAllocatesNothing) {
    for (const double rate : {10.0, 100.0, 333.0}) {
        Resample block("even");
        dynamic_cast<Quillmere::Core::ValueProperty<double>&>(block.getProperty("Rate")).setValue(rate);
        Quillmere::Core::OutputPin<MatrixXd> sender("sender", nullptr);
        Quillmere::Core::InputPin<MatrixXd> receiver("receiver", nullptr);
        receiver.setBufferCapacity(100);
        sender.attach(block.getInputPin("in"), false);
        block.getOutputPin("out").attach(receiver, false);
        sender.data.value = MatrixXd::Ones(1, 3);
        double time = 0.0;
        const auto step = [&] {
            sender.send(time += 0.01);
            block.process();
            while (receiver.hasData())
                receiver.take();
        };
        for (int i = 0; i < 6000; ++i) // until what is done with makes room
            step();
        const AllocationCounter counter;
        for (int i = 0; i < 6000; ++i)
            step();
        EXPECT_EQ(counter.count(), 0U) << rate;
    }
}
