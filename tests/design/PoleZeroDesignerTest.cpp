// SPDX-License-Identifier: MIT
#include "design/PoleZeroDesigner.h"

#include "design/BesselDesigner.h"
#include "design/ButterworthDesigner.h"
#include "design/ChebyshevDesigner.h"
#include "design/Constants.h"
#include "tests/design/DesignKit.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <limits>
#include <random>

using Quillmere::Core::MatrixXd;

namespace {
using Design::Complex;
using Kit::MatrixXd;
using Support::agree;
using Support::kNaN;
using Support::law;
using Support::matrix;
using Support::same;
using Support::withinRel;

constexpr double kEps = std::numeric_limits<double>::epsilon();

using Bessel = Kit::OpenRoots<BesselDesigner>;
using Butterworth = Kit::OpenRoots<ButterworthDesigner>;
/// One ripple, so that all families are set alike.
struct Chebyshev : Kit::OpenRoots<ChebyshevDesigner> {
    Chebyshev(std::int32_t code, std::int32_t degree, bool matched, double low, double high)
        : OpenRoots(code, degree, matched, low, -0.5, high) {}
    void setParameters(std::int32_t code, std::int32_t degree, bool matched, double low, double high) {
        ChebyshevDesigner::setParameters(code, degree, matched, low, -0.5, high);
    }
};

// ---- Worked samples

TEST(PoleZeroDesigner, ButterworthOrderOneByHand) {
    Butterworth designer(Design::kLowPass, 1, false, 0.5, 0.1);
    designer.step(matrix({{1.0}}));
    // w1 = 2 tan(pi/4) = 2, the s-plane pole is -2, the z-plane pole 0, the zero -1.
    EXPECT_TRUE(agree(designer.sPoles[0].re, -2.0, withinRel(1e-15)));
    EXPECT_TRUE(agree(designer.zPoles[0].re, 0.0, law(1e-15))); // because tan(pi/4) is rounded
    EXPECT_TRUE(agree(designer.zZeros[0].re, -1.0, same));
    EXPECT_TRUE(agree(designer.getGain(), 2.0, withinRel(1e-15)));
    EXPECT_EQ(designer.getXCoefficients(), (std::vector<double>{1.0, 1.0}));
    ASSERT_EQ(designer.getYCoefficients().size(), 2u);
    EXPECT_TRUE(agree(designer.getYCoefficients()[0], 0.0, law(1e-15))); // because of the pole's rounding
    EXPECT_TRUE(agree(designer.getYCoefficients()[1], -1.0, same));
    EXPECT_TRUE(agree(designer.output(), matrix({{0.5}}), withinRel(1e-15)));
}

TEST(PoleZeroDesigner, MatchedLowPassOfOrderOneConverges) {
    Butterworth designer(Design::kLowPass, 1, true, 0.05, 0.1);
    double former = 0.0;
    for (int n = 0; n < 400; ++n) {
        designer.step(matrix({{3.0}}));
        EXPECT_EQ(designer.xHistory.size(), 1u);
        EXPECT_EQ(designer.yHistory.size(), 2u);
        const double u = 3.0 / designer.gain;
        EXPECT_TRUE(
            agree(designer.output()(0), designer.xCoeffs[0] * u + former * designer.yCoeffs[0], same));
        former = designer.output()(0);
    }
    // The pole is exp(-0.05 pi) = 0.855, and 0.855^400 is far below the last bit.
    EXPECT_TRUE(agree(former, 3.0, withinRel(1e-13)));
}

TEST(PoleZeroDesigner, BilinearLowPassOfOrderOneIsTheTrueFilter) {
    Butterworth designer(Design::kLowPass, 1, false, 0.3, 0.1);
    const double w = std::tan(0.15 * Design::kPi); // y(n) = (w (u(n) + u(n-1)) + (1 - w) y(n-1)) / (1 + w)
    double u1 = 0.0;
    double y1 = 0.0;
    for (const MatrixXd& sample : Kit::randomTrace(1, 500, 1, 1)) {
        designer.step(sample);
        EXPECT_EQ(designer.xHistory.size(), 2u);
        EXPECT_EQ(designer.yHistory.size(), 2u);
        y1 = (w * (sample(0) + u1) + (1.0 - w) * y1) / (1.0 + w);
        u1 = sample(0);
        EXPECT_TRUE(agree(designer.output()(0), y1, withinRel(1e-13)));
    }
}

TEST(PoleZeroDesigner, ButterworthPolesByRisingAngle) {
    struct Row {
        const char* name;
        std::int32_t order;
        std::vector<double> degrees;
    };
    const Row rows[] = {{.name = "order 1", .order = 1, .degrees = {180}},
                        {.name = "order 2", .order = 2, .degrees = {135, 225}},
                        {.name = "order 3", .order = 3, .degrees = {120, 180, 240}},
                        {.name = "order 4", .order = 4, .degrees = {112.5, 157.5, 202.5, 247.5}}};
    for (const Row& row : rows) {
        Butterworth designer(Design::kLowPass, row.order, true, 0.05, 0.1);
        designer.computePoles();
        ASSERT_EQ(designer.numSPoles, row.order) << row.name;
        for (std::size_t i = 0; i < row.degrees.size(); ++i) {
            const double angle = row.degrees[i] * Design::kPi / 180.0;
            EXPECT_TRUE(agree(designer.sPoles[i].re, std::cos(angle), withinRel(1e-14)))
                << row.name << ", " << i;
            EXPECT_TRUE(agree(designer.sPoles[i].im, std::sin(angle), withinRel(1e-14)))
                << row.name << ", " << i;
        }
    }
}

TEST(PoleZeroDesigner, BesselListsTheRealPoleFirst) {
    Bessel designer(Design::kLowPass, 3, true, 0.05, 0.1);
    designer.computePoles();
    ASSERT_EQ(designer.numSPoles, 3);
    EXPECT_TRUE(agree(designer.sPoles[0].re, -1.32267579991, same));
    EXPECT_TRUE(agree(designer.sPoles[1].im, 0.999264436281, same));
    EXPECT_TRUE(agree(designer.sPoles[2].im, -0.999264436281, same));
}

TEST(PoleZeroDesigner, BesselPolesAreThreeDecibelsDownAtOne) {
    for (std::int32_t order = 1; order <= 10; ++order) {
        Bessel designer(Design::kLowPass, order, true, 0.05, 0.1);
        designer.computePoles();
        ASSERT_EQ(designer.numSPoles, order);
        double power = 1.0;
        for (std::int32_t i = 0; i < order; ++i) {
            const Complex pole = designer.sPoles[static_cast<std::size_t>(i)];
            const double atZero = pole.re * pole.re + pole.im * pole.im;
            const double atOne = pole.re * pole.re + (1.0 - pole.im) * (1.0 - pole.im);
            power *= atZero / atOne;
        }
        // The table has twelve digits; ten factors of relative error 5e-12 stay below this.
        EXPECT_TRUE(agree(power, 0.5, law(1e-10))) << "order " << order;
    }
}

TEST(PoleZeroDesigner, ChebyshevRippleShapesThePoles) {
    const double rip = std::pow(10.0, 0.05);
    const double eps = std::sqrt(rip - 1.0);
    EXPECT_TRUE(agree(rip, 1.122018, Support::printed(7)));
    EXPECT_TRUE(agree(eps, 0.349311, Support::printed(6)));
    for (const std::int32_t order : {2, 3}) {
        Chebyshev designer(Design::kLowPass, order, true, 0.05, 0.1);
        designer.computePoles();
        ASSERT_EQ(designer.numSPoles, order);
        const double y = std::asinh(1.0 / eps) / order;
        for (std::int32_t i = 0; i < order; ++i) {
            const double angle = Design::kPi * (order == 3 ? 2.0 + i : 2.25 + 1.5 * i) / 3.0;
            const Complex pole = designer.sPoles[static_cast<std::size_t>(i)];
            EXPECT_TRUE(agree(pole.re, std::cos(angle) * std::sinh(y), withinRel(1e-13)))
                << order << ", " << i;
            EXPECT_TRUE(agree(pole.im, std::sin(angle) * std::cosh(y), withinRel(1e-13)))
                << order << ", " << i;
        }
    }
}

// ---- Edges

TEST(PoleZeroDesigner, BandRootCounts) {
    Butterworth pass(Design::kBandPass, 3, false, 0.2, 0.35);
    pass.step(matrix({{1.0}}));
    EXPECT_EQ(pass.numSPoles, 6);
    EXPECT_EQ(pass.numZZeros, pass.numZPoles);
    pass.setParameters(Design::kBandPass, 3, true, 0.2, 0.35);
    pass.step(matrix({{1.0}}));
    EXPECT_EQ(pass.numSPoles, 6);
    EXPECT_EQ(pass.numZZeros, 3);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_TRUE(agree(pass.zZeros[i].re, 1.0, same));
        EXPECT_TRUE(agree(pass.zZeros[i].im, 0.0, same));
    }
    pass.setParameters(Design::kBandStop, 3, true, 0.2, 0.35);
    pass.step(matrix({{1.0}}));
    EXPECT_EQ(pass.numSPoles, 6);
    EXPECT_EQ(pass.numSZeros, 6);
}

TEST(PoleZeroDesigner, BandRootsStandPlusSignFirst) {
    for (const std::int32_t mode : {Design::kBandPass, Design::kBandStop}) {
        Butterworth prototype(mode, 3, true, 0.2, 0.35);
        prototype.computePoles();
        Butterworth designer(mode, 3, true, 0.2, 0.35);
        designer.step(matrix({{1.0}}));
        const double w1 = 0.2 * Design::kPi;
        const double w2 = 0.35 * Design::kPi;
        for (std::size_t i = 0; i < 3; ++i) {
            const std::complex<double> p{prototype.sPoles[i].re, prototype.sPoles[i].im};
            const std::complex<double> half =
                0.5 * (mode == Design::kBandPass ? p * (w2 - w1) : (w2 - w1) / p);
            const std::complex<double> root = std::sqrt(1.0 - w1 * w2 / (half * half));
            const std::complex<double> plus = half * (1.0 + root);
            const std::complex<double> minus = half * (1.0 - root);
            EXPECT_LT(magnitude(designer.sPoles[i] - Complex{plus.real(), plus.imag()}), 1e-14) << i;
            EXPECT_LT(magnitude(designer.sPoles[3 + i] - Complex{minus.real(), minus.imag()}), 1e-14) << i;
            if (mode == Design::kBandPass) continue;
            EXPECT_TRUE(agree(designer.sZeros[i].im, std::sqrt(w1 * w2), withinRel(1e-15))) << i;
            EXPECT_TRUE(agree(designer.sZeros[3 + i].im, -std::sqrt(w1 * w2), withinRel(1e-15))) << i;
        }
    }
}

TEST(PoleZeroDesigner, HistorySizesFollowModeAndMapping) {
    struct Row {
        const char* name;
        std::int32_t mode;
        bool matchedZ;
        std::size_t x, y;
    };
    const Row rows[] = {{.name = "low-pass matched", .mode = 1, .matchedZ = true, .x = 1, .y = 4},
                        {.name = "low-pass bilinear", .mode = 1, .matchedZ = false, .x = 4, .y = 4},
                        {.name = "high-pass matched", .mode = 2, .matchedZ = true, .x = 4, .y = 4},
                        {.name = "high-pass bilinear", .mode = 2, .matchedZ = false, .x = 4, .y = 4},
                        {.name = "band-pass matched", .mode = 4, .matchedZ = true, .x = 4, .y = 7},
                        {.name = "band-pass bilinear", .mode = 4, .matchedZ = false, .x = 7, .y = 7},
                        {.name = "band-stop matched", .mode = 8, .matchedZ = true, .x = 7, .y = 7},
                        {.name = "band-stop bilinear", .mode = 8, .matchedZ = false, .x = 7, .y = 7}};
    for (const Row& row : rows) {
        Butterworth designer(row.mode, 3, row.matchedZ, 0.2, 0.35);
        designer.step(matrix({{1.0, 2.0}}));
        EXPECT_EQ(designer.xHistory.size(), row.x) << row.name;
        EXPECT_EQ(designer.yHistory.size(), row.y) << row.name;
        EXPECT_EQ(designer.xCoeffs.size(), row.x) << row.name;
        EXPECT_EQ(designer.yCoeffs.size(), row.y) << row.name;
    }
}

struct VoidDesign {
    const char* name;
    std::int32_t mode, order;
    bool matchedZ;
    double low, high;
};
constexpr VoidDesign kVoidDesigns[] = {
    {.name = "band-pass, equal edges, matched",
     .mode = 4,
     .order = 1,
     .matchedZ = true,
     .low = 0.2,
     .high = 0.2},
    {.name = "band-pass, equal edges, bilinear",
     .mode = 4,
     .order = 3,
     .matchedZ = false,
     .low = 0.2,
     .high = 0.2},
    {.name = "band-stop, equal edges, matched",
     .mode = 8,
     .order = 2,
     .matchedZ = true,
     .low = 0.4,
     .high = 0.4},
    {.name = "band-stop, equal edges, bilinear",
     .mode = 8,
     .order = 10,
     .matchedZ = false,
     .low = 0.4,
     .high = 0.4},
    {.name = "low-pass at 0, matched", .mode = 1, .order = 1, .matchedZ = true, .low = 0.0, .high = 0.1},
    {.name = "low-pass at 0, bilinear", .mode = 1, .order = 5, .matchedZ = false, .low = 0.0, .high = 0.1},
    {.name = "low-pass at 0, order 10", .mode = 1, .order = 10, .matchedZ = true, .low = 0.0, .high = 0.1},
    {.name = "band-stop from 0, matched", .mode = 8, .order = 3, .matchedZ = true, .low = 0.0, .high = 0.3},
    {.name = "band-stop from 0, bilinear", .mode = 8, .order = 4, .matchedZ = false, .low = 0.0, .high = 0.3},
};

template <class Designer>
void expectVoid(const VoidDesign& row) {
    Designer designer(row.mode, row.order, row.matchedZ, row.low, row.high);
    for (int n = 0; n < 3; ++n) {
        designer.step(matrix({{1.0, -2.0, 0.0}}));
        EXPECT_TRUE(agree(designer.output(), matrix({{kNaN, kNaN, kNaN}}), same)) << row.name;
    }
    EXPECT_TRUE(std::isnan(designer.getGain())) << row.name;
    for (const double c : designer.getXCoefficients())
        EXPECT_TRUE(std::isnan(c)) << row.name;
    for (const double c : designer.getYCoefficients())
        EXPECT_TRUE(std::isnan(c)) << row.name;
    // The next sound design is sound.
    designer.resetHistory(0, 0);
    Designer fresh(1, 2, false, 0.3, 0.4);
    fresh.step(matrix({{1.0, 2.0, 3.0}}));
    designer.setParameters(1, 2, false, 0.3, 0.4);
    designer.step(matrix({{1.0, 2.0, 3.0}}));
    EXPECT_TRUE(agree(designer.output(), fresh.output(), same)) << row.name;
}

TEST(PoleZeroDesigner, DesignsWithoutSolutionAreNaNUntilTheNext) {
    for (const VoidDesign& row : kVoidDesigns) {
        expectVoid<Bessel>(row);
        expectVoid<Butterworth>(row);
        expectVoid<Chebyshev>(row);
    }
}

TEST(PoleZeroDesigner, OtherModesLeaveTheGainAlone) {
    Butterworth designer(3, 2, false, 0.2, 0.3);
    designer.step(matrix({{1.0}}));
    EXPECT_TRUE(agree(designer.getGain(), 1.0, same));
}

// ---- Memory

TEST(PoleZeroDesigner, StartsWithoutADesign) {
    const Butterworth designer(Design::kLowPass, 2, true, 0.05, 0.1);
    EXPECT_TRUE(agree(designer.getGain(), 1.0, same));
    EXPECT_TRUE(designer.getXCoefficients().empty());
    EXPECT_TRUE(designer.getYCoefficients().empty());
    EXPECT_EQ(designer.xHistory.size(), 2u);
    EXPECT_EQ(designer.yHistory.size(), 2u);
    EXPECT_TRUE(agree(designer.output(), matrix({{0.0}}), same));
    EXPECT_TRUE(designer.needsDesign);
}

TEST(PoleZeroDesigner, ShapeChangeZeroesHistoryAndRedesigns) {
    Butterworth designer(Design::kLowPass, 2, false, 0.1, 0.2);
    for (int n = 0; n < 5; ++n)
        designer.step(matrix({{1.0, 2.0}}));
    designer.gain = 99.0; // only a redesign can mend this
    designer.step(matrix({{1.0}, {2.0}}));
    Butterworth fresh(Design::kLowPass, 2, false, 0.1, 0.2);
    fresh.step(matrix({{1.0}, {2.0}}));
    EXPECT_TRUE(agree(designer.output(), fresh.output(), same));
    EXPECT_TRUE(agree(designer.gain, fresh.gain, same));
}

TEST(PoleZeroDesigner, OneDimensionMakesAnotherShape) {
    const MatrixXd shapes[] = {matrix({{1.0, 2.0}}),
                               matrix({{1.0, 2.0}, {3.0, 4.0}}),
                               matrix({{1.0, 2.0, 3.0}, {4.0, 5.0, 6.0}}),
                               matrix({{1.0, 2.0, 3.0}}),
                               matrix({{1.0}}),
                               matrix({{1.0}, {2.0}})};
    Butterworth designer(Design::kHighPass, 2, false, 0.1, 0.2);
    for (const MatrixXd& sample : shapes) {
        Butterworth fresh(Design::kHighPass, 2, false, 0.1, 0.2);
        for (int n = 0; n < 2; ++n) {
            designer.step(sample);
            fresh.step(sample);
            EXPECT_TRUE(agree(designer.output(), fresh.output(), same));
        }
    }
}

TEST(PoleZeroDesigner, ResetKeepsShapeAndDesign) {
    Butterworth designer(Design::kBandPass, 2, false, 0.1, 0.2);
    Butterworth fresh(Design::kBandPass, 2, false, 0.1, 0.2);
    for (int n = 0; n < 5; ++n)
        designer.step(matrix({{1.0, 2.0}}));
    const auto x = designer.getXCoefficients();
    const auto y = designer.getYCoefficients();
    designer.resetHistory(0, 0);
    EXPECT_FALSE(designer.needsDesign);
    EXPECT_TRUE(agree(designer.output(), matrix({{0.0, 0.0}}), same));
    EXPECT_EQ(designer.getXCoefficients(), x);
    EXPECT_EQ(designer.getYCoefficients(), y);
    designer.step(matrix({{3.0, 4.0}}));
    fresh.step(matrix({{3.0, 4.0}}));
    EXPECT_TRUE(agree(designer.output(), fresh.output(), same));
}

TEST(PoleZeroDesigner, ResetTakesAnotherShapeWithoutADesign) {
    Butterworth designer(Design::kLowPass, 1, false, 0.1, 0.2);
    designer.step(matrix({{1.0}}));
    designer.resetHistory(2, 3);
    EXPECT_TRUE(agree(designer.output(), MatrixXd::Zero(2, 3), same));
    designer.resetHistory(4, 0);
    EXPECT_TRUE(agree(designer.output(), MatrixXd::Zero(2, 3), same))
        << "a value below 1 means the present shape";
    EXPECT_FALSE(designer.needsDesign);
}

TEST(PoleZeroDesigner, ParametersActAtTheNextStep) {
    Butterworth designer(Design::kLowPass, 1, false, 0.1, 0.2);
    designer.step(matrix({{1.0}}));
    const double before = designer.getGain();
    designer.setParameters(Design::kLowPass, 1, false, 0.4, 0.2);
    EXPECT_TRUE(agree(designer.getGain(), before, same));
    designer.step(matrix({{1.0}}));
    EXPECT_LT(designer.getGain(), before);
}

// ---- Laws over a grid of designs

struct Grid {
    std::string name;
    std::int32_t mode, order;
    bool matchedZ;
    double low, high;
};

std::vector<Grid> grid() {
    std::vector<Grid> rows;
    for (const std::int32_t mode : {1, 2, 4, 8})
        for (std::int32_t order = 1; order <= 10; ++order)
            for (const bool matchedZ : {false, true})
                for (const double low : {0.01, 0.05, 0.2, 0.5, 0.8, 0.95})
                    rows.push_back(
                        {.name = "mode " + std::to_string(mode) + ", order " + std::to_string(order) +
                                 (matchedZ ? ", matched-z, " : ", bilinear, ") + std::to_string(low),
                         .mode = mode,
                         .order = order,
                         .matchedZ = matchedZ,
                         .low = low,
                         .high = low + 0.04});
    return rows;
}

template <class Designer>
class PoleZeroLaws : public testing::Test {};
using Families = testing::Types<Bessel, Butterworth, Chebyshev>;
TYPED_TEST_SUITE(PoleZeroLaws, Families);

TYPED_TEST(PoleZeroLaws, PolesLieInsideTheUnitCircle) {
    for (const Grid& row : grid()) {
        if (row.mode != Design::kLowPass && row.mode != Design::kHighPass) continue;
        TypeParam designer(row.mode, row.order, row.matchedZ, row.low, row.high);
        designer.step(matrix({{1.0}}));
        ASSERT_EQ(designer.numZPoles, row.order) << row.name;
        for (std::int32_t i = 0; i < designer.numZPoles; ++i)
            EXPECT_LT(magnitude(designer.zPoles[static_cast<std::size_t>(i)]), 1.0)
                << row.name << ", pole " << i;
    }
}

TYPED_TEST(PoleZeroLaws, RootsMapBackToThePrototype) {
    const auto exact = [](Complex z) { return std::complex<double>(z.re, z.im); };
    for (const Grid& row : grid()) {
        TypeParam prototype(row.mode, row.order, row.matchedZ, row.low, row.high);
        prototype.computePoles();
        TypeParam designer(row.mode, row.order, row.matchedZ, row.low, row.high);
        designer.step(matrix({{1.0}}));
        const auto edge = [&](double f) {
            return row.matchedZ ? f * Design::kPi : 2.0 * std::tan(f * Design::kPi / 2.0);
        };
        const double w1 = edge(row.low);
        const double w2 = edge(row.high);
        const auto toPrototype = [&](std::complex<double> s) {
            if (row.mode == Design::kLowPass) return s / w1;
            if (row.mode == Design::kHighPass) return w1 / s;
            const std::complex<double> q = (s * s + w1 * w2) / (s * (w2 - w1));
            return row.mode == Design::kBandPass ? q : 1.0 / q;
        };
        std::vector<int> hits(static_cast<std::size_t>(row.order));
        for (std::size_t i = 0; i < static_cast<std::size_t>(designer.numZPoles); ++i) {
            const std::complex<double> s = exact(designer.sPoles[i]);
            const std::complex<double> z = row.matchedZ ? std::exp(s) : (2.0 + s) / (2.0 - s);
            EXPECT_LT(std::abs(exact(designer.zPoles[i]) - z), 1e-14) << row.name; // a few ulp of 1
            // The way back through a narrow band is a difference, which costs up to three of the sixteen
            // digits.
            for (std::size_t k = 0; k < hits.size(); ++k)
                if (std::abs(toPrototype(s) - exact(prototype.sPoles[k])) < 1e-12) ++hits[k];
        }
        const bool isBand = row.mode == Design::kBandPass || row.mode == Design::kBandStop;
        EXPECT_EQ(hits, std::vector<int>(hits.size(), isBand ? 2 : 1)) << row.name;
    }
}

TYPED_TEST(PoleZeroLaws, MatchedZerosStandWhereTheBandShapePutsThem) {
    for (const Grid& row : grid()) {
        if (!row.matchedZ) continue;
        TypeParam designer(row.mode, row.order, true, row.low, row.high);
        designer.step(matrix({{1.0}}));
        const bool isStop = row.mode == Design::kBandStop;
        const std::int32_t count = row.mode == Design::kLowPass ? 0 : isStop ? 2 * row.order : row.order;
        ASSERT_EQ(designer.numZZeros, count) << row.name;
        // At z = 1, but for a band-stop: on the circle at the geometric mean of its edges.
        const double angle = isStop ? std::sqrt(row.low * row.high) * Design::kPi : 0.0;
        for (std::int32_t i = 0; i < count; ++i) {
            const Complex zero = designer.zZeros[static_cast<std::size_t>(i)];
            EXPECT_TRUE(agree(zero.re, std::cos(angle), withinRel(1e-15))) << row.name;
            EXPECT_TRUE(agree(std::fabs(zero.im), std::sin(angle), withinRel(1e-15))) << row.name;
        }
    }
}

TYPED_TEST(PoleZeroLaws, RootsComeInConjugatePairs) {
    for (const Grid& row : grid()) {
        TypeParam designer(row.mode, row.order, row.matchedZ, row.low, row.high);
        designer.step(matrix({{1.0}}));
        const auto paired = [&](const auto& roots, std::int32_t count) {
            for (std::int32_t i = 0; i < count; ++i) {
                const Complex wanted = conjugate(roots[static_cast<std::size_t>(i)]);
                double nearest = 1.0;
                for (std::int32_t k = 0; k < count; ++k)
                    nearest = std::min(nearest, magnitude(roots[static_cast<std::size_t>(k)] - wanted));
                // Every stage treats a pair alike but for rounding; the square root of a band can lose half
                // the digits where its radicand vanishes, and no design of the grid comes near that.
                EXPECT_LT(nearest, 1e-12) << row.name << ", root " << i;
            }
        };
        paired(designer.zPoles, designer.numZPoles);
        paired(designer.zZeros, designer.numZZeros);
    }
}

/// A polynomial with real coefficients at a point of the unit circle.
Complex valueAt(const std::vector<double>& coefficients, Complex z) {
    std::vector<Complex> terms;
    for (const double c : coefficients)
        terms.push_back({c, 0.0});
    return Design::evaluatePolynomial(terms, static_cast<int>(terms.size()) - 1, z);
}

TYPED_TEST(PoleZeroLaws, GainIsThatOfThePublishedCoefficients) {
    std::vector<Grid> rows = grid();
    for (const double low :
         {1e-6, 0.001, 0.3, 0.999}) // where nothing of the textbook's design is left, and elsewhere
        for (const std::int32_t order : {1, 2, 4, 7, 10})
            for (const std::int32_t mode : {1, 2, 4, 8})
                for (const bool matchedZ : {false, true})
                    rows.push_back({.name = "mode " + std::to_string(mode) + ", order " +
                                            std::to_string(order) + ", edges " + std::to_string(low) +
                                            " and 1",
                                    .mode = mode,
                                    .order = order,
                                    .matchedZ = matchedZ,
                                    .low = low,
                                    .high = 1.0});
    int numbers = 0;
    for (const Grid& row : rows) {
        TypeParam designer(row.mode, row.order, row.matchedZ, row.low, row.high);
        designer.step(matrix({{1.0}}));
        const double angle = (row.low + row.high) * Design::kTwoPi * 0.25;
        std::vector<Complex> points{{1.0, 0.0}};
        if (row.mode == Design::kHighPass) points = {{-1.0, 0.0}};
        if (row.mode == Design::kBandPass) points = {{std::cos(angle), std::sin(angle)}};
        if (row.mode == Design::kBandStop) points = {{1.0, 0.0}, {-1.0, 0.0}};
        double ratio = 1.0;
        for (const Complex z : points)
            ratio *= magnitude(valueAt(designer.getXCoefficients(), z)) /
                     magnitude(valueAt(designer.getYCoefficients(), z));
        if (points.size() == 2) ratio = std::sqrt(ratio);
        // Horner's rule gives the same bits here and there. Behind it come a quotient of complex numbers with
        // three roundings a part, a magnitude, and for a band-stop twice that, a product and a root.
        EXPECT_TRUE(agree(designer.getGain(), ratio, withinRel(8.0 * kEps, 0.0))) << row.name;
        if (std::isfinite(ratio)) ++numbers;
    }
    EXPECT_GT(numbers, static_cast<int>(rows.size() * 9 / 10));
}

TYPED_TEST(PoleZeroLaws, ADesignLeavesNothingToTheNext) {
    std::vector<Grid> rows = grid();
    std::mt19937_64 random(31);
    std::shuffle(rows.begin(), rows.end(), random);
    TypeParam reused(1, 1, true, 0.05, 0.1);
    for (const Grid& row : rows) {
        TypeParam fresh(row.mode, row.order, row.matchedZ, row.low, row.high);
        fresh.step(matrix({{1.0, -2.0}}));
        reused.setParameters(row.mode, row.order, row.matchedZ, row.low, row.high);
        reused.step(matrix({{1.0, -2.0}}));
        ASSERT_TRUE(agree(reused.getGain(), fresh.getGain(), same)) << row.name;
        ASSERT_EQ(reused.getXCoefficients(), fresh.getXCoefficients()) << row.name;
        ASSERT_EQ(reused.getYCoefficients(), fresh.getYCoefficients()) << row.name;
        ASSERT_TRUE(agree(reused.output(), fresh.output(), same)) << row.name;
    }
}

/// What the recursion does to a constant 1: where it comes to rest, and how well a double's sums can tell.
struct Rest {
    explicit Rest(const std::vector<double>& x, const std::vector<double>& y, double gain) {
        long double forward = 0.0L; // eleven more bits, so that these sums stand for exact ones
        long double backward = 1.0L;
        long double size = 1.0L;
        for (const double c : x)
            forward += c;
        for (std::size_t j = 0; j + 1 < y.size(); ++j) {
            backward -= y[j];
            size += std::fabs(static_cast<long double>(y[j]));
        }
        value = static_cast<double>(forward / gain / backward);
        // Horner's rule at 1 rounds once a coefficient, each time by half an ulp of at most `size`. All zeros
        // of a low-pass are at -1, so its forward sum has no cancelling.
        bound = static_cast<double>(static_cast<long double>(y.size()) * kEps * size / std::fabs(backward));
    }
    double value;
    double bound;
};

TYPED_TEST(PoleZeroLaws, AConstantPassesALowPassUnchanged) {
    int told = 0;
    for (const Grid& row : grid()) {
        if (row.mode != Design::kLowPass) continue;
        TypeParam designer(row.mode, row.order, row.matchedZ, row.low, row.high);
        designer.step(matrix({{2.0}}));
        const Rest rest(designer.xCoeffs, designer.yCoeffs, designer.gain);
        if (!(rest.bound < 0.5)) continue; // the coefficients have no digit left to tell a steady state
        EXPECT_TRUE(agree(rest.value, 1.0, law(rest.bound))) << row.name;
        ++told;
    }
    EXPECT_GT(told, 110); // of 120
}

TEST(PoleZeroDesigner, AConstantPassesALowPassOfOrderEightAtAHundredth) {
    // Its denominator, of coefficients up to 70, is 1e-12 at z = 1. A gain from the roots would let it rest
    // at 0.982.
    Butterworth designer(Design::kLowPass, 8, true, 0.01, 0.1);
    designer.step(matrix({{1.0}}));
    const Rest rest(designer.xCoeffs, designer.yCoeffs, designer.gain);
    EXPECT_TRUE(agree(rest.value, 1.0, law(0.005))) << "some ulps of 35, the largest partial sum, over 1e-12";
}

TYPED_TEST(PoleZeroLaws, AConstantSettlesAsTheDesignSays) {
    for (const Grid& row : grid()) {
        if (row.mode != Design::kLowPass) continue;
        TypeParam designer(row.mode, row.order, row.matchedZ, row.low, row.high);
        designer.step(matrix({{2.0}}));
        double feedback = 0.0;
        double size = 1.0;
        for (std::size_t j = 0; j + 1 < designer.yCoeffs.size(); ++j) {
            feedback += designer.yCoeffs[j];
            size += std::fabs(designer.yCoeffs[j]);
        }
        // y settles with the factor `feedback` a step, and its rounding is magnified by 1 / (1 - feedback).
        const double bound = 64.0 * kEps * size / (1.0 - feedback);
        if (!(bound < 1e-3) || std::fabs(feedback) > 0.999) continue;
        for (int n = 0; n < 40000; ++n)
            designer.step(matrix({{2.0}}));
        EXPECT_TRUE(agree(designer.output()(0), 2.0, law(2.0 * bound))) << row.name;
    }
}

// ---- Long traces

TYPED_TEST(PoleZeroLaws, RunsTheLiteralDirectFormBitForBit) {
    for (const Grid& row : grid()) {
        if (row.low != 0.2) continue;
        for (const Kit::Shape shape : Kit::kShapes) {
            TypeParam designer(row.mode, row.order, row.matchedZ, row.low, row.high);
            Kit::LiteralDirectForm literal;
            for (const MatrixXd& sample : Kit::randomTrace(7, 60, shape.rows, shape.cols)) {
                designer.step(sample);
                if (literal.xHistory.empty())
                    literal = {.xCoeffs = designer.xCoeffs,
                               .yCoeffs = designer.yCoeffs,
                               .xHistory = std::vector<MatrixXd>(designer.xHistory.size(), sample * 0.0),
                               .yHistory = std::vector<MatrixXd>(designer.yHistory.size(), sample * 0.0)};
                ASSERT_TRUE(agree(designer.output(), literal.step(sample / designer.gain), same)) << row.name;
            }
        }
    }
}

TYPED_TEST(PoleZeroLaws, IsAFirstOrderRecursionWhateverTheOrder) {
    for (const Grid& row : grid()) {
        if (row.low != 0.2) continue;
        TypeParam designer(row.mode, row.order, row.matchedZ, row.low, row.high);
        MatrixXd u1 = MatrixXd::Zero(3, 5);
        MatrixXd y1 = MatrixXd::Zero(3, 5);
        for (const MatrixXd& sample : Kit::randomTrace(11, 2000, 3, 5)) {
            designer.step(sample);
            const auto& x = designer.xCoeffs;
            const auto& y = designer.yCoeffs;
            double formerX = 0.0, formerY = 0.0, size = std::fabs(x.back());
            for (std::size_t i = 0; i + 1 < x.size(); ++i) {
                formerX += x[i];
                size += std::fabs(x[i]);
            }
            for (std::size_t j = 0; j + 1 < y.size(); ++j) {
                formerY += y[j];
                size += std::fabs(y[j]);
            }
            const MatrixXd u = sample / designer.gain;
            const MatrixXd wanted = x.back() * u + formerX * u1 + formerY * y1;
            // A sum of n terms rounds at most n times, each time by half an ulp of at most the sum of their
            // sizes.
            const double largest =
                std::max({u.cwiseAbs().maxCoeff(), u1.cwiseAbs().maxCoeff(), y1.cwiseAbs().maxCoeff()});
            const double bound = static_cast<double>(x.size() + y.size()) * kEps * size * largest;
            ASSERT_TRUE(agree(designer.output(), wanted, law(bound))) << row.name;
            u1 = u;
            y1 = designer.output();
            if (!(y1.cwiseAbs().maxCoeff() < 1e280)) break; // some of these grow without bound, as they must
        }
    }
}

TEST(PoleZeroDesigner, AHighPassNearNyquistDiverges) {
    Butterworth designer(Design::kHighPass, 2, false, 0.95, 0.1);
    double largest = 0.0;
    for (const MatrixXd& sample : Kit::randomTrace(3, 200, 1, 1)) {
        designer.step(sample);
        largest = std::max(largest, std::fabs(designer.output()(0)));
    }
    EXPECT_GT(largest, 1e20);
}

} // namespace
