// SPDX-License-Identifier: MIT
#include "design/EllipticDesigner.h"

#include "design/Constants.h"
#include "tests/design/DesignKit.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <complex>
#include <random>

using Quillmere::Core::MatrixXd;

namespace {
using Design::Complex;
using Kit::MatrixXd;
using Support::agree;
using Support::kNaN;
using Support::law;
using Support::matrix;
using Support::printed;
using Support::same;
using Support::withinRel;

struct Elliptic : Kit::Open<EllipticDesigner> {
    using EllipticDesigner::cgam;
    using EllipticDesigner::numSPoles;
    using EllipticDesigner::numSZeros;
    using EllipticDesigner::scale;
    using EllipticDesigner::sRoots;
    using EllipticDesigner::wc;
    using EllipticDesigner::zOrder;
    using EllipticDesigner::zRoots;
    using Open::Open;
};

Elliptic designed(std::int32_t mode, std::int32_t order, double low, double pass, double stop, double high) {
    Elliptic designer(mode, order, low, pass, stop, high);
    designer.step(matrix({{1.0}}));
    return designer;
}

bool isFinite(const std::vector<double>& values) {
    return std::all_of(values.begin(), values.end(), [](double v) { return std::isfinite(v); });
}

// ---- Worked samples

TEST(EllipticDesigner, DefaultsAtOrderOne) {
    const Elliptic designer = designed(Design::kLowPass, 1, 0.05, 0.5, -10.0, 0.0);
    EXPECT_TRUE(agree(designer.wc, 0.0787017, printed(6)));
    ASSERT_EQ(designer.zOrder, 1);
    ASSERT_EQ(designer.zRoots.size(), 2u);
    EXPECT_TRUE(agree(designer.zRoots[0].re, 0.632246, printed(6)));
    EXPECT_TRUE(agree(designer.zRoots[1].re, -1.0, same));
    EXPECT_TRUE(agree(designer.getGain(), 0.183877, printed(6)));
    ASSERT_EQ(designer.xCoeffs.size(), 2u);
    EXPECT_TRUE(agree(designer.xCoeffs[0], 0.183877, printed(6)));
    EXPECT_TRUE(agree(designer.xCoeffs[1], 0.183877, printed(6)));
    EXPECT_TRUE(agree(designer.yCoeffs[0], 1.0, same));
    EXPECT_TRUE(agree(designer.yCoeffs[1], -0.632246, printed(6)));
}

TEST(EllipticDesigner, DefaultsAtOrderTwo) {
    const Elliptic designer = designed(Design::kLowPass, 2, 0.05, 0.5, -10.0, 0.0);
    EXPECT_TRUE(agree(designer.scale, 1.059254, printed(7)));
    EXPECT_TRUE(agree(designer.zRoots[0].re, 0.90179, printed(5)));
    EXPECT_TRUE(agree(designer.zRoots[0].im, 0.16308, printed(5)));
    EXPECT_TRUE(agree(designer.zRoots[2].re, 0.94232, printed(5)));
    EXPECT_TRUE(agree(designer.zRoots[2].im, 0.3347, printed(4)));
    ASSERT_EQ(designer.yCoeffs.size(), 3u);
    EXPECT_TRUE(agree(designer.yCoeffs[0], 1.0, same));
    EXPECT_TRUE(agree(designer.yCoeffs[1], -1.803586, printed(7)));
    EXPECT_TRUE(agree(designer.yCoeffs[2], 0.839826, printed(6)));
}

TEST(EllipticDesigner, OddLowPassDividesByAZeroAtItsReference) {
    const Elliptic designer = designed(Design::kLowPass, 3, 0.1, 0.5, -40.0, 0.0);
    EXPECT_EQ(designer.numSPoles, 4);
    EXPECT_EQ(designer.numSZeros, 2) << "counts numbers, and is used as a count of roots";
    ASSERT_EQ(designer.zRoots.size(), 6u);
    EXPECT_TRUE(agree(designer.zRoots[3].re, 0.611, printed(3)));
    EXPECT_TRUE(agree(std::fabs(designer.zRoots[3].im), 0.792, printed(3)));
    EXPECT_TRUE(agree(designer.zRoots[5].re, 1.0, same)) << "in the place of the usual -1";
    // The numerator at z = 1, a sum of four terms of up to 2.3, should be 0. What rounding leaves of it is 0
    // or a few units of 2^-53, up to the last bit of a sine, and the gain is the denominator's 0.016 over
    // that: infinite, or at least 1e13 in size, of either sign, but never not-a-number.
    EXPECT_GT(std::fabs(designer.getGain()), 1e13);
    EXPECT_GT(std::fabs(designer.output()(0)), 1e13);
}

TEST(EllipticDesigner, LowPassOfOrderOneSubtractsThePreviousOutput) {
    Elliptic designer(Design::kLowPass, 1, 0.05, 0.5, -10.0, 0.0);
    double former = 0.0;
    for (const MatrixXd& sample : Kit::randomTrace(5, 500, 1, 1)) {
        designer.step(sample);
        EXPECT_TRUE(agree(designer.output()(0), designer.xCoeffs[0] * sample(0) - former, same));
        former = designer.output()(0);
    }
}

TEST(EllipticDesigner, LowPassUsesItsFirstCoefficientOnly) {
    for (const std::int32_t order : {1, 2, 4, 6, 8, 10}) {
        Elliptic designer(Design::kLowPass, order, 0.2, 0.5, -40.0, 0.0);
        designer.step(matrix({{1.0, -1.0}}));
        EXPECT_EQ(designer.xHistory.size(), 1u);
        EXPECT_TRUE(agree(designer.output(), matrix({{designer.xCoeffs[0], -designer.xCoeffs[0]}}), same));
    }
}

TEST(EllipticDesigner, ABandDropsTheImaginaryPartOfTheDivisor) {
    // The pole r = re + i im gives w = wc r, and of (S + B) / D and (B - S) / D, with S the root of (2
    // cgam)^2 - 4 (1 - w^2), B = 2 cgam, the exact D would be 2 (1 - w); here it is 2 (1 - re w).
    const Elliptic designer = designed(Design::kBandPass, 2, 0.2, 0.5, -40.0, 0.4);
    ASSERT_EQ(designer.zOrder, 4);
    const std::complex<double> w = designer.wc * std::complex<double>(designer.sRoots[0], designer.sRoots[1]);
    const double b = 2.0 * designer.cgam;
    const std::complex<double> root = std::sqrt(b * b - 4.0 * (1.0 - w * w));
    const std::complex<double> first = (b + root) / (2.0 * (1.0 - w.real()));
    const std::complex<double> second = (b - root) / (2.0 * (1.0 - w.real()));
    EXPECT_GT(std::fabs(w.imag()), 0.1) << "or nothing is dropped";
    // Which of two conjugates comes first follows from which root was taken.
    EXPECT_TRUE(agree(designer.zRoots[0].re, first.real(), withinRel(1e-13)));
    EXPECT_TRUE(agree(std::fabs(designer.zRoots[0].im), std::fabs(first.imag()), withinRel(1e-13)));
    EXPECT_TRUE(agree(designer.zRoots[2].re, second.real(), withinRel(1e-13)));
    EXPECT_TRUE(agree(std::fabs(designer.zRoots[2].im), std::fabs(second.imag()), withinRel(1e-13)));
}

// ---- Edges

TEST(EllipticDesigner, HistorySizesFollowTheMode) {
    struct Row {
        const char* name;
        std::int32_t mode;
        std::size_t x, y;
    };
    const Row rows[] = {{.name = "low-pass", .mode = Design::kLowPass, .x = 1, .y = 5},
                        {.name = "high-pass", .mode = Design::kHighPass, .x = 5, .y = 5},
                        {.name = "band-pass", .mode = Design::kBandPass, .x = 5, .y = 9},
                        {.name = "band-stop", .mode = Design::kBandStop, .x = 9, .y = 9}};
    for (const Row& row : rows) {
        const Elliptic designer = designed(row.mode, 4, 0.2, 0.5, -40.0, 0.4);
        EXPECT_EQ(designer.xHistory.size(), row.x) << row.name;
        EXPECT_EQ(designer.yHistory.size(), row.y) << row.name;
        EXPECT_GE(designer.xCoeffs.size(), row.x) << row.name;
        EXPECT_EQ(designer.yCoeffs.size(), row.y) << row.name;
    }
}

TEST(EllipticDesigner, EqualBandEdgesAreNaNUntilTheNextDesign) {
    for (const std::int32_t mode : {Design::kBandPass, Design::kBandStop})
        for (std::int32_t order = 1; order <= 10; ++order) {
            Elliptic designer = designed(mode, order, 0.3, 0.5, -10.0, 0.3);
            EXPECT_TRUE(std::isnan(designer.getGain())) << mode << ", " << order;
            for (const double c : designer.getXCoefficients())
                EXPECT_TRUE(std::isnan(c)) << mode << ", " << order;
            for (const double c : designer.getYCoefficients())
                EXPECT_TRUE(std::isnan(c)) << mode << ", " << order;
            EXPECT_TRUE(agree(designer.output(), matrix({{kNaN}}), same)) << mode << ", " << order;
            designer.setParameters(Design::kHighPass, 2, 0.3, 0.5, -10.0, 0.3);
            designer.step(matrix({{1.0}}));
            EXPECT_TRUE(std::isfinite(designer.output()(0))) << mode << ", " << order;
        }
}

TEST(EllipticDesigner, ImpossibleRipplesAreNaN) {
    // A stop band above the pass band's ripple has no modulus.
    const Elliptic designer = designed(Design::kHighPass, 4, 0.1, 10.0, -0.1, 0.0);
    EXPECT_TRUE(std::isnan(designer.getGain()));
    EXPECT_TRUE(agree(designer.output(), matrix({{kNaN}}), same));
}

TEST(EllipticDesigner, OddHighPassAndBandStopAreSound) {
    for (const std::int32_t order : {1, 3, 5, 7, 9}) {
        const Elliptic high = designed(Design::kHighPass, order, 0.2, 0.5, -40.0, 0.4);
        const Elliptic stop = designed(Design::kBandStop, order, 0.2, 0.5, -40.0, 0.4);
        EXPECT_TRUE(isFinite(high.xCoeffs) && isFinite(high.yCoeffs)) << order;
        EXPECT_TRUE(isFinite(stop.xCoeffs) && isFinite(stop.yCoeffs)) << order;
        EXPECT_LT(std::fabs(high.getGain()), 10.0) << order;
        EXPECT_LT(std::fabs(stop.getGain()), 10.0) << order;
    }
}

/// How many numerator roots of a band-pass lie at the centre of its band, where the gain is taken.
int countZerosAtCentre(const Elliptic& designer) {
    const Complex centre{designer.cgam, std::sqrt(1.0 - designer.cgam * designer.cgam)};
    int count = 0;
    for (auto i = static_cast<std::size_t>(designer.zOrder);
         i < 2 * static_cast<std::size_t>(designer.zOrder); ++i)
        for (const Complex wanted : {centre, conjugate(centre)})
            if (magnitude(designer.zRoots[i] - wanted) < 1e-14) ++count; // a few ulp of 1
    return count;
}

TEST(EllipticDesigner, OddBandPassDividesByAZeroAtItsReference) {
    struct Row {
        double low, high;
        std::int32_t order;
        double leastGain; ///< 0 where rounding may leave anything
    };
    // The numerator at the centre is nothing but rounding, and that grows with the order, while the
    // denominator there shrinks. Gains are about 2e11, 3e9, 5e5 and 1e2 for the first band, 1e10, 2e6, 2e2
    // and 0.2 for the second; the bounds leave room for another mathematical library.
    const Row rows[] = {{0.2, 0.4, 3, 1e9}, {0.2, 0.4, 5, 1e7}, {0.2, 0.4, 7, 1e3}, {0.2, 0.4, 9, 0.0},
                        {0.1, 0.2, 3, 1e8}, {0.1, 0.2, 5, 1e4}, {0.1, 0.2, 7, 0.0}, {0.1, 0.2, 9, 0.0}};
    for (const Row& row : rows) {
        const Elliptic odd = designed(Design::kBandPass, row.order, row.low, 0.5, -40.0, row.high);
        EXPECT_EQ(countZerosAtCentre(odd), 2) << row.low << ", " << row.order;
        EXPECT_GT(std::fabs(odd.getGain()), row.leastGain) << row.low << ", " << row.order;
        const Elliptic even = designed(Design::kBandPass, row.order + 1, row.low, 0.5, -40.0, row.high);
        EXPECT_EQ(countZerosAtCentre(even), 0) << row.low << ", " << row.order + 1;
        EXPECT_LT(std::fabs(even.getGain()), 1.0) << row.low << ", " << row.order + 1;
    }
    EXPECT_EQ(countZerosAtCentre(designed(Design::kBandPass, 1, 0.2, 0.5, -40.0, 0.4)), 0);
}

/// Settings at and between their limits. A refused write can leave the high edge below the low one.
struct Grid {
    std::int32_t mode, order;
    double low, pass, stop, high;
};

std::vector<Grid> grid() {
    std::vector<Grid> rows;
    for (const std::int32_t mode : {1, 2, 4, 8})
        for (std::int32_t order = 1; order <= 10; ++order)
            for (const double low : {0.01, 0.1, 0.5, 0.9, 1.0})
                for (const double high : {0.0, 0.01, 0.15, 0.9, 1.0})
                    for (const double pass : {0.1, 0.5, 10.0})
                        for (const double stop : {-60.0, -10.0, -0.1})
                            if (mode >= 4 || high == 0.0)
                                rows.push_back({mode, order, low, pass, stop, high});
    return rows;
}

TEST(EllipticDesigner, EverySettingEndsSoonAndStaysInsideItsArrays) {
    double worst = 0.0;
    for (const Grid& row : grid()) {
        const auto start = std::chrono::steady_clock::now();
        const Elliptic designer = designed(row.mode, row.order, row.low, row.pass, row.stop, row.high);
        worst =
            std::max(worst, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
        const std::size_t poles = static_cast<std::size_t>(row.mode < 4 ? row.order : 2 * row.order);
        EXPECT_GE(designer.yCoeffs.size(), poles + 1);
        EXPECT_EQ(designer.xCoeffs.size(), designer.yCoeffs.size());
    }
    // A few milliseconds, with room for sanitizers and a busy machine.
    EXPECT_LT(worst, 0.1);
}

// ---- Laws

TEST(EllipticDesigner, LowAndHighPassPolesLieInsideTheUnitCircleInPairs) {
    for (const Grid& row : grid()) {
        if (row.mode > 2 || row.low > 0.95) continue;
        const Elliptic designer = designed(row.mode, row.order, row.low, row.pass, row.stop, row.high);
        if (std::isnan(designer.getGain())) continue;
        ASSERT_EQ(designer.zOrder, row.order);
        for (std::size_t i = 0; i < static_cast<std::size_t>(designer.zOrder); ++i) {
            const Complex root = designer.zRoots[i];
            EXPECT_LT(magnitude(root), 1.0)
                << row.mode << ", " << row.order << ", " << row.low << ", " << row.stop;
            const auto isConjugate = [&](Complex r) { return r.re == root.re && r.im == -root.im; };
            EXPECT_TRUE(
                std::any_of(designer.zRoots.begin(), designer.zRoots.begin() + designer.zOrder, isConjugate));
        }
    }
}

TEST(EllipticDesigner, GainIsOneAtTheReferencePoint) {
    int compared = 0;
    for (const Grid& row : grid()) {
        if (row.mode == Design::kBandPass) continue;
        const Elliptic designer = designed(row.mode, row.order, row.low, row.pass, row.stop, row.high);
        if (!std::isfinite(designer.getGain())) continue;
        const double at = row.mode == Design::kHighPass ? -1.0 : 1.0;
        double x = 0.0, y = 0.0, xSize = 0.0, ySize = 0.0;
        for (std::size_t i = designer.xCoeffs.size(); i-- > 0;) {
            x = x * at + designer.xCoeffs[i];
            y = y * at + designer.yCoeffs[i];
            xSize += std::fabs(designer.xCoeffs[i]);
            ySize += std::fabs(designer.yCoeffs[i]);
        }
        // An even order starts at the bottom of its ripple.
        const double wanted = row.order % 2 == 0 ? std::pow(10.0, -row.pass / 20.0) : 1.0;
        // Each coefficient and each sum rounds a few times a degree, by half an ulp of at most their summed
        // sizes.
        const double bound = 1e-13 + 1e-15 * static_cast<double>(designer.xCoeffs.size()) *
                                         (xSize / std::fabs(x) + ySize / std::fabs(y));
        if (!(bound < 1e-3)) continue;
        EXPECT_TRUE(agree(x / y, wanted, law(bound))) << row.mode << ", " << row.order << ", " << row.low;
        ++compared;
    }
    EXPECT_GT(compared, 500);
}

// ---- Memory

TEST(EllipticDesigner, ResetZeroesTheHistoryAndKeepsTheDesign) {
    Elliptic designer(Design::kHighPass, 3, 0.3, 0.5, -40.0, 0.0);
    Elliptic fresh(Design::kHighPass, 3, 0.3, 0.5, -40.0, 0.0);
    designer.step(matrix({{1.0, 2.0}}));
    designer.resetHistory(0, 0);
    EXPECT_FALSE(designer.needsDesign);
    designer.step(matrix({{3.0, 4.0}}));
    fresh.step(matrix({{3.0, 4.0}}));
    EXPECT_TRUE(agree(designer.output(), fresh.output(), same));
}

TEST(EllipticDesigner, ShapeChangeStartsAgain) {
    Elliptic designer(Design::kHighPass, 3, 0.3, 0.5, -40.0, 0.0);
    Elliptic fresh(Design::kHighPass, 3, 0.3, 0.5, -40.0, 0.0);
    designer.step(matrix({{1.0, 2.0}}));
    designer.step(matrix({{3.0}, {4.0}}));
    fresh.step(matrix({{3.0}, {4.0}}));
    EXPECT_TRUE(agree(designer.output(), fresh.output(), same));
}

TEST(EllipticDesigner, ADesignLeavesNothingToTheNext) {
    std::vector<Grid> rows = grid();
    std::mt19937_64 random(37);
    std::shuffle(rows.begin(), rows.end(), random);
    Elliptic reused(Design::kLowPass, 1, 0.05, 0.5, -10.0, 0.0);
    for (const Grid& row : rows) {
        Elliptic fresh = designed(row.mode, row.order, row.low, row.pass, row.stop, row.high);
        reused.setParameters(row.mode, row.order, row.low, row.pass, row.stop, row.high);
        reused.step(matrix({{1.0}}));
        ASSERT_TRUE(agree(reused.getGain(), fresh.getGain(), same));
        ASSERT_TRUE(agree(reused.output(), fresh.output(), same));
        ASSERT_EQ(reused.xCoeffs.size(), fresh.xCoeffs.size());
        for (std::size_t i = 0; i < fresh.xCoeffs.size(); ++i) {
            ASSERT_TRUE(agree(reused.xCoeffs[i], fresh.xCoeffs[i], same));
            ASSERT_TRUE(agree(reused.yCoeffs[i], fresh.yCoeffs[i], same));
        }
    }
}

// ---- Long trace

TEST(EllipticDesigner, RunsTheLiteralDirectFormBitForBit) {
    for (const std::int32_t mode : {1, 2, 4, 8})
        for (std::int32_t order = 1; order <= 10; ++order)
            for (const Kit::Shape shape : Kit::kShapes) {
                Elliptic designer(mode, order, 0.2, 0.5, -40.0, 0.4);
                Kit::LiteralDirectForm literal;
                for (const MatrixXd& sample : Kit::randomTrace(9, 60, shape.rows, shape.cols)) {
                    designer.step(sample);
                    if (literal.xHistory.empty()) {
                        literal = {.xCoeffs = designer.xCoeffs,
                                   .yCoeffs = designer.yCoeffs,
                                   .xHistory = std::vector<MatrixXd>(designer.xHistory.size(), sample * 0.0),
                                   .yHistory = std::vector<MatrixXd>(designer.yHistory.size(), sample * 0.0)};
                        for (double& c : literal.yCoeffs)
                            c = -c; // added instead of subtracted
                    }
                    ASSERT_TRUE(agree(designer.output(), literal.step(sample), same))
                        << mode << ", " << order;
                }
            }
}

} // namespace
