// SPDX-License-Identifier: MIT
#include "spectral/SpectralKernels.h"

#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

using namespace Spectral;
using namespace Support;

namespace {

constexpr double kUntouched = -77.0;

/// The sums of one harmonic and element as the kernel's header has them, one term after the other.
struct PlainHarmonic {
    double re;
    double im;

    PlainHarmonic(const GeneralPass& pass, double cosine, double sine, std::ptrdiff_t element) {
        const double* const x = pass.folded + element;
        const auto row = [&](std::ptrdiff_t j) { return x[pass.branch * j]; };
        re = row(0) + cosine * row(1);
        im = sine * row(pass.factor - 1);
        double c = cosine;
        double s = sine;
        for (std::ptrdiff_t j = 2; 2 * j < pass.factor; ++j) {
            const double turned = cosine * c - sine * s;
            s = cosine * s + sine * c;
            c = turned;
            re += c * row(j);
            im += s * row(pass.factor - j);
        }
    }
};

/// Checks harmonics `first` to `first + count - 1`, and that nothing else is written.
void check(std::ptrdiff_t factor, std::ptrdiff_t branch, std::ptrdiff_t first, std::ptrdiff_t count) {
    std::mt19937_64 random(static_cast<std::uint64_t>(factor * branch + count));
    std::uniform_real_distribution<double> number(-1.0, 1.0);
    std::vector<double> folded(static_cast<std::size_t>(factor * branch));
    for (double& value : folded)
        value = number(random);
    Turns turns{};
    for (std::ptrdiff_t l = 0; l < count; ++l) {
        const double angle = 6.283185307179586 * static_cast<double>(first + l) / static_cast<double>(factor);
        turns.cos[l] = std::cos(angle);
        turns.sin[l] = std::sin(angle);
    }
    std::vector<double> out(folded.size(), kUntouched);
    std::vector<double> wanted = out;
    const GeneralPass pass{branch, factor, folded.data(), out.data()};
    for (std::ptrdiff_t l = 0; l < count; ++l)
        for (std::ptrdiff_t i = 0; i < branch; ++i) {
            const PlainHarmonic plain(pass, turns.cos[l], turns.sin[l], i);
            wanted[static_cast<std::size_t>(branch * (first + l) + i)] = plain.re;
            wanted[static_cast<std::size_t>(branch * (factor - first - l) + i)] = plain.im;
        }
    spectralKernels().transformHarmonics(pass, turns, first, count);
    EXPECT_EQ(out, wanted) << "factor " << factor << ", branch " << branch << ", harmonics " << first
                           << " to " << first + count - 1;
}

} // namespace

TEST(SpectralKernelsTest, HarmonicsAbreastAreHarmonicsAloneToTheBit) {
    for (std::ptrdiff_t factor = 3; factor <= 41; factor += 2)
        for (std::ptrdiff_t branch = 1; branch <= 7; ++branch)
            for (std::ptrdiff_t first = 1; 2 * first < factor; first += kHarmonicsAbreast)
                for (std::ptrdiff_t count = 1;
                     count <= kHarmonicsAbreast && 2 * (first + count) <= factor + 1; ++count)
                    check(factor, branch, first, count);
}
