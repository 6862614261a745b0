// SPDX-License-Identifier: MIT
#include "host/response/PublishedDesign.h"

#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

using Quillmere::Host::PublishedDesign;
using Support::agree;
using Support::matrix;
using Support::withinRel;

namespace {
using Quillmere::Core::MatrixXd;

constexpr double kEps = std::numeric_limits<double>::epsilon();

double errorOf(double gain, const MatrixXd& rows) {
    return PublishedDesign(gain, rows).estimateError();
}

TEST(PublishedDesignTest, ErrorIsARoundingOfWhatCancels) {
    // 1 / (z - p): at 1 the feedback is 1 - p, of terms that add up to 1 + p; and the gain makes the response
    // 1 there.
    for (const double p : {0.5, 0.99, 1.0 - 1e-6}) {
        const double rest = 1.0 - p;
        EXPECT_TRUE(agree(errorOf(1.0 / rest, matrix({{1.0, 0.0}, {p, -1.0}})),
                          kEps * (1.0 + (1.0 + p) / rest), withinRel(1e-12, 0.0)))
            << p;
        // The same by delays, where the gain is in the coefficients.
        EXPECT_TRUE(agree(errorOf(99.0, matrix({{0.0, rest}, {-1.0, p}})), kEps * (1.0 + (1.0 + p) / rest),
                          withinRel(1e-12, 0.0)))
            << p;
        // And upside down in frequency: a high-pass.
        EXPECT_TRUE(agree(errorOf(1.0 / rest, matrix({{1.0, 0.0}, {-p, -1.0}})),
                          kEps * (1.0 + (1.0 + p) / rest), withinRel(1e-12, 0.0)))
            << p;
    }
}

TEST(PublishedDesignTest, NarrowBandsAreFoundBetweenTheAngles) {
    // (z^2 - 1) / (z^2 - 2 r cos(t) z + r^2), r = 1 - d: near z = exp(it) the denominator is about 2 d sin t.
    for (const double angle : {0.7, 1.0001, 2.5}) {
        const double d = 1e-7;
        const double r = 1.0 - d;
        const double middle = 2.0 * d * std::sin(angle);
        const double gain = 2.0 * std::sin(angle) / middle;
        const double size = 1.0 + 2.0 * r * std::fabs(std::cos(angle)) + r * r;
        const double error =
            errorOf(gain, matrix({{-1.0, 0.0, 1.0}, {-r * r, 2.0 * r * std::cos(angle), -1.0}}));
        EXPECT_TRUE(agree(error, kEps * (2.0 / middle / gain + size / middle), withinRel(1e-4, 0.0)))
            << angle;
    }
}

TEST(PublishedDesignTest, ANotchLosesNothing) {
    // Poles just inside zeros on the circle: both polynomials vanish there, and the response is 1 everywhere
    // else.
    const double r = 1.0 - 1e-4;
    const double error = errorOf(1.0, matrix({{1.0, 0.0, 1.0}, {-r * r, 0.0, -1.0}}));
    EXPECT_GT(error, kEps);
    EXPECT_LT(error, 1e-10);
}

TEST(PublishedDesignTest, WithoutNumbersThereIsNoError) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_TRUE(std::isnan(errorOf(nan, matrix({{1.0, 0.0}, {0.5, -1.0}}))));
    EXPECT_TRUE(std::isnan(errorOf(1.0, matrix({{nan, nan}, {nan, nan}}))));
}

} // namespace
