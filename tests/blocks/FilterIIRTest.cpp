// SPDX-License-Identifier: MIT
#include "blocks/FilterIIR.h"

#include "tests/blocks/AttributeLog.h"
#include "tests/design/DesignKit.h"
#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"
#include "tests/support/SteadySteps.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace Support;

namespace {
constexpr const char* kRefusal = "Coefficients must be specified on first matrix row.";

class FilterIIRTest : public testing::Test {
protected:
    FilterIIR block{"iir"};
    Feed feed{block};

    void configure(const MatrixXd& x, const MatrixXd& y) {
        feed.set("XCoeffs", x);
        feed.set("YCoeffs", y);
    }
    double run(double value) { return feed.run("in", matrix({{value}}))(0); }
};
} // namespace

TEST_F(FilterIIRTest, Catalogue) {
    EXPECT_STREQ(block.getTypeName(), "FilterIIR");
    EXPECT_EQ(catalogue(block), "input \"in\" blocking\n"
                                "input \"gain\" blocking\n"
                                "input \"coeffsX\" blocking\n"
                                "input \"coeffsY\" blocking\n"
                                "input \"reset\" non-blocking\n"
                                "output \"out\"\n"
                                "value double \"Gain\" 1\n"
                                "value matrix \"XCoeffs\" (1 1 1)\n"
                                "value matrix \"YCoeffs\" (1 1 1)\n"
                                "enum \"InitMode\" 0 of First value, Fixed value\n"
                                "value double \"InitValue\" 0 read-only\n"
                                "command \"Reset\"\n");
}

// ---- Worked samples

TEST_F(FilterIIRTest, IsSilentUntilConfigured) {
    for (const MatrixXd& sample : {matrix({{1.0}}), matrix({{1.0, 2.0}, {3.0, 4.0}}), matrix({{5.0}, {6.0}})})
        EXPECT_TRUE(agree(feed.run("in", sample), sample * 0.0, same));
}

TEST_F(FilterIIRTest, TheDefaultCoefficientsAreARunningSum) {
    feed.set("Gain", 2.0);
    feed.set("Gain", 1.0);
    EXPECT_TRUE(agree(run(2.0), 4.0, same)) << "the first sample stands for the output before it";
    EXPECT_TRUE(agree(run(3.0), 7.0, same));
    EXPECT_TRUE(agree(run(-1.0), 6.0, same));
}

TEST_F(FilterIIRTest, AConstantStaysFromTheFirstOutputOn) {
    configure(matrix({{0.5}}), matrix({{0.5}}));
    for (int n = 0; n < 10; ++n)
        EXPECT_TRUE(agree(run(1.7), 1.7, same));
}

TEST_F(FilterIIRTest, ThreeCoefficientsLookBackOneSample) {
    configure(matrix({{1.0, 10.0, 100.0}}), matrix({{0.0}}));
    run(7.0);
    run(2.0);
    EXPECT_TRUE(agree(run(3.0), 1.0 * 2.0 + 10.0 * 2.0 + 100.0 * 3.0, same));
}

TEST_F(FilterIIRTest, KeepsTheTimeStamp) {
    feed.run("in", matrix({{1.0}}), 17.25);
    EXPECT_TRUE(agree(feed.last().timeStamp, 17.25, same));
}

// ---- Coefficients and gain through pins

TEST_F(FilterIIRTest, PinsReplaceTheSettings) {
    feed.give("gain", matrix({{4.0, 99.0}}));
    feed.give("coeffsX", matrix({{2.0, 3.0}}));
    feed.give("coeffsY", matrix({{0.5}}));
    EXPECT_TRUE(agree(run(8.0), 2.0 * 2.0 + 3.0 * 2.0 + 0.5 * 8.0, same));
    EXPECT_TRUE(agree(feed.get<double>("Gain"), 4.0, same));
    EXPECT_TRUE(agree(feed.get<MatrixXd>("XCoeffs"), matrix({{2.0, 3.0}}), same));
    EXPECT_TRUE(agree(feed.get<MatrixXd>("YCoeffs"), matrix({{0.5}}), same));
    EXPECT_TRUE(agree(run(4.0), 2.0 * 2.0 + 3.0 * 1.0 + 0.5 * 14.0, same)) << "and no second start follows";
}

TEST_F(FilterIIRTest, EqualValuesOnPinsRestartNothing) {
    configure(matrix({{0.5}}), matrix({{0.5}}));
    run(8.0);
    feed.give("gain", matrix({{1.0}}));
    feed.give("coeffsX", matrix({{0.5}}));
    feed.give("coeffsY", matrix({{0.5}}));
    EXPECT_TRUE(agree(run(0.0), 4.0, same));
    feed.give("gain", matrix({{2.0}}));
    EXPECT_TRUE(agree(run(6.0), 1.5 + 3.0, same)) << "another gain does restart";
    EXPECT_TRUE(agree(run(2.0), 0.5 + 2.25, same)) << "and only once";
}

TEST_F(FilterIIRTest, OneElementOfARowIsAChange) {
    configure(matrix({{0.25, 0.5}}), matrix({{0.25, 0.5}}));
    run(8.0);
    feed.give("coeffsX", matrix({{0.25, 0.75}}));
    EXPECT_TRUE(agree(run(4.0), 1.0 + 3.0 + 1.0 + 2.0, same));
    feed.give("coeffsY", matrix({{0.25, 0.25}}));
    EXPECT_TRUE(agree(run(4.0), 1.0 + 3.0 + 1.0 + 1.0, same));
}

TEST_F(FilterIIRTest, ANaNGainIsAlwaysAnother) {
    configure(matrix({{0.5}}), matrix({{0.5}}));
    feed.give("gain", matrix({{kNaN}}));
    EXPECT_TRUE(agree(run(1.0), kNaN, same));
    feed.give("gain", matrix({{1.0}}));
    EXPECT_TRUE(agree(run(1.0), 1.0, same));
}

TEST_F(FilterIIRTest, ANaNCoefficientIsAnother) {
    configure(matrix({{0.5, 0.25}}), matrix({{0.5}}));
    run(1.0);
    feed.give("coeffsX", matrix({{kNaN, 0.25}}));
    EXPECT_TRUE(agree(run(1.0), kNaN, same)) << "beside one that is equal";
    feed.give("coeffsX", matrix({{0.5, 0.25}}));
    EXPECT_TRUE(agree(run(1.0), 0.5 + 0.25 + 0.5, same)) << "and so is the sound row behind it";
}

TEST_F(FilterIIRTest, PollsGainThenCoefficientsForwardThenBack) {
    configure(matrix({{0.5}}), matrix({{0.5}}));
    run(1.0);
    feed.give("coeffsY", matrix({{0.25}}));
    feed.give("coeffsX", MatrixXd(1, 0)); // raises
    feed.give("gain", matrix({{2.0}}));
    feed.give("in", matrix({{1.0}}));
    EXPECT_EQ(refusal<Poco::DataFormatException>([&] { feed.step(); }), kRefusal);
    EXPECT_TRUE(agree(feed.get<double>("Gain"), 2.0, same)) << "taken before it";
    EXPECT_TRUE(agree(feed.get<MatrixXd>("YCoeffs"), matrix({{0.5}}), same)) << "waits behind it";
    feed.step();
    EXPECT_TRUE(agree(feed.get<MatrixXd>("YCoeffs"), matrix({{0.25}}), same));
}

TEST_F(FilterIIRTest, CoefficientsOfOtherRowCountsAreDropped) {
    configure(matrix({{0.5}}), matrix({{0.5}}));
    run(8.0);
    for (const char* const pin : {"coeffsX", "coeffsY"})
        for (const MatrixXd& sample :
             {matrix({{1.0, 2.0, 3.0}, {4.0, 5.0, 6.0}}), MatrixXd(0, 0), MatrixXd(0, 3), MatrixXd(2, 0)})
            feed.give(pin, sample), feed.step();
    feed.give("gain", MatrixXd(0, 0));
    EXPECT_TRUE(agree(run(0.0), 4.0, same));
    EXPECT_TRUE(agree(feed.get<MatrixXd>("XCoeffs"), matrix({{0.5}}), same));
    EXPECT_TRUE(agree(feed.get<MatrixXd>("YCoeffs"), matrix({{0.5}}), same));
}

// ---- Edges

TEST_F(FilterIIRTest, AnEmptySampleIsDropped) {
    configure(matrix({{0.5}}), matrix({{0.5}}));
    run(8.0);
    feed.forget();
    for (const MatrixXd& sample : {MatrixXd(0, 0), MatrixXd(1, 0), MatrixXd(0, 2)}) {
        feed.give("in", sample);
        feed.step();
    }
    feed.step();
    EXPECT_TRUE(feed.sent().empty());
    EXPECT_TRUE(agree(run(0.0), 4.0, same)) << "and the state stays";
}

TEST_F(FilterIIRTest, GainZeroIsNotFinite) {
    configure(matrix({{1.0}}), matrix({{0.5}}));
    feed.set("Gain", 0.0);
    EXPECT_TRUE(agree(feed.run("in", matrix({{1.0, 0.0, -1.0}})), matrix({{kInf, kNaN, -kInf}}), same));
}

TEST_F(FilterIIRTest, ARowWithoutColumnsRaisesOnceAndThenStopsTheOutput) {
    configure(matrix({{0.5}}), matrix({{0.5}}));
    run(8.0);
    feed.give("coeffsX", MatrixXd(1, 0));
    EXPECT_EQ(refusal<Poco::DataFormatException>([this] { feed.step(); }), kRefusal);
    EXPECT_TRUE(agree(feed.get<MatrixXd>("XCoeffs"), matrix({{0.5}}), same));
    feed.give("coeffsX", MatrixXd(1, 0));
    EXPECT_TRUE(agree(run(0.0), 4.0, same))
        << "equal to the copy now: no exception, and the computer still has the old";
    feed.give("gain", matrix({{2.0}})); // loads the copies
    feed.forget();
    feed.give("in", matrix({{1.0}}));
    feed.step();
    EXPECT_TRUE(feed.sent().empty()) << "no history to read";
    feed.give("coeffsX", matrix({{0.25}}));
    EXPECT_TRUE(agree(run(8.0), 0.25 * 4.0 + 0.5 * 8.0, same));
}

TEST_F(FilterIIRTest, ARowWithoutColumnsOnTheFeedbackSideMeansNoFeedback) {
    configure(matrix({{0.5}}), matrix({{0.5}}));
    feed.give("coeffsY", MatrixXd(1, 0));
    EXPECT_EQ(refusal<Poco::DataFormatException>([this] { feed.step(); }), kRefusal);
    feed.give("gain", matrix({{2.0}}));
    EXPECT_TRUE(agree(run(8.0), 2.0, same));
}

// ---- Refusals

TEST_F(FilterIIRTest, CoefficientsAreOneRow) {
    for (const char* const name : {"XCoeffs", "YCoeffs"})
        for (const MatrixXd& value :
             {matrix({{1.0}, {2.0}}), MatrixXd(0, 0), MatrixXd(1, 0), MatrixXd(0, 1)}) {
            EXPECT_EQ(refusal<Poco::DataFormatException>([&] { feed.set(name, value); }), kRefusal);
            EXPECT_TRUE(agree(feed.get<MatrixXd>(name), matrix({{1.0}}), same));
        }
    EXPECT_TRUE(agree(run(3.0), 0.0, same)) << "no flag was raised";
}

TEST_F(FilterIIRTest, InitValueIsWritableInFixedModeOnly) {
    const auto write = [this] { feed.set("InitValue", 3.0); };
    EXPECT_EQ(refusal<Poco::NoPermissionException>(write), "Property 'InitValue' is not writable");
    feed.set("InitMode", 1u);
    EXPECT_EQ(refusal<Poco::NoPermissionException>(write), "no exception");
    feed.set("InitMode", 0u);
    EXPECT_EQ(refusal<Poco::NoPermissionException>(write), "Property 'InitValue' is not writable");
    EXPECT_EQ(refusal<Poco::RangeException>([this] { feed.set("InitMode", 2u); }), "");
}

TEST_F(FilterIIRTest, EveryInitModeTellsOfTheInitValuesLock) {
    AttributeLog log(block);
    const std::vector<std::string> once{"InitValue"};
    feed.set("InitMode", 1u);
    EXPECT_EQ(log.names, once);
    EXPECT_TRUE(block.getProperty("InitValue").getIsWritable());
    log.names.clear();
    feed.set("InitMode", 0u);
    EXPECT_EQ(log.names, once);
    EXPECT_FALSE(block.getProperty("InitValue").getIsWritable());
    log.names.clear();
    feed.set("InitMode", 0u);
    EXPECT_TRUE(log.names.empty()) << "an equal write tells no one";
}

// ---- Memory

TEST_F(FilterIIRTest, ResetsRestart) {
    struct Row {
        const char* name;
        MatrixXd control;
        bool isReset;
    };
    const Row rows[] = {{.name = "one", .control = matrix({{1.0}}), .isReset = true},
                        {.name = "a NaN", .control = matrix({{kNaN}}), .isReset = true},
                        {.name = "zero", .control = matrix({{0.0, 1.0}}), .isReset = false},
                        {.name = "minus zero", .control = matrix({{-0.0}}), .isReset = false},
                        {.name = "an empty sample", .control = MatrixXd(0, 0), .isReset = false}};
    configure(matrix({{0.5}}), matrix({{0.5}}));
    for (const Row& row : rows) {
        feed.fire("Reset");
        EXPECT_TRUE(agree(run(8.0), 8.0, same)) << row.name;
        feed.give("reset", row.control);
        EXPECT_TRUE(agree(run(2.0), row.isReset ? 2.0 : 5.0, same)) << row.name;
    }
}

TEST_F(FilterIIRTest, AResetWithoutASampleHappensAtOnce) {
    configure(matrix({{0.5}}), matrix({{0.5}}));
    run(0.0);
    feed.give("reset", matrix({{1.0}}));
    feed.step(); // nothing on "in", and yet the request is taken from its pin
    feed.give("reset", matrix({{0.0}}));
    EXPECT_TRUE(agree(run(8.0), 8.0, same)) << "8 stands for the output before it";
    feed.give("reset", matrix({{0.0}}));
    EXPECT_TRUE(agree(run(0.0), 4.0, same)) << "once";
}

TEST_F(FilterIIRTest, AShapeChangeStartsFromTheNewSample) {
    configure(matrix({{0.5}}), matrix({{0.5}}));
    feed.run("in", matrix({{8.0, 8.0}}));
    for (const MatrixXd& sample :
         {matrix({{2.0}, {3.0}}), matrix({{4.0}}), matrix({{5.0, 6.0}}), matrix({{7.0, 1.0}, {2.0, 3.0}})})
        EXPECT_TRUE(agree(feed.run("in", sample), sample, same));
}

TEST_F(FilterIIRTest, InitValueAppliesAtTheNextStart) {
    configure(matrix({{0.5}}), matrix({{0.5}}));
    feed.set("InitMode", 1u);
    EXPECT_TRUE(agree(run(2.0), 1.0, same));
    feed.set("InitValue", 100.0);
    EXPECT_TRUE(agree(run(2.0), 1.5, same));
    feed.fire("Reset");
    EXPECT_TRUE(agree(run(2.0), 51.0, same));
    feed.set("InitMode", 0u);
    EXPECT_TRUE(agree(run(2.0), 26.5, same)) << "nor does the mode act at once";
    feed.fire("Reset");
    EXPECT_TRUE(agree(run(2.0), 2.0, same));
}

TEST_F(FilterIIRTest, ASteadyStepAllocatesNothing) {
    FilterIIR own("own");
    own.getProperty("XCoeffs").setValueFromString("1 3 0.5 0.25 0.125");
    own.getProperty("YCoeffs").setValueFromString("1 2 0.5 0.25");
    EXPECT_EQ(allocationsOfAHundredSteps(own, "in", MatrixXd::Ones(8, 9)), 0u);
}

// ---- Long trace

TEST_F(FilterIIRTest, IsTheOneLineRecursion) {
    configure(matrix({{0.3, 0.2}}), matrix({{0.6}}));
    feed.set("Gain", 4.0);
    for (const Kit::Shape shape : Kit::kShapes) {
        MatrixXd u1, y1;
        for (const MatrixXd& sample : Kit::randomTrace(23, 1000, shape.rows, shape.cols)) {
            const MatrixXd u = sample * 0.25;
            if (u1.size() == 0) {
                u1 = u;
                y1 = sample;
            }
            y1 = 0.3 * u1 + 0.2 * u + 0.6 * y1; // element by element, so the order of each sum is as written
            u1 = u;
            ASSERT_TRUE(agree(feed.run("in", sample), y1, same)) << shape.rows << " by " << shape.cols;
        }
    }
}
