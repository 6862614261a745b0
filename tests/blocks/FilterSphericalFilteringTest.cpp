// SPDX-License-Identifier: MIT
#include "blocks/FilterSphericalFiltering.h"

#include "tests/blocks/SendLog.h"
#include "tests/estimation/LiteralSpherical.h"
#include "tests/support/Allocations.h"
#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <optional>
#include <random>
#include <string>
#include <vector>

using namespace Support;

namespace {
const MatrixXd kRest = matrix({{0, 0, 0}});
const MatrixXd kDown = matrix({{0, 0, 1}});
const MatrixXd kNorth = matrix({{0.5, 0, 0.866}});
const MatrixXd kIdentity = matrix({{1, 0, 0}, {0, 1, 0}, {0, 0, 1}});
const std::vector<std::string> kOutputs{
    "3a_filtered",      "3m_filtered", "3a_Terre", "3m_Terre", "3a_Terrefiltered",
    "3m_Terrefiltered", "Rot_Gyro",    "Fc",       "Temp"};

struct Fixture {
    FilterSphericalFiltering block{"vectors"};
    Feed feed{block};

    void step(double time, const MatrixXd& rate = kRest) {
        feed.give("3g", rate, time);
        feed.step();
    }
    /// A step with all three vectors.
    void fullStep(double time, const MatrixXd& rate = kRest, const MatrixXd& a = kDown,
                  const MatrixXd& m = kNorth) {
        feed.give("3a", a, -7.0);
        feed.give("3m", m, -8.0);
        step(time, rate);
    }
    MatrixXd last(const std::string& output) { return feed.last(output).value; }
    /// The angle turned about z so far.
    double angle() {
        const MatrixXd r = last("Rot_Gyro");
        return std::atan2(r(1, 0), r(0, 0));
    }
};

const MatrixXd kTurn = matrix({{0, 0, 1}}); // one radian per second about z
} // namespace

TEST(FilterSphericalFilteringTest, Catalogue) {
    FilterSphericalFiltering block("vectors");
    EXPECT_STREQ(block.getTypeName(), "FilterSphericalFiltering");
    EXPECT_EQ(block.getName(), "vectors");
    EXPECT_EQ(catalogue(block),
              "input \"3a\" non-blocking\n"
              "input \"3m\" non-blocking\n"
              "input \"3g\" blocking\n"
              "input \"isMagPerturbed\" blocking\n"
              "input \"Fc (optional)\" blocking\n"
              "input \"reset\" non-blocking\n"
              "output \"3a_filtered\"\n"
              "output \"3m_filtered\"\n"
              "output \"3a_Terre\"\n"
              "output \"3m_Terre\"\n"
              "output \"3a_Terrefiltered\"\n"
              "output \"3m_Terrefiltered\"\n"
              "output \"Rot_Gyro\"\n"
              "output \"Fc\"\n"
              "output \"Temp\"\n"
              "range double \"Frequency\" 100 in [0.10000000000000001;10000] step 0.10000000000000001\n"
              "command \"Reset\"\n"
              "value bool \"Use Timestamp\" false\n"
              "value double \"Filter Gain\" 0.001\n"
              "range double \"Lambda Gain\" 0.69999999999999996 in [0;1000000] step 0.001\n");
}

TEST(FilterSphericalFilteringTest, SendsNineOutputsInOrderWithTheTimeOfTheGyroscope) {
    Fixture f;
    SendLog log(f.block);
    f.fullStep(0.25);
    EXPECT_EQ(log.order, kOutputs);
    for (const std::string& output : kOutputs)
        EXPECT_TRUE(agree(f.feed.last(output).timeStamp, 0.25, same)) << output;
}

TEST(FilterSphericalFilteringTest, AGyroscopeAloneWritesAllOutputs) {
    Fixture f;
    f.step(0.0);
    for (const char* const output : {"3a_filtered", "3a_Terre", "3a_Terrefiltered"})
        EXPECT_TRUE(agree(f.last(output), kDown, same)) << output;
    for (const char* const output : {"3m_filtered", "3m_Terre", "3m_Terrefiltered"})
        EXPECT_TRUE(agree(f.last(output), kNorth, same)) << output;
    EXPECT_TRUE(agree(f.last("Rot_Gyro"), kIdentity, same));
    EXPECT_TRUE(agree(f.last("Fc"), matrix({{0.0001, 0.0001}}), same));
    EXPECT_TRUE(agree(f.last("Temp"), MatrixXd(0, 0), same));
    f.step(0.01);
    EXPECT_TRUE(agree(f.last("Temp"), MatrixXd(MatrixXd::Zero(5, 6)), same));
    EXPECT_TRUE(agree(f.last("3a_Terrefiltered"), kDown, same)) << "held";
}

TEST(FilterSphericalFilteringTest, NothingIsSentWithoutAGyroscope) {
    Fixture f;
    f.feed.step();
    f.feed.give("3a", kDown);
    f.feed.give("3m", kNorth);
    f.feed.give("reset", matrix({{1}}));
    f.feed.step();
    for (const std::string& output : kOutputs)
        EXPECT_TRUE(f.feed.sent(output).empty()) << output;
    // The two vectors were not used up.
    const MatrixXd tilted = matrix({{1, 0, 0}});
    f.feed.give("3a", tilted);
    f.step(0.0);
    EXPECT_TRUE(agree(f.last("3a_Terre"), tilted, same));
    EXPECT_TRUE(agree(f.last("3m_Terre"), kNorth, same));
}

TEST(FilterSphericalFilteringTest, AZeroRateKeepsTheOrientation) {
    Fixture f;
    for (int i = 0; i < 5; ++i) {
        f.fullStep(0.1 * i);
        EXPECT_TRUE(agree(f.last("Rot_Gyro"), kIdentity, same)) << i;
        EXPECT_TRUE(agree(f.last("Fc"), matrix({{0.0001, 0.0001}}), same)) << i;
    }
}

TEST(FilterSphericalFilteringTest, AVectorOfTheWrongSizeCountsAsNone) {
    const MatrixXd shapes[] = {matrix({{1, 0, 0, 0}}), matrix({{1, 0}}), matrix({}),
                               matrix({{1, 0}, {0, 0}})};
    for (const MatrixXd& shape : shapes) {
        Fixture f;
        f.fullStep(0.0);
        f.feed.give("3a", shape);
        f.feed.give("3m", shape);
        f.step(0.1, matrix({{2, 0, 0}}));
        EXPECT_TRUE(agree(f.last("3a_Terrefiltered"), f.feed.sent("3a_Terrefiltered")[0].value, same));
        EXPECT_TRUE(agree(f.last("3m_Terrefiltered"), f.feed.sent("3m_Terrefiltered")[0].value, same));
        EXPECT_FALSE(agree(f.last("3a_Terre"), kDown, same)) << "the last vector, turned";
        f.step(0.2);
        EXPECT_TRUE(agree(f.last("3a_Terrefiltered"), f.feed.sent("3a_Terrefiltered")[0].value, same))
            << "used up, not waiting";
    }
}

TEST(FilterSphericalFilteringTest, AGyroscopeOfTheWrongSizeStoresItsTimeAndLeavesTheVectors) {
    const MatrixXd shapes[] = {matrix({{1, 0, 0, 0}}), matrix({{1, 0}}), matrix({})};
    for (const MatrixXd& shape : shapes) {
        Fixture f;
        f.fullStep(0.0);
        const MatrixXd tilted = matrix({{1, 0, 0}});
        f.feed.give("3a", tilted);
        f.step(0.9, shape);
        EXPECT_EQ(f.feed.sent("Fc").size(), 1u);
        f.step(1.0, kTurn);
        EXPECT_TRUE(agree(f.angle(), 0.1, law(1e-15))) << "from 0.9 on";
        EXPECT_TRUE(agree(f.last("3a_Terre")(1), std::sin(0.1), law(1e-15))) << "the vector waited";
    }
}

TEST(FilterSphericalFilteringTest, RowsAndColumnsAreAlike) {
    Fixture rows;
    Fixture columns;
    for (int i = 0; i < 4; ++i) {
        const MatrixXd g = matrix({{1, 0.5 * i, -2}});
        const MatrixXd a = matrix({{0.1 * i, 0.2, 0.9}});
        const MatrixXd m = matrix({{0.3, -0.2 * i, 0.8}});
        rows.fullStep(0.1 * i, g, a, m);
        columns.fullStep(0.1 * i, g.transpose(), a.transpose(), m.transpose());
        for (const std::string& output : kOutputs)
            EXPECT_TRUE(agree(columns.last(output), rows.last(output), same)) << output;
    }
}

TEST(FilterSphericalFilteringTest, TimeOfAStep) {
    struct Row {
        const char* name;
        double frequency;
        bool useTimestamp;
        std::vector<double> times;
        double angle;
    };
    // clang-format off
    const Row rows[] = {
        // name                                frequency use timestamp times        angle
        {"the first step takes the frequency", 20,       false,        {5},         0.05},
        {"or 0.01 with the time stamps on",    20,       true,         {5},         0.01},
        {"later ones the time stamps",         20,       false,        {5, 5.25},   0.3},
        {"equal time stamps turn nothing",     20,       false,        {5, 5, 5},   0.05},
        {"backwards takes the frequency",      20,       false,        {5, 4},      0.1},
        {"negative time stamps are none",      20,       false,        {-5, -4, 0}, 0.15},
        {"from zero on they count",            20,       false,        {0, 0.5},    0.55},
    };
    // clang-format on
    for (const Row& row : rows) {
        Fixture f;
        f.feed.set("Frequency", row.frequency);
        f.feed.set("Use Timestamp", row.useTimestamp);
        for (const double time : row.times)
            f.step(time, kTurn);
        EXPECT_TRUE(agree(f.angle(), row.angle, law(1e-15))) << row.name;
    }
}

TEST(FilterSphericalFilteringTest, ATimeStampThatIsNoNumberIsNotNegative) {
    Fixture f;
    f.step(kNaN, kTurn);
    EXPECT_TRUE(agree(f.angle(), 0.01, law(1e-15))) << "no time stamp came before";
    f.step(1.0, kTurn);
    EXPECT_TRUE(agree(f.angle(), kNaN, same)) << "a difference from not-a-number";
    f.feed.fire("Reset");
    f.step(1.5, kTurn);
    EXPECT_TRUE(agree(f.angle(), 0.5, law(1e-15)));
}

TEST(FilterSphericalFilteringTest, UseTimestampHasNoHandler) {
    Fixture f;
    f.step(-1.0, kTurn); // negative: every step takes the sample period
    ASSERT_TRUE(agree(f.angle(), 0.01, law(1e-15)));
    f.feed.set("Use Timestamp", true);
    f.feed.set("Frequency", 2.0); // read no more
    f.step(-1.0, kTurn);
    EXPECT_TRUE(agree(f.angle(), 0.02, law(1e-15)));
    f.feed.set("Use Timestamp", false); // not noticed by itself
    f.step(-1.0, kTurn);
    EXPECT_TRUE(agree(f.angle(), 0.03, law(1e-15)));
    f.feed.set("Filter Gain", 0.002);
    f.step(-1.0, kTurn);
    EXPECT_TRUE(agree(f.angle(), 0.53, law(1e-15)));
}

TEST(FilterSphericalFilteringTest, AResetKeepsTheTimeStampAndTheCutoffs) {
    for (const bool byPin : {false, true}) {
        Fixture f;
        f.feed.give("Fc (optional)", matrix({{0.2, 0.4}}));
        f.fullStep(0.0, kTurn);
        f.fullStep(1.0, kTurn);
        f.feed.set("Filter Gain", 0.0); // the next cut-off is the last one over 1.7
        const MatrixXd before = f.last("Fc");
        if (byPin)
            f.feed.give("reset", matrix({{1}}));
        else
            f.feed.fire("Reset");
        f.fullStep(1.25, kTurn);
        EXPECT_TRUE(agree(f.angle(), 0.25, law(1e-15))) << byPin;
        EXPECT_TRUE(agree(f.last("Temp"), MatrixXd(0, 0), same)) << byPin;
        const auto oneDigit = [](double value) {
            const double power = std::floor(std::log10(value));
            return std::floor(value / std::pow(10.0, power) + 0.5) * std::pow(10.0, power);
        };
        EXPECT_TRUE(agree(f.last("Fc"), matrix({{oneDigit(before(0) / 1.7), oneDigit(before(1) / 1.7)}}),
                          withinRel(1e-15)))
            << byPin;
    }
}

TEST(FilterSphericalFilteringTest, ResetRequests) {
    struct Row {
        const char* name;
        MatrixXd sample;
        bool resets;
    };
    const Row rows[] = {
        {.name = "one", .sample = matrix({{1}}), .resets = true},
        {.name = "not a number", .sample = matrix({{kNaN}}), .resets = true},
        {.name = "zero", .sample = matrix({{0}}), .resets = false},
        {.name = "negative zero", .sample = matrix({{-0.0}}), .resets = false},
        {.name = "zero first", .sample = matrix({{0, 1}}), .resets = false},
        {.name = "empty", .sample = matrix({}), .resets = false},
    };
    for (const Row& row : rows) {
        Fixture f;
        f.step(0.0, kTurn);
        f.step(1.0, kTurn);
        f.feed.give("reset", row.sample);
        f.step(1.0, kTurn);
        EXPECT_EQ(std::fabs(f.angle()) < 1e-12, row.resets) << row.name;
    }
}

TEST(FilterSphericalFilteringTest, APerturbedFieldIsHeldInItsStepAlone) {
    struct Row {
        const char* name;
        MatrixXd sample;
        bool holds;
    };
    const Row rows[] = {
        {.name = "one", .sample = matrix({{1}}), .holds = true},
        {.name = "not a number", .sample = matrix({{kNaN}}), .holds = true},
        {.name = "zero", .sample = matrix({{0, 1}}), .holds = false},
        {.name = "empty", .sample = matrix({}), .holds = false},
    };
    const MatrixXd magnet = matrix({{-0.9, 0.9, 0.1}});
    for (const Row& row : rows) {
        Fixture f;
        f.fullStep(0.0);
        const MatrixXd held = f.last("3m_Terrefiltered");
        f.feed.give("isMagPerturbed", row.sample);
        f.fullStep(0.1, kRest, kDown, magnet);
        EXPECT_EQ(static_cast<bool>(agree(f.last("3m_Terrefiltered"), held, same)), row.holds) << row.name;
        EXPECT_TRUE(agree(f.last("3m_Terre"), magnet, same)) << row.name;
        f.fullStep(0.2, kRest, kDown, magnet);
        EXPECT_FALSE(agree(f.last("3m_Terrefiltered"), held, same)) << row.name << ": let go";
    }
    Fixture f;
    f.fullStep(0.0);
    const MatrixXd before = f.last("3m_Terrefiltered");
    f.feed.give("isMagPerturbed", matrix({{1}}));
    f.feed.step(); // no gyroscope: the word is lost
    f.fullStep(0.1, kRest, kDown, magnet);
    EXPECT_FALSE(agree(f.last("3m_Terrefiltered"), before, same));
}

TEST(FilterSphericalFilteringTest, ImposedCutoffs) {
    struct Row {
        const char* name;
        MatrixXd sample;
        std::optional<MatrixXd> cutoffs;
    };
    const Row rows[] = {
        {.name = "one for both", .sample = matrix({{0.12345}}), .cutoffs = matrix({{0.12345, 0.12345}})},
        {.name = "a row of two", .sample = matrix({{0.125, 0.3}}), .cutoffs = matrix({{0.125, 0.3}})},
        {.name = "a column of two", .sample = matrix({{0.125}, {0.3}}), .cutoffs = matrix({{0.125, 0.3}})},
        {.name = "three are silent", .sample = matrix({{0.125, 0.3, 0.5}}), .cutoffs = std::nullopt},
        {.name = "none is silent", .sample = matrix({}), .cutoffs = std::nullopt},
    };
    for (const Row& row : rows) {
        Fixture f;
        f.fullStep(0.0);
        f.fullStep(0.1);
        const MatrixXd temp = f.last("Temp");
        f.feed.give("Fc (optional)", row.sample);
        f.fullStep(0.2, kRest, matrix({{1, 0, 0}}));
        EXPECT_TRUE(agree(f.last("Fc"), row.cutoffs.value_or(matrix({{0.0001, 0.0001}})), same)) << row.name;
        f.feed.give("Fc (optional)", row.sample);
        f.fullStep(0.3);
        EXPECT_EQ(static_cast<bool>(agree(f.last("Temp"), temp, same)), row.cutoffs.has_value()) << row.name;
    }
    Fixture f;
    f.fullStep(0.0);
    f.feed.give("Fc (optional)", matrix({{0.5}}));
    f.feed.step();
    f.fullStep(0.1);
    EXPECT_TRUE(agree(f.last("Fc"), matrix({{0.0001, 0.0001}}), same)) << "lost without a gyroscope";
}

TEST(FilterSphericalFilteringTest, AFilterGainOfZeroGivesACutoffOfZero) {
    Fixture f;
    f.feed.set("Filter Gain", 0.0);
    const MatrixXd tilted = matrix({{1, 0, 0}});
    f.fullStep(0.0);
    EXPECT_TRUE(agree(f.last("Fc"), matrix({{0, 0}}), same));
    f.fullStep(0.1, kRest, tilted);
    EXPECT_TRUE(agree(f.last("3a_Terrefiltered"), kDown, same)) << "a filter of no width stands still";
}

TEST(FilterSphericalFilteringTest, ALambdaReadInAStepWithoutAGyroscopeIsLost) {
    const auto secondCutoff = [](bool emptyStep, bool wrongSize) {
        Fixture f;
        f.feed.set("Filter Gain", 1.0);
        f.feed.give("Fc (optional)", matrix({{0.4}}));
        f.fullStep(0.0);
        f.feed.set("Lambda Gain", 3.0);
        if (emptyStep) f.feed.step();
        if (wrongSize) f.step(0.05, matrix({{1}}));
        f.fullStep(0.1);
        return f.last("Fc")(0);
    };
    // At rest a gain of 1 asks for 0.1: (3 * 0.1 + 0.4) / 4 = 0.175, or (0.7 * 0.1 + 0.4) / 1.7 = 0.276.
    EXPECT_TRUE(agree(secondCutoff(false, false), 0.2, withinRel(1e-15)));
    EXPECT_TRUE(agree(secondCutoff(true, false), 0.3, withinRel(1e-15)));
    EXPECT_TRUE(agree(secondCutoff(false, true), 0.3, withinRel(1e-15)));
}

TEST(FilterSphericalFilteringTest, LargeComponentsAreClipped) {
    Fixture f;
    f.fullStep(0.0, kRest, matrix({{2, -1.05, -2}}), matrix({{0, 9, -9}}));
    EXPECT_TRUE(agree(f.last("3a_Terre"), matrix({{1.1, -1.05, -1.1}}), same));
    EXPECT_TRUE(agree(f.last("3m_Terre"), matrix({{0, 1.1, -1.1}}), same));
    f.step(0.1);
    EXPECT_TRUE(agree(f.last("3a_Terre"), matrix({{1.1, -1.05, -1.1}}), same));
}

TEST(FilterSphericalFilteringTest, RefusesWhatIsOutOfRange) {
    Fixture f;
    EXPECT_EQ(refusal<Poco::RangeException>([&] { f.feed.set("Frequency", 0.0); }),
              "0 does not fit in [0.1;10000], (step : 0.1)");
    EXPECT_EQ(refusal<Poco::RangeException>([&] { f.feed.set("Lambda Gain", -1.0); }),
              "-1 does not fit in [0;1e+06], (step : 0.001)");
}

TEST(FilterSphericalFilteringTest, ASteadyStepAllocatesNothing) {
    FilterSphericalFiltering block("vectors");
    Quillmere::Core::OutputPin<MatrixXd> a("a", nullptr);
    Quillmere::Core::OutputPin<MatrixXd> m("m", nullptr);
    Quillmere::Core::OutputPin<MatrixXd> g("g", nullptr);
    a.attach(block.getInputPin("3a"), false);
    m.attach(block.getInputPin("3m"), false);
    g.attach(block.getInputPin("3g"), false);
    a.data.value = kDown;
    m.data.value = kNorth;
    g.data.value = kTurn;
    double time = 0.0;
    const auto step = [&] {
        time += 0.01;
        g.data.value(0) = std::sin(time * 40.0);
        a.send(time);
        m.send(time);
        g.send(time);
        block.process();
    };
    // Long enough that every cut-off this rate brings about has been met: a new one is kept, and that
    // allocates.
    for (int i = 0; i < 2000; ++i)
        step();
    const AllocationCounter counter;
    for (int i = 0; i < 1000; ++i)
        step();
    EXPECT_EQ(counter.count(), 0u);
}

namespace {
/// The whole block once more, as its rules tell.
struct LiteralBlock {
    LiteralSpherical core;
    double frequency = 100, filterGain = 0.001, lambdaGain = 0.7;
    bool useTimestamp = false;
    bool updateRequested = true, resetRequested = true, magPerturbed = false;
    double lastTimeStamp = -1;
    MatrixXd out[6];

    /// What waits on each pin, `time` being the stamp of "3g". A step tells which of the two vectors it took.
    struct In {
        std::optional<MatrixXd> a, m, g, perturbed, fc, reset;
        double time = 0;
        bool aIsUsed = false, mIsUsed = false;
    };

    static bool startsNonZero(const std::optional<MatrixXd>& sample) {
        return sample && sample->size() >= 1 && !((*sample)(0) == 0.0);
    }

    static std::optional<MatrixXd> imposedBy(const std::optional<MatrixXd>& sample) {
        if (sample && sample->size() == 1) return matrix({{(*sample)(0), (*sample)(0)}});
        if (sample && sample->size() == 2) return matrix({{(*sample)(0), (*sample)(1)}});
        return std::nullopt;
    }

    /// The lambda of this step, -1 for none.
    double readSettings() {
        if (!updateRequested) return -1;
        if (!useTimestamp) core.samplePeriod = 1.0 / frequency;
        core.filterGain = filterGain;
        updateRequested = false;
        return lambdaGain;
    }

    /// True if the step sends.
    bool step(In& in) {
        if (startsNonZero(in.reset)) resetRequested = true;
        magPerturbed = startsNonZero(in.perturbed);
        const std::optional<MatrixXd> imposed = imposedBy(in.fc);
        if (resetRequested) {
            core.reset();
            resetRequested = false;
            updateRequested = true;
        }
        const double lambda = readSettings();
        if (!in.g) return false;
        double deltaTime = -1;
        if (!(lastTimeStamp < 0)) deltaTime = in.time - lastTimeStamp;
        lastTimeStamp = in.time;
        if (in.g->size() != 3) return false;
        in.aIsUsed = in.a.has_value();
        in.mIsUsed = in.m.has_value();
        const MatrixXd* a = in.a && in.a->size() == 3 ? &*in.a : nullptr;
        const MatrixXd* m = in.m && in.m->size() == 3 ? &*in.m : nullptr;
        core.update(*in.g, a, m, out, deltaTime, lambda, magPerturbed, imposed ? &*imposed : nullptr);
        return true;
    }
};
} // namespace

TEST(FilterSphericalFilteringTest, LongTrace) {
    for (unsigned seed = 1; seed <= 5; ++seed) {
        std::mt19937_64 random(seed);
        std::uniform_real_distribution<double> unit(0.0, 1.0);
        std::normal_distribution<double> normal(0.0, 1.0);
        const auto maybe = [&](double chance) { return unit(random) < chance; };
        const auto vector = [&](double scale) {
            if (maybe(0.02)) return MatrixXd(MatrixXd::Constant(1, 4, normal(random)));
            const MatrixXd v =
                matrix({{scale * normal(random), scale * normal(random), scale * normal(random)}});
            return maybe(0.5) ? v : MatrixXd(v.transpose());
        };
        Fixture f;
        LiteralBlock literal;
        std::optional<MatrixXd> waitingA;
        std::optional<MatrixXd> waitingM;
        double time = seed % 2 == 0 ? -0.5 : 0.0;
        int sent = 0;
        for (int i = 0; i < 4000; ++i) {
            if (maybe(0.004)) {
                f.feed.set("Frequency", literal.frequency = 10.0 + 100.0 * unit(random));
                literal.updateRequested = true;
            }
            if (maybe(0.004)) {
                f.feed.set("Filter Gain", literal.filterGain = std::pow(10.0, -4.0 * unit(random)));
                literal.updateRequested = true;
            }
            if (maybe(0.004)) {
                f.feed.set("Lambda Gain", literal.lambdaGain = 5.0 * unit(random));
                literal.updateRequested = true;
            }
            if (maybe(0.004)) f.feed.set("Use Timestamp", literal.useTimestamp = maybe(0.5));
            if (maybe(0.002)) {
                f.feed.fire("Reset");
                literal.resetRequested = true;
            }
            if (!maybe(0.05)) time += 0.02 * unit(random);
            LiteralBlock::In in;
            in.time = time;
            if (maybe(0.9)) f.feed.give("3a", *(waitingA = vector(0.7)));
            if (maybe(0.9)) f.feed.give("3m", *(waitingM = vector(0.7)));
            in.a = waitingA;
            in.m = waitingM;
            if (maybe(0.95)) f.feed.give("3g", *(in.g = vector(maybe(0.5) ? 0.1 : 2.0)), time);
            if (maybe(0.2))
                f.feed.give("isMagPerturbed", *(in.perturbed = matrix({{maybe(0.5) ? 1.0 : 0.0}})));
            if (maybe(0.1))
                f.feed.give("Fc (optional)", *(in.fc = MatrixXd::Constant(1, random() % 4, unit(random))));
            if (maybe(0.01)) f.feed.give("reset", *(in.reset = matrix({{maybe(0.5) ? 1.0 : 0.0}})));
            const std::size_t before = f.feed.sent("Temp").size();
            f.feed.step();
            const bool sends = literal.step(in);
            if (in.aIsUsed) waitingA.reset();
            if (in.mIsUsed) waitingM.reset();
            ASSERT_EQ(f.feed.sent("Temp").size() - before, sends ? 1u : 0u)
                << "seed " << seed << ", step " << i;
            if (!sends) continue;
            ++sent;
            for (std::size_t k = 0; k < 6; ++k)
                ASSERT_TRUE(agree(f.last(kOutputs[k]), literal.out[k], same))
                    << "seed " << seed << ", step " << i << ", " << kOutputs[k];
            ASSERT_TRUE(agree(f.last("Rot_Gyro"), literal.core.rotation(), same)) << seed << ", step " << i;
            ASSERT_TRUE(agree(f.last("Fc"), literal.core.cutoffs, same)) << seed << ", step " << i;
            ASSERT_TRUE(agree(f.last("Temp"), literal.core.temp, same)) << seed << ", step " << i;
        }
        EXPECT_GT(sent, 3000);
    }
}
