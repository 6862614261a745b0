// SPDX-License-Identifier: MIT
#include "blocks/FilterPeriodCounter.h"

#include "tests/blocks/SendLog.h"
#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"
#include "tests/support/Scalars.h"
#include "tests/support/SteadySteps.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

using namespace Support;

namespace {
constexpr const char* kPeriods = "Nb Period";
constexpr const char* kCounting = "Is Counting";

struct Fixture {
    FilterPeriodCounter block{"periods"};
    Feed feed{block};

    explicit Fixture(int limit, bool started = true) {
        feed.set("Nb Period", limit);
        if (started) feed.fire("Reset");
    }
    void run(std::initializer_list<double> inputs) {
        feed.forget();
        for (const MatrixXd& x : scalars(inputs)) {
            feed.give("in", x, time += 1.0);
            feed.step();
        }
    }
    double time = 0.0;
};
} // namespace

TEST(FilterPeriodCounterTest, Catalogue) {
    FilterPeriodCounter block("periods");
    EXPECT_STREQ(block.getTypeName(), "FilterPeriodCounter");
    EXPECT_EQ(catalogue(block), "input \"in\" blocking\n"
                                "output \"Nb Period\"\n"
                                "output \"Is Counting\"\n"
                                "command \"Reset\"\n"
                                "range int \"Nb Period\" 0 in [0;200] step 1\n"
                                "range double \"Threshold\" 0 in [-5000;5000] step 0.10000000000000001\n"
                                "range double \"Absolute Tolerance\" 0 in [-100;100] step 0.01\n");
}

TEST(FilterPeriodCounterTest, CountsWholePeriodsUpToTheLimit) {
    Fixture f(2);
    f.run({-1, 1, -1, 1, -1, 1, -1, 1});
    EXPECT_TRUE(agree(f.feed.values(kCounting), scalars({0, 1, 1, 1, 1, 1, 0, 0}), same));
    EXPECT_TRUE(agree(f.feed.values(kPeriods), scalars({0, 0, 1, 2}), same));
    const double stamps[] = {1, 2, 4, 6};
    for (std::size_t i = 0; i < 4; ++i)
        EXPECT_TRUE(agree(f.feed.sent(kPeriods)[i].timeStamp, stamps[i], same)) << i;
    for (std::size_t i = 0; i < 8; ++i)
        EXPECT_TRUE(agree(f.feed.sent(kCounting)[i].timeStamp, static_cast<double>(i + 1), same)) << i;
}

TEST(FilterPeriodCounterTest, IdleUntilTheFirstReset) {
    Fixture f(2, false);
    f.run({-1, 1, -1, 1});
    EXPECT_TRUE(agree(f.feed.values(kCounting), scalars({0, 0, 0, 0}), same));
    EXPECT_TRUE(agree(f.feed.values(kPeriods), scalars({0, 0, 0, 0}), same));
}

TEST(FilterPeriodCounterTest, SendsTheCountBeforeTheState) {
    Fixture f(2, false);
    const SendLog log(f.block);
    f.run({-1});
    EXPECT_EQ(log.order, (std::vector<std::string>{kPeriods, kCounting})) << "while idle";
    f.feed.fire("Reset");
    f.run({-1, 1, -1, 1});
    const std::vector<std::string> wanted{kPeriods,  kCounting, // idle, which one more sends on
                                          kPeriods,  kCounting, kPeriods, kCounting,
                                          kCounting, kPeriods,  kCounting};
    EXPECT_EQ(log.order, wanted) << "and where a period ends";
}

TEST(FilterPeriodCounterTest, CrossesTheBandUpwards) {
    struct Row {
        const char* name;
        double threshold;
        double tolerance;
        std::vector<MatrixXd> inputs;
        std::vector<MatrixXd> counting;
    };
    const Row rows[] = {
        {.name = "a start above must go below first",
         .threshold = 0.0,
         .tolerance = 0.0,
         .inputs = scalars({1, 2, -1, 1}),
         .counting = scalars({0, 0, 0, 1})},
        {.name = "a start inside must go below first",
         .threshold = 0.0,
         .tolerance = 1.0,
         .inputs = scalars({0, 2, 0, -2, 2}),
         .counting = scalars({0, 0, 0, 0, 1})},
        {.name = "a stop inside, then on upwards, counts",
         .threshold = 0.0,
         .tolerance = 1.0,
         .inputs = scalars({-2, 0, 0.5, 2}),
         .counting = scalars({0, 0, 0, 1})},
        {.name = "falls and rises inside the band don't",
         .threshold = 0.0,
         .tolerance = 1.0,
         .inputs = scalars({-2, 0.5, -0.5, 1, -1, 0.9}),
         .counting = scalars({0, 0, 0, 0, 0, 0})},
        {.name = "both bounds lie inside",
         .threshold = 2.0,
         .tolerance = 0.5,
         .inputs = scalars({1.5, 2.5, 1.25, 2.5, 2.75}),
         .counting = scalars({0, 0, 0, 0, 1})},
        {.name = "not-a-number lies inside",
         .threshold = 0.0,
         .tolerance = 0.0,
         .inputs = scalars({-1, kNaN, 1}),
         .counting = scalars({0, 0, 1})},
        {.name = "zeros of either sign lie on a threshold of zero",
         .threshold = 0.0,
         .tolerance = 0.0,
         .inputs = scalars({-0.0, 0.0, -1, -0.0, 0.0, 5e-324}),
         .counting = scalars({0, 0, 0, 0, 0, 1})},
        {.name = "infinities",
         .threshold = 0.0,
         .tolerance = 0.0,
         .inputs = scalars({-kInf, kInf}),
         .counting = scalars({0, 1})},
        {.name = "a negative tolerance: what is on both sides is below",
         .threshold = 0.0,
         .tolerance = -1.0,
         .inputs = scalars({0, 0.5, 0.99, 1}),
         .counting = scalars({0, 0, 0, 1})},
    };
    for (const Row& row : rows) {
        Fixture f(9);
        f.feed.set("Threshold", row.threshold);
        f.feed.set("Absolute Tolerance", row.tolerance);
        for (const MatrixXd& x : row.inputs) {
            f.feed.give("in", x);
            f.feed.step();
        }
        EXPECT_TRUE(agree(f.feed.values(kCounting), row.counting, same)) << row.name;
    }
}

TEST(FilterPeriodCounterTest, WithALimitOfZeroTheFirstCrossingEndsTheCount) {
    Fixture f(0);
    f.run({-1, 1, -1, 1});
    EXPECT_TRUE(agree(f.feed.values(kCounting), scalars({0, 1, 0, 0}), same));
    EXPECT_TRUE(agree(f.feed.values(kPeriods), scalars({0, 0}), same));
}

TEST(FilterPeriodCounterTest, AFinishedCountHeedsNoLimit) {
    Fixture f(2);
    f.run({-1, 1, -1, 1, -1, 1});
    f.feed.set("Nb Period", 1);
    f.run({-1, 1});
    EXPECT_TRUE(agree(f.feed.values(kCounting), scalars({0, 0}), same));
    EXPECT_TRUE(f.feed.sent(kPeriods).empty());
    f.feed.set("Nb Period", 9);
    f.run({-1, 1, -1, 1});
    EXPECT_TRUE(agree(f.feed.values(kCounting), scalars({0, 0, 0, 0}), same));
    EXPECT_TRUE(f.feed.sent(kPeriods).empty());
}

TEST(FilterPeriodCounterTest, ALimitLoweredBelowARunningCountLetsItRun) {
    Fixture f(5);
    f.run({-1, 1, -1, 1, -1, 1});
    f.feed.set("Nb Period", 1);
    f.run({-1, 1, -1, 1});
    EXPECT_TRUE(agree(f.feed.values(kPeriods), scalars({3, 4}), same));
    EXPECT_TRUE(agree(f.feed.values(kCounting), scalars({1, 1, 1, 1}), same)) << "it keeps what it was";
    f.feed.set("Nb Period", 4);
    f.run({-1, -1});
    EXPECT_TRUE(agree(f.feed.values(kCounting), scalars({1, 0}), same)) << "equal to the count: finished";
}

TEST(FilterPeriodCounterTest, ResetStartsAnewAtAnyTime) {
    Fixture f(1);
    f.run({-1, 1, -1});
    f.feed.fire("Reset");
    EXPECT_TRUE(agree(f.feed.values(kCounting), scalars({0, 1, 1}), same)) << "a command makes no step";
    f.run({1, -1, 1, -1, 1, -1});
    EXPECT_TRUE(agree(f.feed.values(kCounting), scalars({0, 0, 1, 1, 1, 0}), same)) << "disarmed";
    EXPECT_TRUE(agree(f.feed.values(kPeriods), scalars({0, 0, 0, 1}), same));
    f.feed.fire("Reset");
    f.run({-1, 1, -1, 1});
    EXPECT_TRUE(agree(f.feed.values(kPeriods), scalars({0, 0, 1}), same));
}

TEST(FilterPeriodCounterTest, OnlyElementZeroCounts) {
    Fixture f(1);
    for (const MatrixXd& x : {matrix({{-1, 5}, {5, 5}}), matrix({{1, -5}})}) {
        f.feed.give("in", x);
        f.feed.step();
    }
    EXPECT_TRUE(agree(f.feed.values(kCounting), scalars({0, 1}), same));
}

TEST(FilterPeriodCounterTest, AnEmptySampleWhileCountingChangesNothing) {
    Fixture f(1);
    f.run({-1});
    f.feed.forget();
    for (const MatrixXd& empty : {MatrixXd(0, 0), MatrixXd(0, 3), MatrixXd(3, 0)}) {
        f.feed.give("in", empty);
        f.feed.step();
    }
    f.feed.step();
    EXPECT_TRUE(f.feed.sent(kCounting).empty());
    EXPECT_TRUE(f.feed.sent(kPeriods).empty());
    f.run({1});
    EXPECT_TRUE(agree(f.feed.values(kCounting), scalars({1}), same)) << "still armed";
}

TEST(FilterPeriodCounterTest, AnEmptySampleIsLikeAnyOtherWhileIdle) {
    Fixture f(1, false);
    f.feed.give("in", MatrixXd(0, 0), 4.0);
    f.feed.step();
    EXPECT_TRUE(agree(f.feed.values(kCounting), scalars({0}), same));
    EXPECT_TRUE(agree(f.feed.values(kPeriods), scalars({0}), same));
    EXPECT_TRUE(agree(f.feed.last(kPeriods).timeStamp, 4.0, same));
}

TEST(FilterPeriodCounterTest, WithoutASampleNothingHappens) {
    Fixture f(1);
    f.feed.step();
    EXPECT_TRUE(f.feed.sent(kCounting).empty());
    EXPECT_TRUE(f.feed.sent(kPeriods).empty());
}

TEST(FilterPeriodCounterTest, RefusesSettingsOutsideTheirLimits) {
    Fixture f(1);
    EXPECT_EQ(refusal<Poco::RangeException>([&] { f.feed.set("Nb Period", 201); }),
              "201 does not fit in [0;200], (step : 1)");
    EXPECT_EQ(refusal<Poco::RangeException>([&] { f.feed.set("Nb Period", -1); }),
              "-1 does not fit in [0;200], (step : 1)");
    EXPECT_EQ(refusal<Poco::RangeException>([&] { f.feed.set("Threshold", 5000.5); }),
              "5000.5 does not fit in [-5000;5000], (step : 0.1)");
    EXPECT_EQ(refusal<Poco::RangeException>([&] { f.feed.set("Absolute Tolerance", kNaN); }),
              "nan does not fit in [-100;100], (step : 0.01)");
    EXPECT_EQ(f.feed.get<int>("Nb Period"), 1);
}

TEST(FilterPeriodCounterTest, ASteadyStepAllocatesNothing) {
    FilterPeriodCounter block("periods");
    EXPECT_EQ(allocationsOfAHundredSteps(block, "in", MatrixXd::Ones(4, 6)), 0u) << "idle";
    dynamic_cast<CommandProperty&>(block.getProperty("Reset")).fire();
    EXPECT_EQ(allocationsOfAHundredSteps(block, "in", MatrixXd::Ones(4, 6)), 0u) << "counting";
}

namespace {
/// The rule, word by word.
struct LiteralCounter {
    int limit = 0;
    double threshold = 0.0;
    double tolerance = 0.0;
    int lastSide = 1;
    bool armed = false;
    bool crossing = false;
    int count = -1;
    bool finished = true;
    double periods = 0.0;
    double counting = 0.0;
    std::vector<MatrixXd> sentPeriods{};
    std::vector<MatrixXd> sentCounting{};

    void reset() {
        lastSide = 1;
        armed = false;
        count = -1;
        finished = false;
    }
    void step(double x) {
        if (finished)
            counting = 0.0;
        else
            follow(x);
        if (count == -1) {
            periods = counting = 0.0;
            sentPeriods.push_back(matrix({{periods}}));
        }
        sentCounting.push_back(matrix({{counting}}));
    }
    void follow(double x) {
        lastSide = threshold - tolerance > x ? -1 : threshold + tolerance < x ? 1 : 0;
        crossing = armed && lastSide == 1;
        if (!(armed && lastSide != 1)) armed = lastSide == -1;
        if (crossing) {
            periods = ++count;
            sentPeriods.push_back(matrix({{periods}}));
        }
        if (count == limit) {
            finished = true;
            counting = 1.0;
        }
        if (count < limit) {
            finished = false;
            counting = 1.0;
        }
    }
};
} // namespace

TEST(FilterPeriodCounterTest, LongTrace) {
    std::mt19937_64 random(49);
    Fixture f(0, false);
    LiteralCounter literal;
    for (int n = 0; n < 20000; ++n) {
        if (onceIn(60, random)) {
            f.feed.fire("Reset");
            literal.reset();
        }
        if (onceIn(60, random)) f.feed.set("Nb Period", literal.limit = static_cast<int>(random() % 6));
        if (onceIn(60, random))
            f.feed.set("Threshold", literal.threshold = 0.5 * static_cast<double>(random() % 5) - 1.0);
        if (onceIn(60, random))
            f.feed.set("Absolute Tolerance",
                       literal.tolerance = 0.5 * static_cast<double>(random() % 4) - 0.5);
        const double x = anyNumber(random);
        f.feed.give("in", matrix({{x}}), n);
        f.feed.step();
        literal.step(x);
    }
    EXPECT_GT(literal.sentPeriods.size(), 2000u);
    EXPECT_TRUE(agree(f.feed.values(kPeriods), literal.sentPeriods, same));
    EXPECT_TRUE(agree(f.feed.values(kCounting), literal.sentCounting, same));
}
