// SPDX-License-Identifier: MIT
#include "blocks/FilterHanningWindow.h"

#include "tests/blocks/WindowTest.h"
#include "tests/support/SteadySteps.h"

using namespace Support;

using FilterHanningWindowTest = WindowTest<FilterHanningWindow>;

TEST_F(FilterHanningWindowTest, Catalogue) {
    EXPECT_STREQ(block.getTypeName(), "FilterHanningWindow");
    EXPECT_EQ(block.getName(), "window");
    EXPECT_EQ(catalogue(block), "input \"input\" blocking\n"
                                "output \"output\"\n");
}

TEST_F(FilterHanningWindowTest, EqualValuesShowTheWindow) {
    // 0.5 - 0.5*cos(2*pi*i/(N-1)) in 40 digits: mpmath 1.2.1, rounded to 17.
    expectWindows({
        column({0, 0}),
        column({0, 1, 0}),
        column({0, 0.5, 1, 0.5, 0}),
        column({0, 0.18825509907063323, 0.6112604669781572, 0.95048443395120956, 0.95048443395120956,
                0.6112604669781572, 0.18825509907063323, 0}),
        column({0, 0.14644660940672624, 0.5, 0.85355339059327376, 1, 0.85355339059327376, 0.5,
                0.14644660940672624, 0}),
    });
}

TEST_F(FilterHanningWindowTest, IsExactlySymmetricAndRisesToItsMiddle) {
    expectExactSymmetryAndARiseToTheMiddle();
}

// The next two have figures of F. J. Harris, "On the Use of Windows for Harmonic Analysis with the Discrete
// Fourier Transform", Proc. IEEE 66 (1978), and of the closed form of the loss, |W(1/2)| / W(0).

TEST_F(FilterHanningWindowTest, ATonesPeakIsLoweredByTheCoherentGain) {
    expectCoherentGain(0.5);
}

TEST_F(FilterHanningWindowTest, ATonesPeakHalfwayBetweenTwoBinsLosesTheScallopingLoss) {
    expectScallopingLoss(1.42);
}

TEST_F(FilterHanningWindowTest, ASteadyStepAllocatesNothing) {
    FilterHanningWindow own("own");
    EXPECT_EQ(allocationsOfAHundredSteps(own, "input", MatrixXd::Ones(30, 1)), 0u);
}
