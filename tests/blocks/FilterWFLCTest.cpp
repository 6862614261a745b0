// SPDX-License-Identifier: MIT
#include "blocks/FilterWFLC.h"

#include "tests/blocks/SendLog.h"
#include "tests/estimation/LiteralWFLC.h"
#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"
#include "tests/support/SteadySteps.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

using namespace Support;

namespace {
constexpr double kStart = 0.125663706144;

MatrixXd rowOf(const std::vector<double>& values) {
    MatrixXd result(1, static_cast<Eigen::Index>(values.size()));
    std::copy(values.begin(), values.end(), result.data());
    return result;
}

struct Fixture {
    FilterWFLC block{"tracker"};
    Feed feed{block};

    void step(double x, double time = 0.0) {
        feed.give("Input", matrix({{x}}), time);
        feed.step();
    }
    double frequency() { return feed.last("FreqWeight").value(0); }
};

/// The whole block once more, as its rules tell.
struct LiteralBlock {
    LiteralWFLC estimator;
    int order = 1;
    double mu = 0.15, mu0 = 0.001, muB = 0.001, w1 = 0, wm1 = 0, offset = 0;
    double startFrequency = kStart;
    bool resetRequested = true, rebuildRequested = true;

    /// A null pointer is a pin without a sample. True if the step sends.
    bool step(const MatrixXd* reset, const MatrixXd* wf0, const MatrixXd* input) {
        if (reset && reset->size() >= 1 && !((*reset)(0) == 0.0)) resetRequested = true;
        if (wf0 && wf0->size() >= 1) offerStart((*wf0)(0));
        if (rebuildRequested) {
            rebuild();
        } else if (resetRequested) {
            estimator.reset();
            resetRequested = false;
        }
        if (!input) return false;
        if (input->size() == 0) return false;
        estimator.step((*input)(0));
        return true;
    }

    void offerStart(double v) {
        if (v == startFrequency) return;
        if (v < 0.0 || std::isnan(v)) return;
        startFrequency = v;
        estimator.wf0 = v; // in force from the next reset on
    }

    void rebuild() {
        estimator.n = order;
        estimator.mu = mu;
        estimator.mu0 = mu0;
        estimator.muB = muB;
        estimator.wf0 = startFrequency;
        estimator.w1 = w1;
        estimator.wm1 = wm1;
        estimator.offset = offset;
        estimator.reset();
        rebuildRequested = false;
        resetRequested = false;
    }
};
} // namespace

TEST(FilterWFLCTest, Catalogue) {
    FilterWFLC block("tracker");
    EXPECT_STREQ(block.getTypeName(), "FilterWFLC");
    EXPECT_EQ(block.getName(), "tracker");
    const std::string any = ";1.7976931348623157e+308] step 0\n";
    EXPECT_EQ(catalogue(block),
              "input \"Input\" blocking\n"
              "input \"Wf0\" non-blocking\n"
              "input \"Reset\" non-blocking\n"
              "output \"Out\"\n"
              "output \"Error\"\n"
              "output \"FreqWeight\"\n"
              "output \"AmplWeights\"\n"
              "output \"HarmonicWeights\"\n"
              "range int \"Order\" 1 in [1;10] step 1\n"
              "range double \"Mu\" 0.14999999999999999 in [0" +
                  any + "range double \"Mu0\" 0.001 in [0" + any + "range double \"MuB\" 0.001 in [0" + any +
                  "range double \"Wf0\" 0.12566370614399999 in [0" + any + "range double \"W1\" 0 in [0" +
                  any + "range double \"Wm1\" 0 in [0" + any +
                  "value double \"Offset\" 0\n"
                  "command \"Reset\"\n");
}

TEST(FilterWFLCTest, FirstSampleWithTheDefaults) {
    for (const double x : {1.0, -3.5, 0.0, kInf}) {
        Fixture f;
        f.step(x, 0.25);
        EXPECT_TRUE(agree(f.feed.last("Out").value, matrix({{0}}), same)) << x;
        EXPECT_TRUE(agree(f.feed.last("Error").value, matrix({{x}}), same)) << x;
        EXPECT_TRUE(agree(f.feed.last("AmplWeights").value,
                          matrix({{0.3 * x * std::sin(kStart), 0.3 * x * std::cos(kStart)}}), same))
            << x;
        EXPECT_TRUE(agree(f.feed.last("HarmonicWeights").value, MatrixXd(1, 0), same))
            << "empty, and still sent";
        if (std::isfinite(x)) {
            EXPECT_TRUE(agree(f.feed.last("FreqWeight").value, matrix({{kStart}}), same)) << x;
        }
    }
}

TEST(FilterWFLCTest, SendsFiveOutputsInOrderWithTheTimeOfTheInput) {
    Fixture f;
    SendLog log(f.block);
    f.feed.give("Reset", matrix({{1}}), 77.0);
    f.feed.give("Wf0", matrix({{1}}), 78.0);
    f.step(1.0, 0.25);
    const std::vector<std::string> outputs{"Out", "Error", "FreqWeight", "AmplWeights", "HarmonicWeights"};
    EXPECT_EQ(log.order, outputs);
    for (const std::string& output : outputs)
        EXPECT_TRUE(agree(f.feed.last(output).timeStamp, 0.25, same)) << output;
}

TEST(FilterWFLCTest, ErrorIsOffByTheOffset) {
    Fixture f;
    f.feed.set("Offset", 1.0);
    f.step(1.0);
    EXPECT_TRUE(agree(f.feed.last("Error").value, matrix({{1}}), same));
    EXPECT_TRUE(agree(f.feed.last("AmplWeights").value, matrix({{0, 0}}), same))
        << "nothing was left to learn from";
}

TEST(FilterWFLCTest, OnlyTheFirstElementCountsAndAnEmptySampleIsUsedUp) {
    Fixture f;
    f.feed.give("Input", matrix({{2, 9}, {9, 9}}));
    f.feed.step();
    EXPECT_TRUE(agree(f.feed.last("Error").value, matrix({{2}}), same));
    for (const MatrixXd& empty : {MatrixXd(0, 0), MatrixXd(0, 5), MatrixXd(1, 0)}) {
        f.feed.give("Input", empty);
        f.feed.step();
    }
    f.feed.step();
    EXPECT_EQ(f.feed.sent("Out").size(), 1u);
}

TEST(FilterWFLCTest, WeightsFollowTheOrder) {
    Fixture f;
    for (const int order : {3, 10, 1, 2}) {
        f.feed.set("Order", order);
        f.step(1.0);
        EXPECT_EQ(f.feed.last("AmplWeights").value.rows(), 1);
        EXPECT_EQ(f.feed.last("AmplWeights").value.cols(), 2 * order);
        EXPECT_EQ(f.feed.last("HarmonicWeights").value.rows(), 1);
        EXPECT_EQ(f.feed.last("HarmonicWeights").value.cols(), 2 * order - 2);
    }
}

TEST(FilterWFLCTest, StartFrequencyFromThePin) {
    struct Row {
        const char* name;
        MatrixXd sample;
        double wanted; ///< frequency after the next reset
    };
    const Row rows[] = {
        {.name = "taken", .sample = matrix({{0.5}}), .wanted = 0.5},
        {.name = "the first element", .sample = matrix({{0.5, 0.7}}), .wanted = 0.5},
        {.name = "zero is taken", .sample = matrix({{0}}), .wanted = 0.0},
        {.name = "negative is not", .sample = matrix({{-0.5}}), .wanted = kStart},
        {.name = "nor not-a-number", .sample = matrix({{kNaN}}), .wanted = kStart},
        {.name = "nor nothing", .sample = matrix({}), .wanted = kStart},
        {.name = "nor minus infinity", .sample = matrix({{-kInf}}), .wanted = kStart},
    };
    for (const Row& row : rows) {
        Fixture f;
        f.step(0.0);
        f.feed.give("Wf0", row.sample);
        f.step(0.0);
        EXPECT_TRUE(agree(f.frequency(), kStart, same)) << row.name << ": not before a reset";
        f.feed.fire("Reset");
        f.step(0.0);
        EXPECT_TRUE(agree(f.frequency(), row.wanted, same)) << row.name;
        EXPECT_TRUE(agree(f.feed.get<double>("Wf0"), kStart, same))
            << row.name << ": the setting does not show it";
    }
}

TEST(FilterWFLCTest, AStartFrequencyOfZeroStopsThePhase) {
    Fixture f;
    f.feed.give("Wf0", matrix({{0}}));
    f.step(1.0);
    f.step(1.0);
    EXPECT_TRUE(agree(f.feed.last("AmplWeights").value(0), 0.0, same)) << "the sine of a phase that stands";
    EXPECT_GT(f.feed.last("AmplWeights").value(1), 0.3);
}

TEST(FilterWFLCTest, TheLastWordOnTheStartFrequencyCounts) {
    Fixture f;
    f.feed.give("Wf0", matrix({{0.5}}));
    f.step(0.0);
    EXPECT_TRUE(agree(f.frequency(), 0.5, same)) << "the first step reads the pin before it starts";
    f.feed.set("Mu", 0.1);
    f.step(0.0);
    EXPECT_TRUE(agree(f.frequency(), 0.5, same)) << "another setting applies the pin's value";
    f.feed.set("Wf0", 0.25);
    f.step(0.0);
    EXPECT_TRUE(agree(f.frequency(), 0.25, same)) << "the setting has the last word";
    f.feed.give("Wf0", matrix({{0.75}}));
    f.feed.set("Wf0", 0.3);
    f.step(0.0);
    EXPECT_TRUE(agree(f.frequency(), 0.75, same)) << "a pin that waits is read later than the write";
}

TEST(FilterWFLCTest, ResetRequests) {
    struct Row {
        const char* name;
        MatrixXd sample;
        bool resets;
    };
    const Row rows[] = {
        {.name = "one", .sample = matrix({{1}}), .resets = true},
        {.name = "any number", .sample = matrix({{-1e-300}}), .resets = true},
        {.name = "not a number", .sample = matrix({{kNaN}}), .resets = true},
        {.name = "zero", .sample = matrix({{0}}), .resets = false},
        {.name = "negative zero", .sample = matrix({{-0.0}}), .resets = false},
        {.name = "zero first", .sample = matrix({{0, 1}}), .resets = false},
        {.name = "empty", .sample = matrix({}), .resets = false},
    };
    for (const Row& row : rows) {
        Fixture f;
        f.step(1.0);
        f.feed.give("Reset", row.sample);
        f.step(0.0);
        EXPECT_EQ(f.feed.last("Out").value(0) == 0.0, row.resets) << row.name;
    }
}

TEST(FilterWFLCTest, ResetForgetsWhatWasLearned) {
    Fixture f;
    for (int i = 0; i < 50; ++i)
        f.step(std::sin(0.4 * i));
    f.feed.fire("Reset");
    Fixture fresh;
    for (int i = 0; i < 50; ++i) {
        f.step(std::cos(0.3 * i));
        fresh.step(std::cos(0.3 * i));
        for (const char* const output : {"Out", "Error", "FreqWeight", "AmplWeights"})
            EXPECT_TRUE(agree(f.feed.last(output).value, fresh.feed.last(output).value, same)) << output << i;
    }
}

TEST(FilterWFLCTest, AnySettingStartsAnew) {
    for (const char* const name : {"Mu", "Mu0", "MuB", "Wf0", "W1", "Wm1", "Offset"}) {
        Fixture f;
        f.step(1.0);
        f.step(1.0);
        ASSERT_NE(f.feed.last("Out").value(0), 0.0);
        const double old = f.feed.get<double>(name);
        f.feed.set(name, old);
        f.step(0.0);
        EXPECT_NE(f.feed.last("Out").value(0), 0.0) << name << ": an equal value is no change";
        f.feed.set(name, old + 0.25);
        f.feed.set(name, old);
        f.step(0.0);
        EXPECT_TRUE(agree(f.feed.last("Out").value(0), 0.0, same)) << name;
    }
}

TEST(FilterWFLCTest, StepsWithoutInputStillListen) {
    Fixture f;
    f.step(1.0);
    f.feed.give("Wf0", matrix({{0.5}}));
    f.feed.give("Reset", matrix({{1}}));
    f.feed.step();
    EXPECT_EQ(f.feed.sent("Out").size(), 1u);
    f.step(0.0);
    EXPECT_TRUE(agree(f.frequency(), 0.5, same)) << "the reset was done without input";
    EXPECT_TRUE(agree(f.feed.last("Out").value(0), 0.0, same));

    f.feed.set("Order", 2);
    f.feed.step();
    f.feed.give("Wf0", matrix({{0.25}}));
    f.step(0.0);
    EXPECT_TRUE(agree(f.frequency(), 0.5, same)) << "the rebuild came before the pin's new value";
}

TEST(FilterWFLCTest, AResetWithoutASampleHappensAtOnce) {
    Fixture f;
    f.step(1.0);
    const double fresh = f.feed.last("Error").value(0);
    for (const double x : {1.0, -0.5, 2.0})
        f.step(x);
    f.feed.give("Reset", matrix({{1}}));
    f.feed.step(); // nothing on "Input", and yet the request is taken from its pin
    f.feed.give("Reset", matrix({{0}}));
    f.step(1.0);
    EXPECT_TRUE(agree(f.feed.last("Error").value(0), fresh, same));
    f.step(1.0);
    EXPECT_FALSE(agrees(f.feed.last("Error").value(0), fresh, same))
        << "a second sample has something learned";
}

TEST(FilterWFLCTest, RefusesWhatIsOutOfRange) {
    Fixture f;
    EXPECT_EQ(refusal<Poco::RangeException>([&] { f.feed.set("Order", 11); }),
              "11 does not fit in [1;10], (step : 1)");
    EXPECT_EQ(refusal<Poco::RangeException>([&] { f.feed.set("Mu", -0.5); }),
              "-0.5 does not fit in [0;1.79769e+308], (step : 0)");
    EXPECT_EQ(refusal<Poco::RangeException>([&] { f.feed.set("Wf0", kNaN); }),
              "nan does not fit in [0;1.79769e+308], (step : 0)");
}

TEST(FilterWFLCTest, ASteadyStepAllocatesNothing) {
    for (const int order : {1, 2, 10}) {
        FilterWFLC block("tracker");
        block.getProperty("Order").setValueFromString(std::to_string(order));
        EXPECT_EQ(allocationsOfAHundredSteps(block, "Input", matrix({{0.5}})), 0u) << order;
    }
}

TEST(FilterWFLCTest, LongTrace) {
    for (unsigned seed = 1; seed <= 4; ++seed) {
        std::mt19937_64 random(seed);
        std::uniform_real_distribution<double> unit(0.0, 1.0);
        Fixture f;
        LiteralBlock literal;
        const auto set = [&](const char* name, double& mirror, double value) {
            if (value == mirror) return;
            mirror = value;
            literal.rebuildRequested = true;
            f.feed.set(name, value);
        };
        for (int i = 0; i < 5000; ++i) {
            const double what = unit(random);
            if (what < 0.002)
                set("Mu", literal.mu, 0.1 * unit(random));
            else if (what < 0.003)
                set("Mu0", literal.mu0, 0.001 * unit(random));
            else if (what < 0.004)
                set("MuB", literal.muB, 0.01 * unit(random));
            else if (what < 0.005)
                set("W1", literal.w1, unit(random));
            else if (what < 0.006)
                set("Wm1", literal.wm1, unit(random));
            else if (what < 0.007)
                set("Offset", literal.offset, unit(random) - 0.5);
            else if (what < 0.009) {
                const int order = 1 + static_cast<int>(10.0 * unit(random));
                if (order != literal.order) literal.rebuildRequested = true;
                literal.order = order;
                f.feed.set("Order", order);
            } else if (what < 0.010) {
                literal.startFrequency = unit(random);
                literal.rebuildRequested = true;
                f.feed.set("Wf0", literal.startFrequency);
            } else if (what < 0.011) {
                literal.resetRequested = true;
                f.feed.fire("Reset");
            }
            const MatrixXd reset = unit(random) < 0.5   ? matrix({{0}})
                                   : unit(random) < 0.1 ? matrix({{2}})
                                                        : matrix({});
            const MatrixXd wf0 = matrix({{unit(random) < 0.2 ? kNaN : unit(random) - 0.2}});
            const MatrixXd input = unit(random) < 0.02
                                       ? MatrixXd(0, 3)
                                       : matrix({{std::sin(0.3 * i) + 0.1 * unit(random), 9.0}});
            const bool hasReset = unit(random) < 0.02;
            const bool hasWf0 = unit(random) < 0.05;
            const bool hasInput = unit(random) < 0.9;
            if (hasReset) f.feed.give("Reset", reset);
            if (hasWf0) f.feed.give("Wf0", wf0);
            if (hasInput) f.feed.give("Input", input, i);
            const std::size_t before = f.feed.sent("Out").size();
            f.feed.step();
            const bool sends = literal.step(hasReset ? &reset : nullptr, hasWf0 ? &wf0 : nullptr,
                                            hasInput ? &input : nullptr);
            ASSERT_EQ(f.feed.sent("Out").size() - before, sends ? 1u : 0u)
                << "seed " << seed << ", step " << i;
            if (!sends) continue;
            const LiteralWFLC& e = literal.estimator;
            ASSERT_TRUE(agree(f.feed.last("Out").value, matrix({{e.estimate}}), same))
                << seed << ", step " << i;
            ASSERT_TRUE(agree(f.feed.last("Error").value, matrix({{e.error + e.offset}}), same))
                << seed << ", step " << i;
            ASSERT_TRUE(agree(f.feed.last("FreqWeight").value, matrix({{e.weight.at(0)}}), same))
                << seed << ", step " << i;
            ASSERT_TRUE(agree(f.feed.last("AmplWeights").value, rowOf(e.amplitudes()), same))
                << seed << ", step " << i;
            ASSERT_TRUE(agree(f.feed.last("HarmonicWeights").value, rowOf(e.harmonics()), same))
                << seed << ", step " << i;
        }
    }
}
