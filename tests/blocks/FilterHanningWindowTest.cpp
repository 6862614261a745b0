// SPDX-License-Identifier: MIT
#include "blocks/FilterHanningWindow.h"

#include "blocks/FilterFastFourierTransform.h"
#include "tests/support/Allocations.h"
#include "tests/support/Feed.h"
#include "tests/support/Numbers.h"
#include "tests/support/Signals.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace Support;

namespace {
// Figures of F. J. Harris, "On the Use of Windows for Harmonic Analysis with the Discrete Fourier Transform", Proc. IEEE
// 66 (1978), and of the closed form of the loss, |W(1/2)| / W(0).
constexpr double kCoherentGain = 0.5;
constexpr double kScallopingLoss = 1.42; // dB

/// The largest row of the amplitude spectrum of a windowed sample.
double peak(const MatrixXd& sample) {
    FilterHanningWindow window("window");
    Feed windowFeed(window);
    FilterFastFourierTransform transform("transform");
    Feed transformFeed(transform);
    return transformFeed.run("in", windowFeed.run("input", sample), 0.0, "powerSpectrum").maxCoeff();
}
} // namespace

class FilterHanningWindowTest : public testing::Test {
protected:
    FilterHanningWindow block{"window"};
    Feed feed{block};
};

TEST_F(FilterHanningWindowTest, Catalogue) {
    EXPECT_STREQ(block.getTypeName(), "FilterHanningWindow");
    EXPECT_EQ(block.getName(), "window");
    EXPECT_EQ(catalogue(block), "input \"input\" blocking\n"
                                "output \"output\"\n");
}

TEST_F(FilterHanningWindowTest, EqualValuesShowTheWindow) {
    // 0.5 - 0.5*cos(2*pi*i/(N-1)) in 40 digits: mpmath 1.2.1, rounded to 17.
    const MatrixXd windows[] = {
        column({0, 0}),
        column({0, 1, 0}),
        column({0, 0.5, 1, 0.5, 0}),
        column({0, 0.18825509907063323, 0.6112604669781572, 0.95048443395120956, 0.95048443395120956,
                0.6112604669781572, 0.18825509907063323, 0}),
        column({0, 0.14644660940672624, 0.5, 0.85355339059327376, 1, 0.85355339059327376, 0.5,
                0.14644660940672624, 0}),
    };
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

TEST_F(FilterHanningWindowTest, IsExactlySymmetricAndRisesToItsMiddle) {
    for (const Eigen::Index n : {2, 3, 4, 31, 32, 1000, 1001}) {
        const MatrixXd window = feed.run("input", MatrixXd::Ones(n, 1));
        for (Eigen::Index i = 0; i < n; ++i)
            EXPECT_TRUE(agree(window(n - 1 - i), window(i), same)) << n << " elements, element " << i;
        for (Eigen::Index i = 1; i < n / 2; ++i)
            EXPECT_GE(window(i), window(i - 1)) << n << " elements, element " << i;
    }
}

TEST_F(FilterHanningWindowTest, ATonesPeakIsLoweredByTheCoherentGain) {
    // The window's ends are both of one period, so its sum is short of that of N points by at most one of them.
    EXPECT_TRUE(agree(peak(tone(4096, 10.0, 200.0, 0.4)), 10.0 * kCoherentGain, law(10.0 / 4096)));
}

TEST_F(FilterHanningWindowTest, ATonesPeakHalfwayBetweenTwoBinsLosesTheScallopingLoss) {
    const double loss = 20.0 * std::log10(peak(tone(4096, 10.0, 200.0)) / peak(tone(4096, 10.0, 200.5)));
    EXPECT_TRUE(agree(loss, kScallopingLoss, printed(3)));
}

TEST_F(FilterHanningWindowTest, ASteadyStepAllocatesNothing) {
    FilterHanningWindow own("own");
    OutputPin<MatrixXd> sender("sender", nullptr);
    sender.attach(own.getInputPin("input"), false);
    sender.data.value = MatrixXd::Ones(30, 1);
    sender.send(0.0);
    own.process();
    const AllocationCounter counter;
    for (int i = 0; i < 10; ++i) {
        sender.send(i);
        own.process();
    }
    EXPECT_EQ(counter.count(), 0u);
}
