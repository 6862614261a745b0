// SPDX-License-Identifier: MIT
#include "blocks/FilterHammingWindow.h"

#include "tests/blocks/WindowTest.h"
#include "tests/support/SteadySteps.h"

using namespace Support;

using FilterHammingWindowTest = WindowTest<FilterHammingWindow>;

TEST_F(FilterHammingWindowTest, Catalogue) {
    EXPECT_STREQ(block.getTypeName(), "FilterHammingWindow");
    EXPECT_EQ(block.getName(), "window");
    EXPECT_EQ(catalogue(block), "input \"input\" blocking\n"
                                "output \"output\"\n");
}

TEST_F(FilterHammingWindowTest, EqualValuesShowTheWindow) {
    // 0.54 - 0.46*cos(2*pi*i/(N-1)) in 40 digits: mpmath 1.2.1, rounded to 17.
    expectWindows({
        column({0.08, 0.08}),
        column({0.08, 1, 0.08}),
        column({0.08, 0.54, 1, 0.54, 0.08}),
        column({0.08, 0.25319469114498258, 0.64235962961990463, 0.9544456792351128, 0.9544456792351128,
                0.64235962961990463, 0.25319469114498258, 0.08}),
        column({0.08, 0.21473088065418814, 0.54, 0.86526911934581186, 1, 0.86526911934581186, 0.54,
                0.21473088065418814, 0.08}),
    });
}

TEST_F(FilterHammingWindowTest, IsExactlySymmetricAndRisesToItsMiddle) {
    expectExactSymmetryAndARiseToTheMiddle();
}

// The next two have figures of F. J. Harris, "On the Use of Windows for Harmonic Analysis with the Discrete
// Fourier Transform", Proc. IEEE 66 (1978), and of the closed form of the loss, |W(1/2)| / W(0).

TEST_F(FilterHammingWindowTest, ATonesPeakIsLoweredByTheCoherentGain) {
    expectCoherentGain(0.54);
}

TEST_F(FilterHammingWindowTest, ATonesPeakHalfwayBetweenTwoBinsLosesTheScallopingLoss) {
    expectScallopingLoss(1.75);
}

TEST_F(FilterHammingWindowTest, ASteadyStepAllocatesNothing) {
    FilterHammingWindow own("own");
    EXPECT_EQ(allocationsOfAHundredSteps(own, "input", MatrixXd::Ones(30, 1)), 0u);
}
