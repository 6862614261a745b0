// SPDX-License-Identifier: MIT
#include "design/Complex.h"

#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <array>

namespace {
using Design::Complex;
using Support::agree;
using Support::kNaN;
using Support::same;

testing::AssertionResult agreeBoth(Complex got, Complex wanted) {
    const auto re = agree(got.re, wanted.re, same);
    return re ? agree(got.im, wanted.im, same) : re;
}

TEST(Complex, DividesByEitherPart) {
    EXPECT_TRUE(agreeBoth(Complex{-3.0, 4.0} / Complex{2.0, 0.0}, {-1.5, 2.0}));
    EXPECT_TRUE(agreeBoth(Complex{-3.0, 4.0} / Complex{0.0, 2.0}, {2.0, 1.5}));
    EXPECT_TRUE(agreeBoth(Complex{5.0, 10.0} / Complex{3.0, 4.0}, {2.2, 0.4}));
}

TEST(Complex, DivisionByZeroIsNaNInBothParts) {
    for (const Complex top : {Complex{1.0, 0.0}, Complex{0.0, -2.0}, Complex{0.0, 0.0}})
        EXPECT_TRUE(agreeBoth(top / Complex{0.0, 0.0}, {kNaN, kNaN}));
    EXPECT_TRUE(agreeBoth(Complex{1.0, 1.0} / Complex{-0.0, -0.0}, {kNaN, kNaN}));
}

TEST(Complex, DivisionStaysFiniteWhereSquaresOverflow) {
    EXPECT_TRUE(agreeBoth(Complex{1e200, 0.0} / Complex{1e200, 1e200}, {0.5, -0.5}));
}

TEST(Complex, SqrtTakesTheRightHalfPlane) {
    EXPECT_TRUE(agreeBoth(Design::complexSqrt({4.0, 0.0}), {2.0, 0.0}));
    EXPECT_TRUE(agreeBoth(Design::complexSqrt({-4.0, 0.0}), {0.0, 2.0}));
    EXPECT_TRUE(agreeBoth(Design::complexSqrt({-3.0, 4.0}), {1.0, 2.0}));
    EXPECT_TRUE(agreeBoth(Design::complexSqrt({-3.0, -4.0}), {1.0, -2.0}));
    EXPECT_TRUE(agreeBoth(Design::complexSqrt({0.0, 0.0}), {0.0, 0.0}));
    EXPECT_TRUE(agreeBoth(Design::complexSqrt({-4.0, -0.0}), {0.0, 2.0})) << "-0.0 is not below 0";
}

TEST(Complex, SqrtCountsNaNAsNotPositive) {
    EXPECT_TRUE(agreeBoth(Design::complexSqrt({kNaN, kNaN}), {0.0, 0.0}));
    EXPECT_TRUE(agreeBoth(Design::poisonedSqrt({kNaN, 0.0}), {kNaN, kNaN}));
    EXPECT_TRUE(agreeBoth(Design::poisonedSqrt({0.0, kNaN}), {kNaN, kNaN}));
    EXPECT_TRUE(agreeBoth(Design::poisonedSqrt({-3.0, -4.0}), {1.0, -2.0}));
}

TEST(Complex, PolynomialByHorner) {
    const std::array<Complex, 3> c{{{1.0, 0.0}, {0.0, 2.0}, {3.0, 0.0}}};
    EXPECT_TRUE(agreeBoth(Design::evaluatePolynomial(c, 2, {0.0, 1.0}), {-4.0, 0.0}));
    EXPECT_TRUE(agreeBoth(Design::evaluatePolynomial(c, 0, {5.0, 5.0}), {1.0, 0.0}));
    EXPECT_TRUE(agreeBoth(Design::evaluatePolynomial(c, -1, {5.0, 5.0}), {0.0, 0.0}));
    EXPECT_TRUE(agreeBoth(Design::evaluateRatio(c, 2, c, 0, {0.0, 1.0}), {-4.0, 0.0}));
}

TEST(Complex, RootsExpandToCoefficientsByRisingPower) {
    const std::array<Complex, 3> roots{{{1.0, 0.0}, {0.0, 2.0}, {0.0, -2.0}}};
    std::array<Complex, 4> c{};
    Design::expandRoots(roots, 3, c);
    EXPECT_TRUE(agreeBoth(c[0], {-4.0, 0.0}));
    EXPECT_TRUE(agreeBoth(c[1], {4.0, 0.0}));
    EXPECT_TRUE(agreeBoth(c[2], {-1.0, 0.0}));
    EXPECT_TRUE(agreeBoth(c[3], {1.0, 0.0}));
    Design::expandRoots(roots, 0, c);
    EXPECT_TRUE(agreeBoth(c[0], {1.0, 0.0})) << "no root leaves the constant 1";
}

} // namespace
