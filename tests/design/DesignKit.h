// SPDX-License-Identifier: MIT
#pragma once

#include "design/Complex.h"
#include "tests/support/Numbers.h"

#include <cstdint>
#include <random>
#include <string>
#include <vector>

/// What the tests of the recursive designs share.
namespace Kit {

using Quillmere::Core::MatrixXd;

/// A designer with its inner members open.
template <class Designer>
struct Open : Designer {
    using Designer::design;
    using Designer::Designer;
    using Designer::gain;
    using Designer::needsDesign;
    using Designer::xCoeffs;
    using Designer::xHistory;
    using Designer::yCoeffs;
    using Designer::yHistory;
};

/// The same for the pole-zero families.
template <class Designer>
struct OpenRoots : Open<Designer> {
    using Open<Designer>::Open;
    using Designer::computePoles;
    using Designer::numSPoles;
    using Designer::numSZeros;
    using Designer::numZPoles;
    using Designer::numZZeros;
    using Designer::sPoles;
    using Designer::sZeros;
    using Designer::zPoles;
    using Designer::zZeros;
};

/// The direct form word for word: whole histories of matrices, copied by rising index, one scaled accumulate
/// a coefficient. The yardstick for the engines' own loop.
struct LiteralDirectForm {
    std::vector<double> xCoeffs;
    std::vector<double> yCoeffs; ///< added
    std::vector<MatrixXd> xHistory;
    std::vector<MatrixXd> yHistory;

    const MatrixXd& step(const MatrixXd& scaledInput) {
        const std::size_t nx = xHistory.size();
        const std::size_t ny = yHistory.size();
        for (std::size_t i = 0; i + 1 < nx; ++i)
            xHistory[i + 1] = xHistory[i];
        for (std::size_t i = 0; i + 1 < ny; ++i)
            yHistory[i + 1] = yHistory[i];
        xHistory[0] = scaledInput;
        yHistory[0] = xHistory[nx - 1] * xCoeffs[0];
        for (std::size_t i = 1; i < nx; ++i)
            yHistory[0] += xHistory[nx - 1 - i] * xCoeffs[i];
        for (std::size_t j = 0; j + 1 < ny; ++j)
            yHistory[0] += yHistory[ny - 1 - j] * yCoeffs[j];
        return yHistory[0];
    }
};

/// Samples of one shape, uniform in -1 to 1, the same for the same seed everywhere.
inline std::vector<MatrixXd> randomTrace(std::uint64_t seed, int steps, Eigen::Index rows,
                                         Eigen::Index cols) {
    std::mt19937_64 random(seed);
    std::vector<MatrixXd> trace;
    for (int n = 0; n < steps; ++n) {
        MatrixXd sample(rows, cols);
        for (Eigen::Index e = 0; e < sample.size(); ++e)
            sample(e) = static_cast<double>(random() >> 11) * 0x1p-52 - 1.0;
        trace.push_back(sample);
    }
    return trace;
}

/// Shapes that meet every road of a loop over elements: fewer than a vector's worth, exact multiples,
/// remainders.
struct Shape {
    Eigen::Index rows;
    Eigen::Index cols;
};
inline constexpr Shape kShapes[] = {{1, 1}, {1, 3}, {3, 1}, {2, 4}, {3, 5}, {8, 8}, {5, 13}};

} // namespace Kit
