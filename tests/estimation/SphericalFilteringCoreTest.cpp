// SPDX-License-Identifier: MIT
#include "estimation/SphericalFilteringCore.h"

#include "tests/estimation/LiteralSpherical.h"
#include "tests/support/Numbers.h"

#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <string>
#include <vector>

namespace {
using namespace Support;
using Quillmere::Core::MatrixXd;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kOwnPeriod = -1.0; // a time that stands for the sample period
constexpr double kSameLambda = -1.0;

const MatrixXd kRest = matrix({{0, 0, 0}});
const MatrixXd kDown = matrix({{0, 0, 1}});
const MatrixXd kNorth = matrix({{0.5, 0, 0.866}});
const MatrixXd kIdentity = matrix({{1, 0, 0}, {0, 1, 0}, {0, 0, 1}});

/// A core that is fed a step at a time, with the outputs of the last step.
struct Trial {
    SphericalFilteringCore core;
    std::array<MatrixXd, 6> out;

    const MatrixXd& aFiltered() const { return out[0]; }
    const MatrixXd& mFiltered() const { return out[1]; }
    const MatrixXd& aTerre() const { return out[2]; }
    const MatrixXd& mTerre() const { return out[3]; }
    const MatrixXd& aTerreFiltered() const { return out[4]; }
    const MatrixXd& mTerreFiltered() const { return out[5]; }

    struct Step {
        MatrixXd gyroscope = kRest;
        const MatrixXd* accelerometer = nullptr;
        const MatrixXd* magnetometer = nullptr;
        double deltaTime = kOwnPeriod;
        double lambda = kSameLambda;
        bool magPerturbed = false;
        const MatrixXd* imposed = nullptr;
    };
    void step(const Step& s) {
        core.update(s.gyroscope, s.accelerometer, s.magnetometer, out[0], out[1], out[2], out[3], out[4],
                    out[5], s.deltaTime, s.lambda, s.magPerturbed, s.imposed);
    }
};

/// The rotation by `angle` about the unit vector `u`, from its closed form.
MatrixXd rotationAbout(const std::array<double, 3>& u, double angle) {
    const double s = std::sin(angle);
    const double c = std::cos(angle);
    const double v = 1.0 - c;
    return matrix({{c + u[0] * u[0] * v, u[0] * u[1] * v - u[2] * s, u[0] * u[2] * v + u[1] * s},
                   {u[1] * u[0] * v + u[2] * s, c + u[1] * u[1] * v, u[1] * u[2] * v - u[0] * s},
                   {u[2] * u[0] * v - u[1] * s, u[2] * u[1] * v + u[0] * s, c + u[2] * u[2] * v}});
}

MatrixXd toSensor(const MatrixXd& terre, const MatrixXd& r) {
    return terre * r;
}

TEST(SphericalFilteringCore, nothingIsKnownBeforeTheFirstStep) {
    const SphericalFilteringCore core;
    EXPECT_TRUE(agree(core.getRotationMatrix(), kIdentity, same));
    EXPECT_TRUE(agree(core.getCutoffs(), matrix({}), same));
    EXPECT_TRUE(agree(core.getTemp(), matrix({}), same));
}

TEST(SphericalFilteringCore, firstStepWithoutVectorsTakesTheOnesOfRest) {
    Trial run;
    run.step({});
    for (const MatrixXd* const a : {&run.aFiltered(), &run.aTerre(), &run.aTerreFiltered()})
        EXPECT_TRUE(agree(*a, kDown, same));
    for (const MatrixXd* const m : {&run.mFiltered(), &run.mTerre(), &run.mTerreFiltered()})
        EXPECT_TRUE(agree(*m, kNorth, same));
    EXPECT_TRUE(agree(run.core.getRotationMatrix(), kIdentity, same));
    EXPECT_TRUE(agree(run.core.getCutoffs(), matrix({{0.0001, 0.0001}}), same));
    EXPECT_TRUE(agree(run.core.getTemp(), matrix({}), same));
}

// Held in both steps: what is filtered in the Earth frame stays, what is not follows the last vector.
TEST(SphericalFilteringCore, vectorsOfRestAreHeld) {
    Trial run;
    run.step({});
    run.step({.gyroscope = matrix({{0, 10, 0}}), .deltaTime = 0.05});
    EXPECT_TRUE(agree(run.aTerreFiltered(), kDown, same));
    EXPECT_TRUE(agree(run.mTerreFiltered(), kNorth, same));
    const MatrixXd r = run.core.getRotationMatrix();
    EXPECT_TRUE(agree(run.aFiltered(), toSensor(kDown, r), withinRel(1e-15)));
    EXPECT_TRUE(agree(run.aTerre(), MatrixXd(kDown * r.transpose()), withinRel(1e-15)));
    EXPECT_GT(std::fabs(run.aFiltered()(0) - kDown(0)), 0.1);
}

TEST(SphericalFilteringCore, rotationOfAQuarterTurnIsReadOffItsFormula) {
    Trial run;
    const double angle = 2.0 * std::atan(1.0);
    run.step({.gyroscope = matrix({{0, 0, angle}}), .accelerometer = &kDown, .deltaTime = 1.0});
    EXPECT_TRUE(agree(run.core.getRotationMatrix(), matrix({{0, -1, 0}, {1, 0, 0}, {0, 0, 1}}), law(4e-16)));
    const MatrixXd x = matrix({{1, 0, 0}});
    run.step({.gyroscope = kRest, .accelerometer = &x, .deltaTime = 1.0});
    // the sensor's x now points along the Earth's y
    EXPECT_TRUE(agree(run.aTerre(), matrix({{0, 1, 0}}), law(4e-16)));
}

TEST(SphericalFilteringCore, columnsAreTakenAsRows) {
    Trial rows;
    Trial columns;
    const MatrixXd a = matrix({{0.1, 0.2, 0.9}});
    const MatrixXd m = matrix({{0.3, -0.2, 0.8}});
    const MatrixXd g = matrix({{1, -2, 0.5}});
    const MatrixXd aColumn = a.transpose();
    const MatrixXd mColumn = m.transpose();
    for (int i = 0; i < 3; ++i) {
        rows.step({.gyroscope = g, .accelerometer = &a, .magnetometer = &m});
        columns.step({.gyroscope = g.transpose(), .accelerometer = &aColumn, .magnetometer = &mColumn});
    }
    for (std::size_t i = 0; i < 6; ++i)
        EXPECT_TRUE(agree(columns.out[i], rows.out[i], same)) << "output " << i;
}

struct Rounding {
    std::string name;
    double gain;
    double wanted;
};

// At rest the first cut-off is the filter gain times 0.1, rounded.
TEST(SphericalFilteringCore, firstCutoffsAreRoundedToOneDigit) {
    const std::vector<Rounding> rows{
        {.name = "the default", .gain = 0.001, .wanted = 0.0001},
        {.name = "down", .gain = 0.0149, .wanted = 1 * std::pow(10.0, -3)},
        {.name = "up", .gain = 0.0151, .wanted = 2 * std::pow(10.0, -3)},
        {.name = "up to the next power", .gain = 0.097, .wanted = 10 * std::pow(10.0, -3)},
        {.name = "above one", .gain = 34.0, .wanted = 3.0},
        {.name = "above ten", .gain = 560.0, .wanted = 60.0},
        {.name = "zero", .gain = 0.0, .wanted = 0.0},
        {.name = "negative zero", .gain = -0.0, .wanted = -0.0},
        {.name = "infinity", .gain = kInf, .wanted = kInf},
        {.name = "not a number", .gain = kNan, .wanted = kNan},
        {.name = "smaller than any power of ten", .gain = 5e-320, .wanted = 5e-320 * 0.1},
    };
    for (const Rounding& row : rows) {
        Trial run;
        run.core.setFilterGain(row.gain);
        run.step({});
        EXPECT_TRUE(agree(run.core.getCutoffs(), matrix({{row.wanted, row.wanted}}), same)) << row.name;
    }
}

struct Energy {
    std::string name;
    MatrixXd gyroscope;
    double wanted; ///< cut-off with a filter gain of 0.1
};

TEST(SphericalFilteringCore, rotationRaisesTheCutoff) {
    const std::vector<Energy> rows{
        {.name = "rest", .gyroscope = matrix({{0, 0, 0}}), .wanted = 1 * std::pow(10.0, -2)},
        {.name = "just enough", .gyroscope = matrix({{0.3, 0.2, 0.1}}), .wanted = 1 * std::pow(10.0, -2)},
        {.name = "squared norm 0.9 less 0.05",
         .gyroscope = matrix({{0.5, 0.8, 0.1}}),
         .wanted = 9 * std::pow(10.0, -2)},
        {.name = "squared norm 3 less 0.05",
         .gyroscope = matrix({{1, -1, 1}}),
         .wanted = 3 * std::pow(10.0, -1)},
        {.name = "no more than 5", .gyroscope = matrix({{10, 10, 10}}), .wanted = 5 * std::pow(10.0, -1)},
        {.name = "infinite", .gyroscope = matrix({{kInf, 0, 0}}), .wanted = 5 * std::pow(10.0, -1)},
        {.name = "not a number", .gyroscope = matrix({{kNan, 0, 0}}), .wanted = kNan},
    };
    for (const Energy& row : rows) {
        Trial run;
        run.core.setFilterGain(0.1);
        run.step({.gyroscope = row.gyroscope});
        EXPECT_TRUE(agree(run.core.getCutoffs(), matrix({{row.wanted, row.wanted}}), same)) << row.name;
    }
}

TEST(SphericalFilteringCore, lambdaWeighsTheNewCutoffAgainstTheOld) {
    const MatrixXd imposed = matrix({{0.2, 0.4}});
    Trial run;
    run.core.setFilterGain(1.0); // a cut-off of 0.1 at rest
    run.step({.imposed = &imposed});
    run.step({.lambda = 0.0}); // nothing of the new one
    EXPECT_TRUE(
        agree(run.core.getCutoffs(), matrix({{2 * std::pow(10.0, -1), 4 * std::pow(10.0, -1)}}), same));
    run.step({}); // and so it stays
    EXPECT_TRUE(
        agree(run.core.getCutoffs(), matrix({{2 * std::pow(10.0, -1), 4 * std::pow(10.0, -1)}}), same));
    run.step({.lambda = 1.0}); // half and half: 0.15 and 0.25, before rounding
    EXPECT_TRUE(agree(run.core.getCutoffs(), matrix({{0.2, 0.3}}), withinRel(1e-15)));
    run.step({.lambda = 1e300});
    EXPECT_TRUE(agree(run.core.getCutoffs(), matrix({{0.1, 0.1}}), withinRel(1e-15)));
}

TEST(SphericalFilteringCore, imposedCutoffsAreNotRoundedAndLeaveTheResidualsAlone) {
    const MatrixXd imposed = matrix({{0.12345, 0.6789}});
    Trial run;
    run.step({.accelerometer = &kDown, .magnetometer = &kNorth});
    run.step({.accelerometer = &kDown, .magnetometer = &kNorth});
    const MatrixXd temp = run.core.getTemp();
    ASSERT_EQ(temp.rows(), 5);
    const MatrixXd far = matrix({{1, 0, 0}});
    run.step({.accelerometer = &far, .magnetometer = &kNorth, .imposed = &imposed});
    run.step({.accelerometer = &far, .magnetometer = &kNorth, .imposed = &imposed});
    EXPECT_TRUE(agree(run.core.getCutoffs(), imposed, same));
    EXPECT_TRUE(agree(run.core.getTemp(), temp, same));
}

TEST(SphericalFilteringCore, residualsOfTheLastFiveStepsStandNewestFirst) {
    const MatrixXd imposed = matrix({{0.0, 0.0}}); // the filters stay where they started
    Trial run;
    run.step({.accelerometer = &kDown, .magnetometer = &kNorth, .imposed = &imposed});
    EXPECT_TRUE(agree(run.core.getTemp(), matrix({}), same));
    run.core.setFilterGain(0.0);
    const MatrixXd first = matrix({{0.25, 0, 1}});
    run.step({.accelerometer = &first, .magnetometer = &kNorth, .lambda = 0.0});
    // The last vector was the filtered one: a table full of zeros.
    EXPECT_TRUE(agree(run.core.getTemp(), MatrixXd(MatrixXd::Zero(5, 6)), same));
    const MatrixXd second = matrix({{0, -0.5, 1}});
    run.step({.accelerometer = &second, .magnetometer = &kNorth});
    run.step({.accelerometer = &kDown, .magnetometer = &kNorth});
    MatrixXd wanted = MatrixXd::Zero(5, 6);
    wanted(0, 1) = 0.5;
    wanted(1, 0) = 0.25;
    EXPECT_TRUE(agree(run.core.getTemp(), wanted, same));
    for (int i = 0; i < 4; ++i)
        run.step({.accelerometer = &kDown, .magnetometer = &kNorth});
    wanted.setZero();
    wanted(4, 1) = 0.5;
    EXPECT_TRUE(agree(run.core.getTemp(), wanted, same));
}

TEST(SphericalFilteringCore, firstResidualsFillTheWholeTable) {
    const MatrixXd imposed = matrix({{0.0, 0.0}});
    Trial run;
    run.step({.accelerometer = &kDown, .magnetometer = &kNorth, .imposed = &imposed});
    const MatrixXd far = matrix({{0.5, 0, 0.25}});
    run.step({.accelerometer = &far, .magnetometer = &kNorth, .imposed = &imposed});
    run.step({.accelerometer = &kDown, .magnetometer = &kNorth});
    for (int i = 0; i < 5; ++i)
        EXPECT_TRUE(agree(MatrixXd(run.core.getTemp().row(i)), matrix({{0.5, 0, 0.75, 0, 0, 0}}), same))
            << "row " << i;
}

TEST(SphericalFilteringCore, timeOfAStep) {
    const double rate = 0.5;
    struct Row {
        std::string name;
        double deltaTime;
        double angle;
    };
    const std::vector<Row> rows{
        {.name = "given", .deltaTime = 0.25, .angle = 0.125},
        {.name = "none stays none", .deltaTime = 0.0, .angle = 0.0},
        {.name = "negative stands for the sample period", .deltaTime = -0.5, .angle = 0.01},
        {.name = "negative zero is not negative", .deltaTime = -0.0, .angle = 0.0},
    };
    for (const Row& row : rows) {
        Trial run;
        run.core.setSamplePeriod(0.02);
        run.step({.gyroscope = matrix({{rate, 0, 0}}), .deltaTime = row.deltaTime});
        EXPECT_TRUE(agree(run.core.getRotationMatrix(), rotationAbout({1, 0, 0}, row.angle), law(4e-16)))
            << row.name;
    }
    Trial run;
    run.step({.gyroscope = matrix({{rate, 0, 0}})});
    EXPECT_TRUE(agree(run.core.getRotationMatrix(), rotationAbout({1, 0, 0}, 0.005), law(4e-16)))
        << "0.01 at first";
    const MatrixXd before = run.core.getRotationMatrix();
    run.step({.gyroscope = matrix({{rate, 1, 2}}), .deltaTime = 0.0});
    EXPECT_TRUE(agree(run.core.getRotationMatrix(), before, law(4e-16))) << "no time, no turn";
}

TEST(SphericalFilteringCore, vectorsAreClippedAndRemembered) {
    const MatrixXd large = matrix({{2, -3, 1.05}});
    const MatrixXd clipped = matrix({{1.1, -1.1, 1.05}});
    Trial run;
    run.step({.accelerometer = &large, .magnetometer = &large});
    EXPECT_TRUE(agree(run.aTerre(), clipped, same));
    EXPECT_TRUE(agree(run.mTerre(), clipped, same));
    run.step({});
    EXPECT_TRUE(agree(run.aTerre(), clipped, same)) << "the last vector stands in";
    run.core.reset();
    run.step({});
    EXPECT_TRUE(agree(run.aTerre(), clipped, same)) << "and outlives a reset";
    EXPECT_TRUE(agree(run.aTerreFiltered(), clipped, same));

    const MatrixXd bad = matrix({{kNan, kInf, -kInf}});
    run.step({.accelerometer = &bad});
    const MatrixXd poisoned = matrix({{kNan, kNan, kNan}});
    EXPECT_TRUE(agree(run.aTerre(), poisoned, same))
        << "a not-a-number is not clipped, and a turn spreads it";
}

TEST(SphericalFilteringCore, perturbedFieldIsHeldInTheEarthFrameAlone) {
    Trial run;
    run.step({.accelerometer = &kDown, .magnetometer = &kNorth});
    const MatrixXd held = run.mTerreFiltered();
    const MatrixXd magnet = matrix({{-0.9, 0.9, 0.1}});
    run.step({.gyroscope = matrix({{3, 0, 0}}),
              .accelerometer = &kDown,
              .magnetometer = &magnet,
              .magPerturbed = true});
    EXPECT_TRUE(agree(run.mTerreFiltered(), held, same));
    EXPECT_FALSE(agree(run.mTerre(), held, same)) << "the unfiltered field shows the magnet";
    EXPECT_TRUE(agree(run.mFiltered(), toSensor(held, run.core.getRotationMatrix()), withinRel(1e-15)));
    EXPECT_FALSE(agree(run.aTerreFiltered(), kDown, same)) << "the acceleration goes on";
    run.step({.accelerometer = &kDown});
    EXPECT_TRUE(agree(run.mTerreFiltered(), held, same)) << "no field: held as well";
    run.step({.accelerometer = &kDown, .magnetometer = &magnet});
    EXPECT_FALSE(agree(run.mTerreFiltered(), held, same)) << "let go";
}

TEST(SphericalFilteringCore, resetKeepsCutoffsGainAndPeriod) {
    const MatrixXd imposed = matrix({{0.2, 0.4}});
    Trial run;
    run.core.setFilterGain(0.0);
    run.core.setSamplePeriod(0.5);
    run.step({.gyroscope = matrix({{1, 2, 3}}), .accelerometer = &kDown, .lambda = 3.0, .imposed = &imposed});
    run.step({.accelerometer = &kDown});
    run.core.reset();
    EXPECT_TRUE(agree(run.core.getRotationMatrix(), kIdentity, same));
    EXPECT_TRUE(agree(run.core.getTemp(), matrix({}), same));
    // 0.2 / 4 and 0.4 / 4 from the second step, lambda 0.7 again from the reset.
    EXPECT_TRUE(agree(run.core.getCutoffs(), matrix({{0.05, 0.1}}), withinRel(1e-15)));
    run.step({.gyroscope = matrix({{0, 0, 1}}), .accelerometer = &kDown});
    EXPECT_TRUE(agree(run.core.getCutoffs(), matrix({{0.03, 0.06}}), withinRel(1e-15)));
    EXPECT_TRUE(agree(run.core.getRotationMatrix(), rotationAbout({0, 0, 1}, 0.5), law(4e-16)));
}

TEST(SphericalFilteringCore, afterAResetTheFirstVectorStandsAtOnce) {
    Trial run;
    for (int i = 0; i < 5; ++i)
        run.step({.accelerometer = &kNorth, .magnetometer = &kDown});
    run.core.reset();
    run.step({.accelerometer = &kDown, .magnetometer = &kNorth});
    // a1 v + g 2 v is v within the rounding of three operations.
    EXPECT_TRUE(agree(run.aTerreFiltered(), kDown, law(4e-16)));
    EXPECT_TRUE(agree(run.mTerreFiltered(), kNorth, law(4e-16)));
}

TEST(SphericalFilteringCore, outputsMayBeTheNextInputs) {
    Trial straight;
    Trial looped;
    const MatrixXd g = matrix({{1, -2, 0.5}});
    straight.step({.gyroscope = g, .accelerometer = &kNorth, .magnetometer = &kDown});
    looped.step({.gyroscope = g, .accelerometer = &kNorth, .magnetometer = &kDown});
    for (int i = 0; i < 10; ++i) {
        const MatrixXd a = straight.aFiltered();
        const MatrixXd m = straight.mTerre();
        straight.step({.gyroscope = g, .accelerometer = &a, .magnetometer = &m});
        looped.step({.gyroscope = g, .accelerometer = &looped.out[0], .magnetometer = &looped.out[3]});
        for (std::size_t k = 0; k < 6; ++k)
            ASSERT_TRUE(agree(looped.out[k], straight.out[k], same)) << "step " << i << ", output " << k;
    }
}

// A constant rate turns by rate times time about its own axis. Each step rounds its half angle h and the
// sines to a few times 2^-53 of themselves, always the same way, which adds up to a few times 2^-53 of the
// whole angle; the products round each step anew, which adds up to the square root of their number. For some
// hundred radians that is below 1e-12.
TEST(SphericalFilteringCore, constantRatesFollowTheClosedForm) {
    constexpr int kSteps = 100000;
    constexpr double kTime = 0x1p-8; // 390 s in all
    const std::vector<std::array<double, 3>> rates{
        {1, 0, 0}, {0, -2, 0}, {0, 0, 0.01}, {0.3, -0.4, 1.2}, {3, 2, -1}};
    for (const auto& rate : rates) {
        Trial run;
        for (int i = 0; i < kSteps; ++i)
            run.step({.gyroscope = matrix({{rate[0], rate[1], rate[2]}}), .deltaTime = kTime});
        const long double x = rate[0], y = rate[1], z = rate[2];
        const long double speed = std::sqrt(x * x + y * y + z * z);
        const auto part = [&](long double component) { return static_cast<double>(component / speed); };
        const long double angle =
            std::remainder(speed * kSteps * kTime, 2.0L * std::numbers::pi_v<long double>);
        const MatrixXd wanted = rotationAbout({part(x), part(y), part(z)}, static_cast<double>(angle));
        EXPECT_TRUE(agree(run.core.getRotationMatrix(), wanted, law(1e-12))) << rate[0] << ' ' << rate[1];
    }
}

// A quaternion that was just divided by its norm is off 1 by a few roundings, and so are the rows' lengths
// and right angles: each element of R R' is three products of elements of four products each, below 32
// roundings of 2^-53 together.
TEST(SphericalFilteringCore, rotationStaysOrthogonal) {
    std::mt19937 random(5);
    std::normal_distribution<double> deviate(0.0, 8.0);
    Trial run;
    for (int i = 0; i < 100000; ++i) {
        run.step(
            {.gyroscope = matrix({{deviate(random), deviate(random), deviate(random)}}), .deltaTime = 0.01});
        const MatrixXd& r = run.core.getRotationMatrix();
        ASSERT_TRUE(agree(MatrixXd(r * r.transpose()), kIdentity, law(32 * 0x1p-53))) << "step " << i;
        const double determinant = r(0, 0) * (r(1, 1) * r(2, 2) - r(1, 2) * r(2, 1)) -
                                   r(0, 1) * (r(1, 0) * r(2, 2) - r(1, 2) * r(2, 0)) +
                                   r(0, 2) * (r(1, 0) * r(2, 1) - r(1, 1) * r(2, 0));
        ASSERT_TRUE(agree(determinant, 1.0, law(64 * 0x1p-53))) << "step " << i;
    }
}

// The Earth's vectors stand still while the sensor turns. The first sample of each is wrong by `kWrong` along
// one axis; in the Earth frame that error leaves by a1 a sample, whatever the sensor does: e(1) = a1 e(0) + g
// e(0), e(n) = a1 e(n-1).
TEST(SphericalFilteringCore, filteredVectorsConvergeToTheTrueOnesWhileTheSensorTurns) {
    constexpr double kWrong = 0.3;
    constexpr double kCutoff = 0.01;
    const double t = std::tan(kCutoff * 2.0 * std::atan(1.0));
    const double a1 = (1.0 - t) / (1.0 + t);
    const double g = t / (1.0 + t);
    const MatrixXd imposed = matrix({{kCutoff, kCutoff}});
    const std::array<double, 3> axis{0.6, 0.0, 0.8};
    Trial run;
    double left = kWrong;
    for (int i = 0; i < 2000; ++i) {
        const MatrixXd r = rotationAbout(axis, 0.02 * (i + 1));
        MatrixXd down = kDown;
        MatrixXd north = kNorth;
        if (i == 0) down(0) += kWrong;
        if (i == 0) north(1) -= kWrong;
        const MatrixXd a = toSensor(down, r);
        const MatrixXd m = toSensor(north, r);
        run.step({.gyroscope = matrix({{1.2, 0, 1.6}}),
                  .accelerometer = &a,
                  .magnetometer = &m,
                  .deltaTime = 0.01,
                  .imposed = &imposed});
        if (i == 1) left = a1 * left + g * left;
        if (i > 1) left = a1 * left;
        // 2000 steps of the quaternion, a few roundings each, do not all point one way.
        ASSERT_TRUE(agree(run.aTerreFiltered(), matrix({{left, 0, 1}}), law(1e-12))) << "step " << i;
        ASSERT_TRUE(agree(run.mTerreFiltered(), matrix({{0.5, -left, 0.866}}), law(1e-12))) << "step " << i;
        ASSERT_TRUE(agree(run.aFiltered(), toSensor(matrix({{left, 0, 1}}), r), law(1e-12))) << "step " << i;
        ASSERT_TRUE(agree(run.mFiltered(), toSensor(matrix({{0.5, -left, 0.866}}), r), law(1e-12)))
            << "step " << i;
    }
    EXPECT_LT(left, 1e-12);
}

/// One of the doubles a stream of vectors is made of: mostly ordinary, sometimes beyond the clip.
MatrixXd randomVector(std::mt19937& random, double scale) {
    std::normal_distribution<double> deviate(0.0, scale);
    MatrixXd v = matrix({{deviate(random), deviate(random), deviate(random)}});
    return random() % 2 == 0 ? v : MatrixXd(v.transpose());
}

TEST(SphericalFilteringCore, longTrace) {
    for (unsigned seed = 1; seed <= 8; ++seed) {
        std::mt19937 random(seed);
        std::uniform_real_distribution<double> unit(0.0, 1.0);
        Trial run;
        LiteralSpherical literal;
        literal.reset();
        MatrixXd wanted[6];
        for (int i = 0; i < 4000; ++i) {
            if (unit(random) < 0.004) {
                run.core.reset();
                literal.reset();
            }
            if (unit(random) < 0.01) {
                const double gain = std::pow(10.0, -4.0 * unit(random));
                run.core.setFilterGain(gain);
                literal.filterGain = gain;
                run.core.setSamplePeriod(gain);
                literal.samplePeriod = gain;
            }
            const MatrixXd g = unit(random) < 0.2 ? kRest : randomVector(random, 0.2 * seed);
            const MatrixXd a = randomVector(random, 0.7);
            const MatrixXd m = randomVector(random, 0.7);
            const MatrixXd imposed = matrix({{unit(random), unit(random)}});
            Trial::Step step{.gyroscope = g};
            if (unit(random) < 0.9) step.accelerometer = &a;
            if (unit(random) < 0.9) step.magnetometer = &m;
            if (unit(random) < 0.9) step.deltaTime = 0.02 * unit(random);
            if (unit(random) < 0.1) step.lambda = 3.0 * unit(random);
            step.magPerturbed = unit(random) < 0.2;
            if (unit(random) < 0.1) step.imposed = &imposed;
            run.step(step);
            literal.update(g, step.accelerometer, step.magnetometer, wanted, step.deltaTime, step.lambda,
                           step.magPerturbed, step.imposed);
            for (std::size_t k = 0; k < 6; ++k)
                ASSERT_TRUE(agree(run.out[k], wanted[k], same))
                    << "seed " << seed << ", step " << i << ", output " << k;
            ASSERT_TRUE(agree(run.core.getRotationMatrix(), literal.rotation(), same))
                << seed << ", step " << i;
            ASSERT_TRUE(agree(run.core.getCutoffs(), literal.cutoffs, same)) << seed << ", step " << i;
            ASSERT_TRUE(agree(run.core.getTemp(), literal.temp, same)) << seed << ", step " << i;
        }
    }
}
} // namespace
