// SPDX-License-Identifier: MIT
#include "spectral/AmplitudeSpectrum.h"

#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <vector>

using namespace Support;
using Spectral::writeAmplitudes;

TEST(AmplitudeSpectrumTest, FoldsBothRealEndsIntoRowZeroAndPairsTheRest) {
    const std::vector<double> transform{3.0, 5.0, 12.0, -8.0, 6.0, -4.0};
    std::vector<double> amplitudes(3);
    writeAmplitudes(transform.data(), 1, 6, amplitudes.data());
    EXPECT_TRUE(agree(amplitudes[0], 5.0 / 6.0, same));
    EXPECT_TRUE(agree(amplitudes[1], 13.0 / 3.0, same));
    EXPECT_TRUE(agree(amplitudes[2], 10.0 / 3.0, same));
}

TEST(AmplitudeSpectrumTest, ReadsEveryStridethValue) {
    const std::vector<double> transform{3.0, 99.0, 5.0, 99.0, 12.0, 99.0, -4.0, 99.0};
    std::vector<double> amplitudes(2);
    writeAmplitudes(transform.data(), 2, 4, amplitudes.data());
    EXPECT_TRUE(agree(amplitudes[0], 1.25, same));
    EXPECT_TRUE(agree(amplitudes[1], 6.5, same));
}

TEST(AmplitudeSpectrumTest, OfTwoValuesIsOneRow) {
    const std::vector<double> transform{-3.0, 4.0};
    double amplitude = 0.0;
    writeAmplitudes(transform.data(), 1, 2, &amplitude);
    EXPECT_TRUE(agree(amplitude, 2.5, same));
}

TEST(AmplitudeSpectrumTest, SquaresMayOverflowAndVanish) {
    // Squares and root, not a guarded hypotenuse: 1e200 is lost to infinity, 1e-200 to zero.
    const std::vector<double> transform{1e-200, 1e200, 0.0, 0.0, std::numeric_limits<double>::quiet_NaN(),
                                        1e-200};
    std::vector<double> amplitudes(3);
    writeAmplitudes(transform.data(), 1, 6, amplitudes.data());
    EXPECT_TRUE(agree(amplitudes[0], 0.0, same));
    EXPECT_TRUE(agree(amplitudes[1], std::numeric_limits<double>::infinity(), same));
    EXPECT_TRUE(agree(amplitudes[2], std::numeric_limits<double>::quiet_NaN(), same));
}

TEST(AmplitudeSpectrumTest, IsTheFormulaToTheBitForEveryLengthAndStride) {
    std::mt19937_64 random(3);
    std::uniform_real_distribution<double> number(-10.0, 10.0);
    for (const std::size_t stride : {1UL, 2UL, 5UL})
        for (std::size_t n = 2; n <= 60; n += 2) {
            std::vector<double> transform(n * stride);
            for (double& value : transform)
                value = number(random);
            std::vector<double> amplitudes(n / 2 + 1, -1.0);
            writeAmplitudes(transform.data(), static_cast<std::ptrdiff_t>(stride),
                            static_cast<std::int32_t>(n), amplitudes.data());
            for (std::size_t k = 0; k < n / 2; ++k) {
                const double a = transform[(k == 0 ? n - 1 : 2 * k - 1) * stride];
                const double b = transform[2 * k * stride];
                const double divisor = static_cast<double>(k == 0 ? n : n / 2);
                EXPECT_TRUE(agree(amplitudes[k], std::sqrt(a * a + b * b) / divisor, same))
                    << "n = " << n << ", stride " << stride << ", row " << k;
            }
            EXPECT_TRUE(agree(amplitudes[n / 2], -1.0, same)) << "n = " << n << ": behind the last row";
        }
}
