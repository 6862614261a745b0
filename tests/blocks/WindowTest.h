// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/FilterFastFourierTransform.h"
#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"
#include "tests/support/Signals.h"

#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>

namespace Support {

/// What every window is, for the figures of one of them.
template <class Block>
class WindowTest : public testing::Test {
protected:
    /// Samples of equal values show the window, lying or standing.
    void expectWindows(std::initializer_list<MatrixXd> windows) {
        for (const MatrixXd& window : windows) {
            const Eigen::Index n = window.size();
            // A few roundings of numbers up to 1.
            const Tolerance nearly = law(4e-16);
            EXPECT_TRUE(agree(feed.run("input", MatrixXd::Ones(n, 1)), window, nearly)) << n << " elements";
            EXPECT_TRUE(agree(feed.run("input", MatrixXd::Constant(n, 1, -2.0)), -2.0 * window, law(8e-16)))
                << n << " elements";
            EXPECT_TRUE(agree(feed.run("input", MatrixXd::Ones(1, n)), window.transpose(), nearly))
                << n << " elements";
        }
    }

    void expectExactSymmetryAndARiseToTheMiddle() {
        for (const Eigen::Index n : {2, 3, 4, 31, 32, 1000, 1001}) {
            const MatrixXd window = feed.run("input", MatrixXd::Ones(n, 1));
            for (Eigen::Index i = 0; i < n; ++i)
                EXPECT_TRUE(agree(window(n - 1 - i), window(i), same)) << n << " elements, element " << i;
            for (Eigen::Index i = 1; i < n / 2; ++i)
                EXPECT_GE(window(i), window(i - 1)) << n << " elements, element " << i;
        }
    }

    /// A tone's peak in the amplitude spectrum is lowered by the mean of the window.
    void expectCoherentGain(double gain) {
        // The window's ends are both of one period, so its sum is short of that of N points by at most one of
        // them.
        EXPECT_TRUE(agree(peak(tone(4096, 10.0, 200.0, 0.4)), 10.0 * gain, law(10.0 / 4096)));
    }

    /// A tone halfway between two bins loses that much more, in decibels to three digits.
    void expectScallopingLoss(double decibels) {
        const double loss = 20.0 * std::log10(peak(tone(4096, 10.0, 200.0)) / peak(tone(4096, 10.0, 200.5)));
        EXPECT_TRUE(agree(loss, decibels, printed(3)));
    }

    Block block{"window"};
    Feed feed{block};

private:
    double peak(const MatrixXd& sample) {
        FilterFastFourierTransform transform("transform");
        Feed transformFeed(transform);
        return transformFeed.run("in", feed.run("input", sample), 0.0, "powerSpectrum").maxCoeff();
    }
};

} // namespace Support
