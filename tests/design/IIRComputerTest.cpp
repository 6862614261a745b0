// SPDX-License-Identifier: MIT
#include "design/IIRComputer.h"

#include "tests/design/DesignKit.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <new>

using Quillmere::Core::MatrixXd;

namespace {
using Kit::MatrixXd;
using Support::agree;
using Support::kInf;
using Support::kNaN;
using Support::matrix;
using Support::same;

IIRComputer computer(const MatrixXd& x, const MatrixXd& y, double gain = 1.0) {
    IIRComputer result;
    result.setGain(gain);
    result.setXCoefficients(x);
    result.setYCoefficients(y);
    return result;
}

MatrixXd stepped(IIRComputer& iir, const MatrixXd& input) {
    iir.step(input);
    return iir.output();
}

// ---- Worked samples

TEST(IIRComputer, IsSilentUntilConfigured) {
    IIRComputer iir;
    EXPECT_TRUE(agree(stepped(iir, matrix({{5.0, 2.0}, {1.0, 7.0}})), MatrixXd::Zero(2, 2), same));
    EXPECT_TRUE(agree(stepped(iir, matrix({{-5.0}})), matrix({{-0.0}}), same))
        << "a product with 0, not a selection";
    EXPECT_TRUE(agree(stepped(iir, matrix({{kInf}})), matrix({{kNaN}}), same));
}

TEST(IIRComputer, OnesGiveARunningSum) {
    IIRComputer iir = computer(matrix({{1.0}}), matrix({{1.0}}));
    iir.setFirstValueMode(false);
    EXPECT_TRUE(agree(stepped(iir, matrix({{2.0}})), matrix({{2.0}}), same));
    EXPECT_TRUE(agree(stepped(iir, matrix({{3.0}})), matrix({{5.0}}), same));
    EXPECT_TRUE(agree(stepped(iir, matrix({{-1.0}})), matrix({{4.0}}), same));
}

TEST(IIRComputer, FirstValueModeStartsInTheSteadyState) {
    IIRComputer iir = computer(matrix({{0.5}}), matrix({{0.5}}));
    for (int n = 0; n < 5; ++n)
        EXPECT_TRUE(agree(stepped(iir, matrix({{3.25, -8.0}})), matrix({{3.25, -8.0}}), same));
}

TEST(IIRComputer, FirstValueModeScalesTheInputSideOnly) {
    IIRComputer iir = computer(matrix({{1.0, 10.0}}), matrix({{100.0}}), 4.0);
    // u is 2 both now and before; y(-1) is the raw 8.
    EXPECT_TRUE(agree(stepped(iir, matrix({{8.0}})), matrix({{2.0 + 20.0 + 800.0}}), same));
}

TEST(IIRComputer, FixedValueModeScalesTheInputSideOnly) {
    IIRComputer iir = computer(matrix({{1.0, 10.0}}), matrix({{100.0}}), 4.0);
    iir.setFirstValueMode(false);
    iir.setInitValue(16.0);
    EXPECT_TRUE(agree(stepped(iir, matrix({{8.0}})), matrix({{4.0 + 20.0 + 1600.0}}), same));
}

TEST(IIRComputer, NeverLooksBackFurtherThanOneSample) {
    IIRComputer iir = computer(matrix({{1.0, 10.0, 100.0}}), matrix({{0.0}}));
    iir.setFirstValueMode(false);
    stepped(iir, matrix({{7.0}}));
    stepped(iir, matrix({{2.0}}));
    EXPECT_TRUE(agree(stepped(iir, matrix({{3.0}})), matrix({{2.0 + 20.0 + 300.0}}), same));
}

// ---- Edges

TEST(IIRComputer, WithoutFeedbackCoefficientsThereIsNoFeedback) {
    IIRComputer iir = computer(matrix({{2.0}}), MatrixXd(1, 0));
    EXPECT_TRUE(iir.getIsRunnable());
    EXPECT_TRUE(agree(stepped(iir, matrix({{3.0}})), matrix({{6.0}}), same));
    EXPECT_TRUE(agree(stepped(iir, matrix({{4.0}})), matrix({{8.0}}), same));
}

TEST(IIRComputer, WithoutFeedForwardCoefficientsItCannotRun) {
    IIRComputer iir = computer(MatrixXd(1, 0), matrix({{1.0}}));
    EXPECT_FALSE(iir.getIsRunnable());
    iir.setXCoefficients(matrix({{1.0}}));
    EXPECT_TRUE(iir.getIsRunnable());
}

TEST(IIRComputer, CoefficientsAreTheFirstRow) {
    IIRComputer iir = computer(matrix({{2.0}, {50.0}}), matrix({{0.0}, {50.0}}));
    EXPECT_TRUE(agree(stepped(iir, matrix({{3.0}})), matrix({{6.0}}), same));
}

TEST(IIRComputer, GainZeroIsNotFinite) {
    IIRComputer iir = computer(matrix({{1.0}}), matrix({{0.5}}), 0.0);
    EXPECT_TRUE(agree(stepped(iir, matrix({{1.0, 0.0, -1.0}})), matrix({{kInf, kNaN, -kInf}}), same));
}

TEST(IIRComputer, AZeroCoefficientTimesInfinityIsNaN) {
    IIRComputer iir = computer(matrix({{0.0, 1.0}}), matrix({{0.0}}));
    iir.setFirstValueMode(false);
    EXPECT_TRUE(agree(stepped(iir, matrix({{kInf}})), matrix({{kInf}}), same));
    EXPECT_TRUE(agree(stepped(iir, matrix({{1.0}})), matrix({{kNaN}}), same));
}

// ---- Memory

TEST(IIRComputer, EveryChangeOfCoefficientsStartsAgain) {
    IIRComputer iir = computer(matrix({{0.5}}), matrix({{0.5}}));
    stepped(iir, matrix({{8.0}}));
    stepped(iir, matrix({{0.0}}));
    iir.setGain(1.0);
    EXPECT_TRUE(agree(stepped(iir, matrix({{2.0}})), matrix({{2.0}}), same));
    iir.setXCoefficients(matrix({{0.5}}));
    EXPECT_TRUE(agree(stepped(iir, matrix({{4.0}})), matrix({{4.0}}), same));
    iir.setYCoefficients(matrix({{0.5}}));
    EXPECT_TRUE(agree(stepped(iir, matrix({{6.0}})), matrix({{6.0}}), same));
    iir.requestInit();
    EXPECT_TRUE(agree(stepped(iir, matrix({{1.0}})), matrix({{1.0}}), same));
    EXPECT_TRUE(agree(stepped(iir, matrix({{3.0}})), matrix({{2.0}}), same)) << "and then it remembers";
}

TEST(IIRComputer, ShapeChangeStartsAgainFromTheNewSample) {
    IIRComputer iir = computer(matrix({{0.5}}), matrix({{0.5}}));
    stepped(iir, matrix({{8.0, 8.0}}));
    EXPECT_TRUE(agree(stepped(iir, matrix({{2.0}, {3.0}})), matrix({{2.0}, {3.0}}), same));
}

TEST(IIRComputer, InitValueWaitsForTheNextInitialisation) {
    IIRComputer iir = computer(matrix({{0.5}}), matrix({{0.5}}));
    iir.setFirstValueMode(false);
    EXPECT_TRUE(agree(stepped(iir, matrix({{2.0}})), matrix({{1.0}}), same));
    iir.setInitValue(100.0);
    EXPECT_TRUE(agree(iir.getInitValue(), 100.0, same));
    EXPECT_TRUE(agree(stepped(iir, matrix({{2.0}})), matrix({{1.5}}), same));
    iir.requestInit();
    EXPECT_TRUE(agree(stepped(iir, matrix({{2.0}})), matrix({{51.0}}), same));
}

// ---- Long trace

TEST(IIRComputer, RunsTheLiteralDirectFormBitForBit) {
    const MatrixXd coefficients =
        matrix({{0.3, -0.7, 0.11, 0.013, -0.2, 0.45, 0.05, 0.31, -0.17, 0.09, 0.21}});
    for (Eigen::Index nx = 1; nx <= 11; ++nx)
        for (Eigen::Index ny = 0; ny <= 3; ++ny)
            for (const Kit::Shape shape : Kit::kShapes) {
                const double gain = 3.0;
                IIRComputer iir = computer(coefficients.leftCols(nx), coefficients.leftCols(ny), gain);
                Kit::LiteralDirectForm literal{.xCoeffs = {coefficients.data(), coefficients.data() + nx},
                                               .yCoeffs = {coefficients.data(), coefficients.data() + ny},
                                               .xHistory = {},
                                               .yHistory = {}};
                for (const MatrixXd& sample : Kit::randomTrace(13, 100, shape.rows, shape.cols)) {
                    const MatrixXd scaled = sample * (1.0 / gain);
                    if (literal.xHistory.empty()) {
                        literal.xHistory.assign(static_cast<std::size_t>(nx), scaled);
                        literal.yHistory.assign(static_cast<std::size_t>(ny) + 1, sample);
                    }
                    ASSERT_TRUE(agree(stepped(iir, sample), literal.step(scaled), same)) << nx << ", " << ny;
                }
            }
}

TEST(IIRComputer, IsTheOneLineRecursion) {
    IIRComputer iir = computer(matrix({{0.25, 0.5}}), matrix({{0.375}}), 2.0);
    double u1 = 0.0, y1 = 0.0;
    bool isFirst = true;
    for (const MatrixXd& sample : Kit::randomTrace(17, 5000, 1, 1)) {
        const double u = sample(0) * 0.5;
        if (isFirst) {
            u1 = u;
            y1 = sample(0);
        }
        isFirst = false;
        y1 = 0.25 * u1 + 0.5 * u + 0.375 * y1;
        u1 = u;
        ASSERT_TRUE(agree(stepped(iir, sample), matrix({{y1}}), same));
    }
}

} // namespace
