// SPDX-License-Identifier: MIT
#include "design/EllipticFunctions.h"

#include "design/Constants.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>

// Figures of the middle range: mpmath 1.2.1 with 40 digits (ellipk(m), ellipf(phi, m), ellipfun(name, u, m),
// the amplitude as the root of ellipf(phi, m) = u, and (jtheta(2, 0, q) / jtheta(3, 0, q))^2). Where
// Abramowitz and Stegun, Handbook of Mathematical Functions, print them too (tables 17.1 and 17.5), they
// agree.
namespace {
using Design::cay;
using Design::ellik;
using Design::ellpj;
using Design::ellpk;
using Design::JacobiElliptic;
using Support::agree;
using Support::agrees;
using Support::kInf;
using Support::kNaN;
using Support::same;
using Support::withinRel;
using Support::withinUlp;

constexpr double kLargest = 1.7976931348623157e308;

TEST(EllipticFunctions, CompleteIntegral) {
    struct Row {
        double m, wanted;
    };
    const Row rows[] = {{0.1, 1.6124413487202194},  {0.25, 1.685750354812596}, {0.5, 1.8540746773013719},
                        {0.75, 2.1565156474996434}, {0.9, 2.5780921133481733}, {0.99, 3.6956373629898747}};
    for (const Row& row : rows)
        EXPECT_TRUE(agree(ellpk(1.0 - row.m), row.wanted, withinRel(1e-14))) << row.m;
}

TEST(EllipticFunctions, CompleteIntegralAtItsEnds) {
    EXPECT_TRUE(agree(ellpk(1.0), Design::kPi / 2.0, withinUlp(2)));
    EXPECT_TRUE(agree(ellpk(0.0), kLargest, same));
    EXPECT_TRUE(agree(ellpk(1e-17), 1.3862943611198906 - 0.5 * std::log(1e-17), same));
    EXPECT_TRUE(agree(ellpk(Design::kMachineEpsilon),
                      1.3862943611198906 - 0.5 * std::log(Design::kMachineEpsilon), same));
    EXPECT_TRUE(agree(ellpk(-1.0), kNaN, same));
    EXPECT_TRUE(agree(ellpk(kNaN), kNaN, same));
}

TEST(EllipticFunctions, IncompleteIntegral) {
    struct Row {
        double phi, m, wanted;
    };
    const Row rows[] = {
        {0.1, 0.1, 0.10001664083386336},  {0.1, 0.5, 0.10008335399012895},  {0.1, 0.9, 0.1001503081485352},
        {0.5, 0.1, 0.5020027085750493},   {0.5, 0.5, 0.5104671356280047},   {0.5, 0.9, 0.5197639424378286},
        {1.0, 0.1, 1.014120373414132},    {1.0, 0.5, 1.0832167728451687},   {1.0, 0.9, 1.1885008994681587},
        {1.5, 0.1, 1.5378223857202327},   {1.5, 0.5, 1.7540369168667462},   {1.5, 0.9, 2.355862738359449},
        {1.55, 0.1, 1.5905202710566915},  {1.55, 0.5, 1.8246663492451154},  {1.55, 0.9, 2.512370938458911},
        {-0.7, 0.1, -0.7052842331482115}, {-0.7, 0.5, -0.7287703057181902}, {-0.7, 0.9, -0.7572025472958656},
        {2.0, 0.1, 2.0633871046555474},   {2.0, 0.5, 2.444382636061119},    {2.0, 0.9, 3.711443226464717},
        {4.0, 0.1, 4.092638103228625},    {4.0, 0.5, 4.619520616257107},    {4.0, 0.9, 6.126351578834841},
        {-5.0, 0.1, -5.14003772996867},   {-5.0, 0.5, -5.963643375085342},  {-5.0, 0.9, -8.558511085027693}};
    for (const Row& row : rows)
        EXPECT_TRUE(agree(ellik(row.phi, row.m), row.wanted, withinRel(1e-13))) << row.phi << ", " << row.m;
}

TEST(EllipticFunctions, IncompleteIntegralAtItsEnds) {
    EXPECT_TRUE(agree(ellik(0.7, 0.0), 0.7, same));
    EXPECT_TRUE(agree(ellik(2.0, 1.0), kLargest, same));
    EXPECT_TRUE(agree(ellik(Design::kPi / 2.0, 1.0), kLargest, same));
    EXPECT_TRUE(agree(ellik(0.7, 1.0), std::asinh(std::tan(0.7)), withinRel(1e-14)));
    EXPECT_TRUE(agree(ellik(kNaN, 0.5), kNaN, same));
    EXPECT_TRUE(agree(ellik(kInf, 0.5), kNaN, same));
    EXPECT_TRUE(agree(ellik(0.7, 2.0), kNaN, same)) << "beyond 1 the integral is not told, but it ends";
}

TEST(EllipticFunctions, JacobiInTheMiddleRange) {
    struct Row {
        double u, m, sn, cn, dn, phi;
    };
    const Row rows[] = {
        {0.2, 0.1, 0.19853971999569364, 0.9800928423287416, 0.9980271529163939, 0.1998677548388718},
        {0.2, 0.5, 0.19802174298197045, 0.9801976276784098, 0.9901483195224801, 0.1993392851966496},
        {0.2, 0.9, 0.1975045116042086, 0.9803019779108798, 0.9822895556333604, 0.1988116325878077},
        {0.8, 0.1, 0.7121154225515612, 0.702062408169111, 0.9743147142973985, 0.7925067779077192},
        {0.8, 0.5, 0.6909348508664388, 0.7229170297192977, 0.8725276591198047, 0.7627814197609587},
        {0.8, 0.9, 0.6694491392258985, 0.7428578935366464, 0.7724338580038638, 0.7334669968461326},
        {1.3, 0.1, 0.9562532893277638, 0.2925399915393313, 0.9531830698585573, 1.2739143730839864},
        {1.3, 0.5, 0.9204464742100178, 0.3908686328094735, 0.7592029663121539, 1.1692212148542587},
        {1.3, 0.9, 0.8746262090428204, 0.4847978903165573, 0.5581452275258172, 1.0646642551296204},
        {-0.6, 0.1, -0.5618783795958875, 0.8272198538131805, 0.9840880390769263, -0.5966547673904923},
        {-0.6, 0.5, -0.5508311286965344, 0.8346167190147235, 0.9210279766811923, -0.5833597318191696},
        {-0.6, 0.9, -0.5398029474795342, 0.8417914099659174, 0.8589246184055773, -0.5702030047133164},
        {2.5, 0.1, 0.6587664560557387, -0.7523474970887871, 0.9780606707344777, 2.4224146654302667},
        {2.5, 0.5, 0.8906151882260943, -0.45475772286020444, 0.7767897355465629, 2.042896488554936},
        {2.5, 0.9, 0.9996945384505861, 0.02471497101089863, 0.3170958006862636, 1.5460788389853684}};
    for (const Row& row : rows) {
        const JacobiElliptic got = ellpj(row.u, row.m);
        EXPECT_EQ(got.code, 0);
        EXPECT_TRUE(agree(got.sn, row.sn, withinRel(1e-13))) << row.u << ", " << row.m;
        EXPECT_TRUE(agree(got.cn, row.cn, withinRel(1e-13))) << row.u << ", " << row.m;
        EXPECT_TRUE(agree(got.dn, row.dn, withinRel(1e-13))) << row.u << ", " << row.m;
        EXPECT_TRUE(agree(got.phi, row.phi, withinRel(1e-13))) << row.u << ", " << row.m;
    }
}

TEST(EllipticFunctions, JacobiNextToZeroIsAlmostCircular) {
    const double m = 5e-10;
    const JacobiElliptic got = ellpj(0.8, m);
    // First order in m; the next term is of the order of m^2, far below the last bit.
    const double a = 0.25 * m * (0.8 - std::sin(0.8) * std::cos(0.8));
    EXPECT_TRUE(agree(got.sn, std::sin(0.8) - a * std::cos(0.8), withinRel(1e-15)));
    EXPECT_TRUE(agree(got.cn, std::cos(0.8) + a * std::sin(0.8), withinRel(1e-15)));
    EXPECT_TRUE(agree(got.dn, std::sqrt(1.0 - m * got.sn * got.sn), withinRel(1e-15)));
    EXPECT_TRUE(agree(got.phi, 0.8 - a, withinRel(1e-15)));
    EXPECT_TRUE(agree(ellpj(0.8, 0.0).sn, std::sin(0.8), same));
}

TEST(EllipticFunctions, JacobiNextToOneHasTheInverseHyperbolicSine) {
    const double u = 1.5;
    const double m = 1.0 - 0x1p-34; // the largest distance from 1 in which the series is used is 1e-10
    const double a = 0.25 * (1.0 - m);
    const double twon = std::cosh(u) * std::asinh(u);
    const JacobiElliptic got = ellpj(u, m);
    // 1 - m is 6e-11: what the changed term does to the results lies at 1e-11, so the comparison must be
    // finer.
    EXPECT_TRUE(
        agree(got.sn, std::tanh(u) + a * (twon - u) / (std::cosh(u) * std::cosh(u)), withinRel(1e-15)));
    EXPECT_TRUE(
        agree(got.cn, 1.0 / std::cosh(u) - a * std::tanh(u) / std::cosh(u) * (twon - u), withinRel(1e-15)));
    EXPECT_TRUE(
        agree(got.dn, 1.0 / std::cosh(u) + a * std::tanh(u) / std::cosh(u) * (twon + u), withinRel(1e-15)));
    EXPECT_TRUE(agree(got.phi,
                      2.0 * std::atan(std::exp(u)) - Design::kPi / 2.0 + a * (twon - u) / std::cosh(u),
                      withinRel(1e-15)));
    const double published =
        std::tanh(u) + a * (std::cosh(u) * std::sinh(u) - u) / (std::cosh(u) * std::cosh(u));
    EXPECT_GT(std::fabs(got.sn - published), 1e-12) << "the published series would differ";
    EXPECT_TRUE(agree(ellpj(u, 1.0).sn, std::tanh(u), same));
}

TEST(EllipticFunctions, JacobiTakesTheSeriesFromItsBoundOn) {
    const double u = 1.5;
    const auto series = [u](double m) { // of sn
        const double a = 0.25 * (1.0 - m);
        return std::tanh(u) + a * (std::cosh(u) * std::asinh(u) - u) / (std::cosh(u) * std::cosh(u));
    };
    // The bound itself belongs to the series; the number below it doesn't, and differs from it by some 1e-11.
    const double bound = 0.9999999999;
    const double below = std::nextafter(bound, 0.0);
    EXPECT_TRUE(agree(ellpj(u, bound).sn, series(bound), withinRel(1e-15)));
    EXPECT_FALSE(agrees(ellpj(u, below).sn, series(below), withinRel(1e-13)));
}

TEST(EllipticFunctions, JacobiRefusesOtherParameters) {
    for (const double m : {-1e-300, 1.0000000000000002, kInf, -kInf}) {
        const JacobiElliptic got = ellpj(0.7, m);
        EXPECT_EQ(got.code, -1);
        for (const double value : {got.sn, got.cn, got.dn, got.phi})
            EXPECT_TRUE(agree(value, 0.0, same));
    }
}

TEST(EllipticFunctions, JacobiOfNaNIsNaN) {
    for (const JacobiElliptic& got : {ellpj(0.7, kNaN), ellpj(kNaN, 0.5), ellpj(kNaN, 1.0)}) {
        EXPECT_EQ(got.code, 0);
        for (const double value : {got.sn, got.cn, got.dn, got.phi})
            EXPECT_TRUE(agree(value, kNaN, same));
    }
}

TEST(EllipticFunctions, ModulusFromNome) {
    struct Row {
        double q, wanted;
    };
    const Row rows[] = {{0.01, 0.3845443947629648},
                        {0.1, 0.8957696680606998},
                        {0.3, 0.9977997636604402},
                        {0.5, 0.9999947610549319}};
    for (const Row& row : rows)
        EXPECT_TRUE(agree(cay(row.q), row.wanted, withinRel(1e-14))) << row.q;
    // The nome of a modulus is exp(-pi K'/K).
    for (const double k : {0.1, 0.5, 0.9, 0.999})
        EXPECT_TRUE(
            agree(cay(std::exp(-Design::kPi * ellpk(k * k) / ellpk(1.0 - k * k))), k, withinRel(1e-13)))
            << k;
}

TEST(EllipticFunctions, ModulusEndsForEveryNome) {
    EXPECT_TRUE(agree(cay(0.0), 0.0, same));
    EXPECT_TRUE(agree(cay(1.0), 1.0, same));
    EXPECT_TRUE(agree(cay(kNaN), kNaN, same));
    const auto start = std::chrono::steady_clock::now();
    for (const double q : {std::nextafter(1.0, 0.0), 1.0 - 1e-12, 1.0 - 1e-6, 0.999})
        EXPECT_TRUE(agree(cay(q), 1.0, withinRel(1e-12))) << q;
    for (const double q : {std::nextafter(1.0, 2.0), 2.0, -1.0, kInf, -kInf})
        cay(q);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(50));
}

TEST(EllipticFunctions, ArcsineIsGuarded) {
    EXPECT_TRUE(agree(Design::guardedArcsine(1.0000001), Design::kPi / 2.0, same));
    EXPECT_TRUE(agree(Design::guardedArcsine(1.0), Design::kPi / 2.0, same));
    EXPECT_TRUE(agree(Design::guardedArcsine(-1.0), -Design::kPi / 2.0, same));
    EXPECT_TRUE(agree(Design::guardedArcsine(-kInf), -Design::kPi / 2.0, same));
    EXPECT_TRUE(agree(Design::guardedArcsine(0.5), std::asin(0.5), same));
    EXPECT_TRUE(agree(Design::guardedArcsine(kNaN), kNaN, same));
}

} // namespace
