// SPDX-License-Identifier: MIT
#include "design/BesselDesigner.h"
#include "design/ButterworthDesigner.h"
#include "design/ChebyshevDesigner.h"
#include "design/EllipticDesigner.h"
#include "tests/design/DesignKit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>

// Every design against the textbook's, and elliptic bands, which are not the textbook's, against what their
// class says of them: all computed elsewhere in many digits. The scripts beside this file made the figures
// and say how.
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

/// How far a root may be from the textbook's, relative to the unit circle, which is the size of the z-plane.
template <class Roots>
void expectPoles(const Roots& roots, std::size_t count, const std::vector<Complex>& wanted, double distance) {
    for (const Complex pole : wanted) {
        double nearest = 1.0;
        for (std::size_t i = 0; i < count; ++i)
            nearest = std::min(nearest, magnitude(roots[i] - pole));
        EXPECT_LE(nearest, distance) << "pole " << pole.re << " + " << pole.im << "i";
    }
}

double sizeOf(const std::vector<double>& coefficients) {
    double sum = 0.0;
    for (const double c : coefficients)
        sum += std::fabs(c);
    return sum;
}

/// `bound` counts relative to the polynomial's size, the sum of its coefficients' sizes.
void expectCoefficients(const std::vector<double>& got, const std::vector<double>& wanted, const char* side,
                        double bound) {
    ASSERT_EQ(got.size(), wanted.size());
    const double size = sizeOf(wanted);
    for (std::size_t i = 0; i < wanted.size(); ++i)
        EXPECT_TRUE(agree(got[i], wanted[i], withinRel(bound, size))) << side << i;
}

/// How much larger a polynomial is than its value at a point of the unit circle: what its rounding is
/// multiplied by.
double lossAt(const std::vector<double>& coefficients, Complex z) {
    std::vector<Complex> terms;
    for (const double c : coefficients)
        terms.push_back({c, 0.0});
    return sizeOf(coefficients) /
           magnitude(Design::evaluatePolynomial(terms, static_cast<int>(terms.size()) - 1, z));
}

/// How far the gain may be from the textbook's, when every root of a pair of polynomials is off by
/// `distance`. With a root r off by d, a coefficient is off by at most d times the size of the polynomial
/// without r, which is about the size of the whole; multiplying a root out and adding a term at z round by
/// some half ulps of it each. So a degree costs d and 8 units of rounding, both relative to the size, and the
/// quotient at z has them times `lossAt`.
double gainBound(const PoleZeroRow& row, double distance) {
    const double middle = (0.2 + 0.35) * 0.5 * std::numbers::pi;
    std::vector<Complex> points{{row.mode == 2 ? -1.0 : 1.0, 0.0}};
    if (row.mode == 4) points = {{std::cos(middle), std::sin(middle)}};
    if (row.mode == 8) points.push_back({-1.0, 0.0});
    const double perLoss = static_cast<double>(row.y.size()) * (distance + 8.0 * 0x1p-53);
    double bound = 0.0;
    for (const Complex z : points)
        bound += perLoss * (lossAt(row.x, z) + lossAt(row.y, z));
    return bound / static_cast<double>(points.size()); // a band-stop takes the root of two
}

template <class Designer>
void expectDesign(Designer& designer, const PoleZeroRow& row, double distance) {
    SCOPED_TRACE(std::string(row.family) + ", order " + std::to_string(row.order) + ", mode " +
                 std::to_string(row.mode));
    designer.step(matrix({{1.0}}));
    ASSERT_EQ(designer.numZPoles, row.mode < 4 ? row.order : 2 * row.order);
    expectPoles(designer.zPoles, static_cast<std::size_t>(designer.numZPoles), row.poles, distance);
    EXPECT_TRUE(agree(designer.getGain(), row.gain, withinRel(gainBound(row, distance), 0.0)));
    const double bound = static_cast<double>(row.y.size()) * (distance + 8.0 * 0x1p-53);
    expectCoefficients(designer.getXCoefficients(), row.x, "x", bound);
    expectCoefficients(designer.getYCoefficients(), row.y, "y", bound);
}

// Roots go through a dozen roundings, and through a square root that can triple them.
constexpr double kRootError = 32.0 * 0x1p-53;
/// The table of Bessel prototypes has twelve digits, of which all orders but the last keep eleven, the last
/// ten.
double tableError(std::int32_t order) {
    return order < 10 ? 5e-12 : 5e-11;
}

TEST(TextbookDesigns, PoleZeroFamiliesWithTheBilinearMapping) {
    for (const PoleZeroRow& row : kPoleZeroRows) {
        const std::string family = row.family;
        if (family == "Bessel") {
            Kit::OpenRoots<BesselDesigner> designer(row.mode, row.order, false, 0.2, 0.35);
            expectDesign(designer, row, tableError(row.order));
        } else if (family == "Butterworth") {
            Kit::OpenRoots<ButterworthDesigner> designer(row.mode, row.order, false, 0.2, 0.35);
            expectDesign(designer, row, kRootError);
        } else {
            ASSERT_EQ(family, "Chebyshev");
            Kit::OpenRoots<ChebyshevDesigner> designer(row.mode, row.order, false, 0.2, -0.5, 0.35);
            expectDesign(designer, row, kRootError);
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
        expectPoles(designer.zRoots, static_cast<std::size_t>(row.order), row.poles, 1e-10);
        EXPECT_TRUE(agree(designer.getGain(), row.gain, withinRel(1e-10, 0.0)));
        expectCoefficients(designer.getXCoefficients(), row.x, "x", 1e-10);
        expectCoefficients(designer.getYCoefficients(), row.y, "y", 1e-10);
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
        expectCoefficients(x, row.x, "x", 1e-10);
        expectCoefficients(designer.getYCoefficients(), row.y, "y", 1e-10);
        if (row.gain == 0.0) continue;
        // Each term carries the roundings of up to twenty products.
        EXPECT_TRUE(agree(designer.getGain(), row.gain, withinRel(40.0 * 0x1p-53 * row.loss, 0.0)));
    }
    EXPECT_EQ(std::size(kBandRows), 20u);
}

} // namespace
