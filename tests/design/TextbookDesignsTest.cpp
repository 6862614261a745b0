// SPDX-License-Identifier: MIT
#include "design/BesselDesigner.h"
#include "design/ButterworthDesigner.h"
#include "design/ChebyshevDesigner.h"
#include "design/EllipticDesigner.h"
#include "tests/design/DesignKit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

// Every design against the textbook's, and elliptic bands, which are not the textbook's, against what their class says of
// them: all computed elsewhere in many digits. The scripts beside this file made the figures and say how.
namespace {
using Design::Complex;
using Support::agree;
using Support::matrix;
using Support::withinRel;

struct PoleZeroRow {
    const char* family;
    std::int32_t order, mode;
    double gain;
    std::vector<Complex> poles;
    std::vector<double> x, y;
};
const PoleZeroRow kPoleZeroRows[] = {
#include "tests/design/TextbookDesigns.inc"
};

struct EllipticRow {
    std::int32_t order, mode;
    double gain;
    std::vector<Complex> poles;
    std::vector<double> x, y;
};
const EllipticRow kEllipticRows[] = {
#include "tests/design/TextbookElliptic.inc"
};

struct BandRow {
    std::int32_t order, mode;
    double gain; ///< 0 where a zero at the reference point leaves rounding noise
    double loss; ///< how many times larger the terms are than the sums whose quotient is the gain
    std::vector<double> x, y;
};
const BandRow kBandRows[] = {
#include "tests/design/EllipticBands.inc"
};

/// Distances count relative to the unit circle, which is the size of the z-plane.
template <class Roots>
void expectPoles(const Roots& roots, std::size_t count, const std::vector<Complex>& wanted) {
    for (const Complex pole : wanted) {
        double nearest = 1.0;
        for (std::size_t i = 0; i < count; ++i)
            nearest = std::min(nearest, magnitude(roots[i] - pole));
        EXPECT_LE(nearest, 1e-10) << "pole " << pole.re << " + " << pole.im << "i";
    }
}

/// Coefficients of one polynomial are compared relative to its largest: those near zero are sums that cancel.
void expectCoefficients(const std::vector<double>& got, const std::vector<double>& wanted, const char* side) {
    ASSERT_EQ(got.size(), wanted.size());
    double largest = 0.0;
    for (const double c : wanted)
        largest = std::max(largest, std::fabs(c));
    for (std::size_t i = 0; i < wanted.size(); ++i)
        EXPECT_TRUE(agree(got[i], wanted[i], withinRel(1e-10, largest))) << side << i;
}

template <class Designer>
void expectDesign(Designer& designer, const PoleZeroRow& row) {
    SCOPED_TRACE(std::string(row.family) + ", order " + std::to_string(row.order) + ", mode " +
                 std::to_string(row.mode));
    designer.step(matrix({{1.0}}));
    ASSERT_EQ(designer.numZPoles, row.mode < 4 ? row.order : 2 * row.order);
    expectPoles(designer.zPoles, static_cast<std::size_t>(designer.numZPoles), row.poles);
    EXPECT_TRUE(agree(designer.getGain(), row.gain, withinRel(1e-10, 0.0)));
    expectCoefficients(designer.getXCoefficients(), row.x, "x");
    expectCoefficients(designer.getYCoefficients(), row.y, "y");
}

TEST(TextbookDesigns, PoleZeroFamiliesWithTheBilinearMapping) {
    for (const PoleZeroRow& row : kPoleZeroRows) {
        const std::string family = row.family;
        if (family == "Bessel") {
            Kit::OpenRoots<BesselDesigner> designer(row.mode, row.order, false, 0.2, 0.35);
            expectDesign(designer, row);
        } else if (family == "Butterworth") {
            Kit::OpenRoots<ButterworthDesigner> designer(row.mode, row.order, false, 0.2, 0.35);
            expectDesign(designer, row);
        } else {
            ASSERT_EQ(family, "Chebyshev");
            Kit::OpenRoots<ChebyshevDesigner> designer(row.mode, row.order, false, 0.2, -0.5, 0.35);
            expectDesign(designer, row);
        }
    }
    EXPECT_EQ(std::size(kPoleZeroRows), 120u);
}

struct OpenElliptic : EllipticDesigner {
    using EllipticDesigner::EllipticDesigner;
    using EllipticDesigner::zOrder;
    using EllipticDesigner::zRoots;
};

TEST(TextbookDesigns, EllipticWhereNoSurplusRootStandsInTheWay) {
    for (const EllipticRow& row : kEllipticRows) {
        SCOPED_TRACE("order " + std::to_string(row.order) + ", mode " + std::to_string(row.mode));
        OpenElliptic designer(row.mode, row.order, 0.2, 0.5, -40.0, 0.0);
        designer.step(matrix({{1.0}}));
        ASSERT_EQ(designer.zOrder, row.order);
        expectPoles(designer.zRoots, static_cast<std::size_t>(row.order), row.poles);
        EXPECT_TRUE(agree(designer.getGain(), row.gain, withinRel(1e-10, 0.0)));
        expectCoefficients(designer.getXCoefficients(), row.x, "x");
        expectCoefficients(designer.getYCoefficients(), row.y, "y");
    }
    EXPECT_EQ(std::size(kEllipticRows), 16u);
}

TEST(TextbookDesigns, EllipticBandsAsTheirClassTells) {
    for (const BandRow& row : kBandRows) {
        SCOPED_TRACE("order " + std::to_string(row.order) + ", mode " + std::to_string(row.mode));
        OpenElliptic designer(row.mode, row.order, 0.3, 0.5, -40.0, 0.6);
        designer.step(matrix({{1.0}}));
        std::vector<double> x = designer.getXCoefficients();
        for (double& c : x)
            c /= designer.getGain();
        expectCoefficients(x, row.x, "x");
        expectCoefficients(designer.getYCoefficients(), row.y, "y");
        if (row.gain == 0.0) continue;
        // Each term carries the roundings of up to twenty products.
        EXPECT_TRUE(agree(designer.getGain(), row.gain, withinRel(40.0 * 0x1p-53 * row.loss, 0.0)));
    }
    EXPECT_EQ(std::size(kBandRows), 20u);
}

} // namespace
