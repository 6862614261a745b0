// SPDX-License-Identifier: MIT
#include "blocks/FilterHysteresis.h"

#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"
#include "tests/support/Scalars.h"
#include "tests/support/SteadySteps.h"

#include <gtest/gtest.h>

#include <optional>
#include <random>
#include <utility>

using namespace Support;

namespace {

struct Fixture {
    FilterHysteresis block{"level"};
    Feed feed{block};

    void run(std::initializer_list<double> inputs) {
        for (const MatrixXd& x : scalars(inputs)) {
            feed.give("input", x, time += 1.0);
            feed.step();
        }
    }
    double time = 0.0;
};
} // namespace

TEST(FilterHysteresisTest, Catalogue) {
    FilterHysteresis block("level");
    EXPECT_STREQ(block.getTypeName(), "FilterHysteresis");
    EXPECT_EQ(catalogue(block), "input \"input\" blocking\n"
                                "input \"HighThreshold\" non-blocking\n"
                                "input \"LowThreshold\" non-blocking\n"
                                "input \"Reset\" non-blocking\n"
                                "output \"output\"\n"
                                "value double \"HighThreshold\" 5\n"
                                "value double \"LowThreshold\" -5\n"
                                "command \"Reset\"\n"
                                "value bool \"Impulse\" false\n");
}

TEST(FilterHysteresisTest, FollowsTheSignal) {
    struct Row {
        const char* name;
        double high;
        double low;
        std::vector<MatrixXd> inputs;
        std::vector<MatrixXd> levels;
    };
    const Row rows[] = {
        {.name = "up and down",
         .high = 5.0,
         .low = -5.0,
         .inputs = scalars({0, 6, 0, -6}),
         .levels = scalars({0, 1, 1, 0})},
        {.name = "a threshold itself changes nothing",
         .high = 5.0,
         .low = -5.0,
         .inputs = scalars({5, 5.5, -5, -5.5, 5}),
         .levels = scalars({0, 1, 1, 0, 0})},
        {.name = "thresholds the wrong way round are swapped",
         .high = 1.0,
         .low = 2.0,
         .inputs = scalars({1.5, 2.5, 1.5, 0.5, 1.5}),
         .levels = scalars({0, 1, 1, 0, 0})},
        {.name = "equal thresholds",
         .high = 1.0,
         .low = 1.0,
         .inputs = scalars({1, 2, 1, 0, 1}),
         .levels = scalars({0, 1, 1, 0, 0})},
        {.name = "not-a-number changes nothing",
         .high = 5.0,
         .low = -5.0,
         .inputs = scalars({kNaN, 6, kNaN, -6, kNaN}),
         .levels = scalars({0, 1, 1, 0, 0})},
        {.name = "infinities",
         .high = 5.0,
         .low = -5.0,
         .inputs = scalars({-kInf, kInf, 0, -kInf}),
         .levels = scalars({0, 1, 1, 0})},
        {.name = "a high threshold that is not a number is never passed, nor swapped",
         .high = kNaN,
         .low = -5.0,
         .inputs = scalars({kInf, -6}),
         .levels = scalars({0, 0})},
        {.name = "a low threshold that is not a number is never passed, nor swapped",
         .high = 5.0,
         .low = kNaN,
         .inputs = scalars({6, -kInf}),
         .levels = scalars({1, 1})},
        {.name = "minus zero is zero",
         .high = 0.0,
         .low = -0.0,
         .inputs = scalars({-0.0, 0.0, 5e-324, -0.0, 0.0, -5e-324}),
         .levels = scalars({0, 0, 1, 1, 1, 0})},
    };
    for (const Row& row : rows) {
        FilterHysteresis block("level");
        Feed feed(block);
        feed.set("HighThreshold", row.high);
        feed.set("LowThreshold", row.low);
        for (const MatrixXd& x : row.inputs)
            feed.run("input", x);
        EXPECT_TRUE(agree(feed.values(), row.levels, same)) << row.name;
    }
}

TEST(FilterHysteresisTest, AThresholdFromAPinCountsForOneStep) {
    Fixture f;
    f.feed.give("HighThreshold", matrix({{1, 99}}));
    EXPECT_TRUE(agree(f.feed.run("input", matrix({{2}})), matrix({{1}}), same));
    f.feed.give("LowThreshold", matrix({{3}, {99}}));
    EXPECT_TRUE(agree(f.feed.run("input", matrix({{2}})), matrix({{0}}), same));
    EXPECT_TRUE(agree(f.feed.run("input", matrix({{2}})), matrix({{0}}), same)) << "the setting again";
    EXPECT_TRUE(agree(f.feed.get<double>("HighThreshold"), 5.0, same));
    EXPECT_TRUE(agree(f.feed.get<double>("LowThreshold"), -5.0, same));
}

TEST(FilterHysteresisTest, ThresholdsFromPinsAreSwappedToo) {
    Fixture f;
    const double inputs[] = {1.5, 2.5, 1.5, 0.5};
    for (const double x : inputs) {
        f.feed.give("HighThreshold", matrix({{1}}));
        f.feed.give("LowThreshold", matrix({{2}}));
        f.feed.run("input", matrix({{x}}));
    }
    EXPECT_TRUE(agree(f.feed.values(), scalars({0, 1, 1, 0}), same));
}

TEST(FilterHysteresisTest, AnEmptySampleOnAThresholdPinLeavesTheSetting) {
    Fixture f;
    f.feed.give("HighThreshold", MatrixXd(0, 0));
    f.feed.give("LowThreshold", MatrixXd(3, 0));
    EXPECT_TRUE(agree(f.feed.run("input", matrix({{5.5}})), matrix({{1}}), same));
    EXPECT_TRUE(agree(f.feed.run("input", matrix({{-5.5}})), matrix({{0}}), same));
}

TEST(FilterHysteresisTest, AThresholdPinIsUsedUpInAStepWithoutInput) {
    Fixture f;
    f.feed.give("HighThreshold", matrix({{1}}));
    f.feed.step();
    EXPECT_TRUE(agree(f.feed.run("input", matrix({{2}})), matrix({{0}}), same));
}

TEST(FilterHysteresisTest, AnotherSizeThanOneByOneIsUsedUpAndSendsNothing) {
    Fixture f;
    f.run({6});
    f.feed.forget();
    for (const MatrixXd& odd : {matrix({{-6, -6}}), MatrixXd(0, 0), MatrixXd(0, 1), matrix({{-6}, {-6}})}) {
        f.feed.give("input", odd);
        f.feed.step();
    }
    EXPECT_TRUE(f.feed.sent().empty());
    f.feed.step();
    EXPECT_TRUE(agree(f.feed.values(), scalars({1}), same)) << "the level stays";
}

TEST(FilterHysteresisTest, AStepWithoutInputSendsTheLevelWithTheLastTimeStamp) {
    Fixture f;
    f.feed.step();
    EXPECT_TRUE(agree(f.feed.last().value, matrix({{0}}), same));
    EXPECT_TRUE(agree(f.feed.last().timeStamp, 0.0, same));
    f.feed.run("input", matrix({{6}}), 7.25);
    f.feed.step();
    EXPECT_EQ(f.feed.sent().size(), 3u);
    EXPECT_TRUE(agree(f.feed.last().value, matrix({{1}}), same));
    EXPECT_TRUE(agree(f.feed.last().timeStamp, 7.25, same));
}

TEST(FilterHysteresisTest, ImpulseSendsChangesOnly) {
    Fixture f;
    f.feed.set("Impulse", true);
    f.run({0, 6, 7, 0, -6, -7, 6});
    EXPECT_TRUE(agree(f.feed.values(), scalars({1, 0, 1}), same));
    EXPECT_TRUE(agree(f.feed.sent()[0].timeStamp, 2.0, same));
    EXPECT_TRUE(agree(f.feed.sent()[1].timeStamp, 5.0, same));
    EXPECT_TRUE(agree(f.feed.sent()[2].timeStamp, 7.0, same));
    f.feed.step();
    EXPECT_EQ(f.feed.sent().size(), 3u) << "a step without input has no change to tell";
}

TEST(FilterHysteresisTest, TheResetPinLooksAtEveryElement) {
    struct Row {
        const char* name;
        MatrixXd request;
        double level;
    };
    const Row rows[] = {
        {.name = "zeros", .request = matrix({{0, 0}}), .level = 1},
        {.name = "minus zero", .request = matrix({{-0.0}}), .level = 1},
        {.name = "empty", .request = MatrixXd(0, 0), .level = 1},
        {.name = "the second element", .request = matrix({{0, 1}}), .level = 0},
        {.name = "a column", .request = matrix({{0}, {0}, {-2}}), .level = 0},
        {.name = "not-a-number", .request = matrix({{kNaN}}), .level = 0},
    };
    for (const Row& row : rows) {
        Fixture f;
        f.run({6});
        f.feed.give("Reset", row.request);
        EXPECT_TRUE(agree(f.feed.run("input", matrix({{0}})), matrix({{row.level}}), same)) << row.name;
        EXPECT_TRUE(agree(f.feed.run("input", matrix({{0}})), matrix({{row.level}}), same)) << row.name;
    }
}

TEST(FilterHysteresisTest, AResetByPinSendsTheFall) {
    Fixture f;
    f.feed.set("Impulse", true);
    f.run({6});
    f.feed.forget();
    f.feed.give("Reset", matrix({{1}}));
    f.run({0});
    EXPECT_TRUE(agree(f.feed.values(), scalars({0}), same));
}

TEST(FilterHysteresisTest, AResetByPinThatTheInputMakesGoodIsNoChange) {
    Fixture f;
    f.feed.set("Impulse", true);
    f.run({6});
    f.feed.forget();
    f.feed.give("Reset", matrix({{1}}));
    f.run({6});
    EXPECT_TRUE(f.feed.sent().empty());
    f.run({-6});
    EXPECT_TRUE(agree(f.feed.values(), scalars({0}), same));
}

TEST(FilterHysteresisTest, AResetByCommandIsSilent) {
    Fixture f;
    f.feed.set("Impulse", true);
    f.run({6});
    f.feed.forget();
    f.feed.fire("Reset");
    f.run({0});
    EXPECT_TRUE(f.feed.sent().empty());
    f.run({6});
    EXPECT_TRUE(agree(f.feed.values(), scalars({1}), same));
}

TEST(FilterHysteresisTest, ResetSettingPinAndCommandAreThreeThings) {
    Fixture f;
    EXPECT_NE(dynamic_cast<CommandProperty*>(&f.block.getProperty("Reset")), nullptr);
    EXPECT_NE(dynamic_cast<ValueProperty<double>*>(&f.block.getProperty("HighThreshold")), nullptr);
    EXPECT_NE(dynamic_cast<InputPin<MatrixXd>*>(&f.block.getInputPin("Reset")), nullptr);
    f.feed.fire("Reset");
    EXPECT_TRUE(f.feed.sent().empty()) << "a command makes no step";
}

TEST(FilterHysteresisTest, RefusesTextThatIsNoNumber) {
    Fixture f;
    EXPECT_EQ(refusal<Poco::DataFormatException>([&] { f.feed.setText("HighThreshold", "high"); }), "");
    EXPECT_EQ(refusal<Poco::DataFormatException>([&] { f.feed.setText("Impulse", "true"); }), "");
    EXPECT_TRUE(agree(f.feed.get<double>("HighThreshold"), 5.0, same));
}

TEST(FilterHysteresisTest, ASteadyStepAllocatesNothing) {
    FilterHysteresis block("level");
    EXPECT_EQ(allocationsOfAHundredSteps(block, "input", MatrixXd::Ones(1, 1)), 0u);
    EXPECT_EQ(allocationsOfAHundredSteps(block, "HighThreshold", MatrixXd::Ones(1, 1)), 0u);
}

namespace {
/// The rule, word by word.
struct LiteralHysteresis {
    double high = 5.0;
    double low = -5.0;
    bool impulse = false;
    bool level = false;
    bool previous = false;

    void reset() {
        previous = level;
        level = false;
    }
    /// What a step sends; empty matrices stand for pins without a sample.
    std::optional<double> step(const MatrixXd& input, const MatrixXd& highPin, const MatrixXd& lowPin,
                               const MatrixXd& resetPin, bool hasInput) {
        previous = level;
        double h = highPin.size() > 0 ? highPin(0) : high;
        double l = lowPin.size() > 0 ? lowPin(0) : low;
        if (h < l) std::swap(h, l);
        if (resetPin.size() > 0 && (resetPin.array() != 0.0).any()) reset();
        if (hasInput && input.size() != 1) return std::nullopt;
        if (hasInput && !level && input(0) > h) level = true;
        if (hasInput && level && input(0) < l) level = false;
        if (impulse && level == previous) return std::nullopt;
        return level ? 1.0 : 0.0;
    }
};
} // namespace

TEST(FilterHysteresisTest, LongTrace) {
    std::mt19937_64 random(43);
    Fixture f;
    LiteralHysteresis literal;
    const auto maybe = [&](const char* pin, int n) {
        if (!onceIn(n, random)) return MatrixXd();
        const MatrixXd sample = anyMatrix(random, 1, static_cast<Eigen::Index>(random() % 3));
        f.feed.give(pin, sample);
        return sample;
    };
    std::vector<MatrixXd> wanted;
    for (int n = 0; n < 20000; ++n) {
        if (onceIn(20, random)) f.feed.set("Impulse", literal.impulse = onceIn(2, random));
        if (onceIn(20, random)) f.feed.set("HighThreshold", literal.high = anyNumber(random));
        if (onceIn(20, random)) f.feed.set("LowThreshold", literal.low = anyNumber(random));
        if (onceIn(30, random)) {
            f.feed.fire("Reset");
            literal.reset();
        }
        const MatrixXd high = maybe("HighThreshold", 4);
        const MatrixXd low = maybe("LowThreshold", 4);
        const MatrixXd reset = maybe("Reset", 20);
        const bool hasInput = !onceIn(10, random);
        const MatrixXd input = anyMatrix(random, 1, onceIn(15, random) ? 2 : 1);
        if (hasInput) f.feed.give("input", input, n);
        f.feed.step();
        const std::optional<double> sent = literal.step(input, high, low, reset, hasInput);
        if (sent) wanted.push_back(matrix({{*sent}}));
    }
    EXPECT_GT(wanted.size(), 5000u);
    EXPECT_TRUE(agree(f.feed.values(), wanted, same));
}
