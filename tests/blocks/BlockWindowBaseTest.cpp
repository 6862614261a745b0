// SPDX-License-Identifier: MIT
#include "blocks/BlockWindowBase.h"

#include "tests/support/Allocations.h"
#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"
#include "tests/support/Signals.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

using namespace Support;

namespace {
/// Its coefficient tells where it was asked: the index, and in the fraction how often so far.
class AskedWindow final : public BlockWindowBase {
public:
    explicit AskedWindow(const std::string& instanceName) : BlockWindowBase(instanceName) {}
    const char* getTypeName() const override { return "AskedWindow"; }

    mutable std::vector<std::pair<std::int32_t, double>> asked;

protected:
    double windowCoefficient(std::int32_t index, double step) const override {
        asked.emplace_back(index, step);
        return index + 1.0;
    }
};
} // namespace

class BlockWindowBaseTest : public testing::Test {
protected:
    AskedWindow block{"window"};
    Feed feed{block};
};

TEST_F(BlockWindowBaseTest, Catalogue) {
    EXPECT_EQ(catalogue(block), "input \"input\" blocking\n"
                                "output \"output\"\n");
}

TEST_F(BlockWindowBaseTest, TheOutputIsOneByOneBeforeTheFirstSample) {
    const auto& pin = dynamic_cast<const OutputPin<MatrixXd>&>(block.getOutputPin("output"));
    EXPECT_EQ(pin.data.value.rows(), 1);
    EXPECT_EQ(pin.data.value.cols(), 1);
}

TEST_F(BlockWindowBaseTest, MirrorsTheFirstHalf) {
    const struct {
        const char* name;
        MatrixXd window;
    } rows[] = {
        // An even length runs one turn past its middle, so both middle elements come from index N/2.
        {.name = "two", .window = column({2, 2})},
        {.name = "three", .window = column({1, 2, 1})},
        {.name = "four", .window = column({1, 3, 3, 1})},
        {.name = "five", .window = column({1, 2, 3, 2, 1})},
        {.name = "eight", .window = column({1, 2, 3, 5, 5, 3, 2, 1})},
    };
    for (const auto& row : rows) {
        const MatrixXd ones = MatrixXd::Ones(row.window.rows(), 1);
        EXPECT_TRUE(agree(feed.run("input", ones), row.window, same)) << row.name;
    }
}

TEST_F(BlockWindowBaseTest, AsksForTheFirstHalfWithTheStepOfTheLength) {
    for (const std::int32_t length : {2, 3, 8, 9, 100}) {
        block.asked.clear();
        feed.run("input", MatrixXd::Ones(length, 1));
        ASSERT_EQ(block.asked.size(), static_cast<std::size_t>(length / 2 + 1));
        for (std::int32_t i = 0; i <= length / 2; ++i) {
            EXPECT_EQ(block.asked[static_cast<std::size_t>(i)].first, i);
            EXPECT_TRUE(agree(block.asked[static_cast<std::size_t>(i)].second,
                              6.283185307179586 / (length - 1), same));
        }
    }
}

TEST_F(BlockWindowBaseTest, KeepsTheShapeOfRowsAndColumns) {
    EXPECT_TRUE(agree(feed.run("input", matrix({{5, 5, 5}})), matrix({{5, 10, 5}}), same));
    EXPECT_TRUE(agree(feed.run("input", column({5, 5, 5})), column({5, 10, 5}), same));
    EXPECT_TRUE(agree(feed.run("input", matrix({{1, 1}})), matrix({{2, 2}}), same));
}

TEST_F(BlockWindowBaseTest, WhatIsNoVectorIsUsedUpWithoutAWord) {
    const MatrixXd samples[] = {matrix({{7}}),  matrix({{1, 2}, {3, 4}}), MatrixXd(0, 0),
                                MatrixXd(0, 1), MatrixXd(1, 0),           MatrixXd(0, 5),
                                MatrixXd(5, 0), MatrixXd::Ones(2, 3)};
    for (const MatrixXd& sample : samples) {
        feed.give("input", sample);
        feed.step();
        EXPECT_TRUE(feed.sent().empty()) << sample.rows() << " by " << sample.cols();
    }
    feed.step();
    EXPECT_TRUE(feed.sent().empty());
}

TEST_F(BlockWindowBaseTest, MultipliesWhatIsNotANumberToo) {
    EXPECT_TRUE(agree(feed.run("input", column({kNaN, -kInf, -0.0})), column({kNaN, -kInf, -0.0}), same));
}

TEST_F(BlockWindowBaseTest, KeepsTheTimeStamp) {
    feed.run("input", column({1, 2, 3}), 1.0 / 3.0);
    EXPECT_TRUE(agree(feed.last().timeStamp, 1.0 / 3.0, same));
}

TEST_F(BlockWindowBaseTest, ItsOwnOutputMayBeItsInput) {
    AskedWindow own("own");
    own.getOutputPin("output").attach(own.getInputPin("input"), true);
    auto& output = dynamic_cast<OutputPin<MatrixXd>&>(own.getOutputPin("output"));
    output.data.value = column({1, 1, 1});
    output.send(0.0);
    own.process();
    own.process();
    EXPECT_TRUE(agree(output.data.value, column({1, 4, 1}), same));
}
