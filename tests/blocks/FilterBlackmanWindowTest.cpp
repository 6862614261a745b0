// SPDX-License-Identifier: MIT
#include "blocks/FilterBlackmanWindow.h"

#include "tests/blocks/WindowTest.h"
#include "tests/support/SteadySteps.h"

using namespace Support;

using FilterBlackmanWindowTest = WindowTest<FilterBlackmanWindow>;

TEST_F(FilterBlackmanWindowTest, Catalogue) {
    EXPECT_STREQ(block.getTypeName(), "FilterBlackmanWindow");
    EXPECT_EQ(block.getName(), "window");
    EXPECT_EQ(catalogue(block), "input \"input\" blocking\n"
                                "output \"output\"\n");
}

TEST_F(FilterBlackmanWindowTest, EqualValuesShowTheWindow) {
    // 0.42 - 0.5*cos(2*pi*i/(N-1)) + 0.08*cos(4*pi*i/(N-1)) in 40 digits: mpmath 1.2.1, rounded to 17.
    expectWindows({
        column({0, 0}),
        column({0, 1, 0}),
        column({0, 0.34, 1, 0.34, 0}),
        column({0, 0.090453424354128082, 0.45918295754596367, 0.92036361809990825, 0.92036361809990825,
                0.45918295754596367, 0.090453424354128082, 0}),
        column({0, 0.066446609406726238, 0.34, 0.77355339059327376, 1, 0.77355339059327376, 0.34,
                0.066446609406726238, 0}),
    });
}

TEST_F(FilterBlackmanWindowTest, IsExactlySymmetricAndRisesToItsMiddle) {
    expectExactSymmetryAndARiseToTheMiddle();
}

// The next two have figures of F. J. Harris, "On the Use of Windows for Harmonic Analysis with the Discrete
// Fourier Transform", Proc. IEEE 66 (1978), and of the closed form of the loss, |W(1/2)| / W(0).

TEST_F(FilterBlackmanWindowTest, ATonesPeakIsLoweredByTheCoherentGain) {
    expectCoherentGain(0.42);
}

TEST_F(FilterBlackmanWindowTest, ATonesPeakHalfwayBetweenTwoBinsLosesTheScallopingLoss) {
    expectScallopingLoss(1.10);
}

TEST_F(FilterBlackmanWindowTest, ASteadyStepAllocatesNothing) {
    FilterBlackmanWindow own("own");
    EXPECT_EQ(allocationsOfAHundredSteps(own, "input", MatrixXd::Ones(30, 1)), 0u);
}
