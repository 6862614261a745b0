// SPDX-License-Identifier: MIT
#include "design/ButterworthComputer.h"

#include "design/ButterworthSections.h"
#include "design/Constants.h"
#include "tests/design/ButterworthFigures.h"
#include "tests/support/Allocations.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>
#include <utility>
#include <vector>

using Quillmere::Core::MatrixXd;

using namespace Design;
using namespace Support;

namespace {

/// One element's cascade, written down as plainly as the formulas.
class PlainCascade {
public:
    PlainCascade(double cutOff, int order, double start) {
        const int numSections = designButterworthSections(c, cutOff, order);
        double u = start;
        for (int k = 0; k < numSections; ++k) {
            const double w = u / (1.0 - c(kA1, k) - c(kA2, k));
            states.emplace_back(w, w);
            u = (u + (c(kA1, k) + c(kA2, k) + c(kB1, k) + c(kB2, k)) * w) * c(kGain, k);
        }
    }

    double step(double u) {
        int k = 0;
        for (auto& [s1, s2] : states) {
            const double w = u + c(kA1, k) * s1 + c(kA2, k) * s2;
            u = (c(kB1, k) * s1 + w + c(kB2, k) * s2) * c(kGain, k);
            s2 = s1;
            s1 = w;
            ++k;
        }
        return u;
    }

private:
    MatrixXd c;
    std::vector<std::pair<double, double>> states;
};

ButterworthComputer computerOf(double cutOff, int order, bool highPass = false) {
    ButterworthComputer computer;
    computer.setParameters(cutOff, order);
    computer.setHighPass(highPass);
    return computer;
}

MatrixXd stepped(ButterworthComputer& computer, const MatrixXd& input) {
    computer.step(input);
    return computer.output();
}

MatrixXd designed(double cutOff, int order) {
    MatrixXd coefficients;
    const int numSections = designButterworthSections(coefficients, cutOff, order);
    EXPECT_EQ(numSections, coefficients.cols());
    return coefficients;
}

double figureSignal(int n) {
    return ((37 * n * n + 11 * n + 5) % 64) / 32.0 - 1.0;
}

} // namespace

TEST(ButterworthSectionsTest, OneSectionAPairOfPolesAndOneMoreForAnOddOrder) {
    for (int order = 0; order <= 12; ++order) {
        const MatrixXd c = designed(0.3, order);
        ASSERT_EQ(c.rows(), 5);
        ASSERT_EQ(c.cols(), (order + 1) / 2) << "order " << order;
        for (int k = 0; k < c.cols(); ++k) {
            const bool firstOrder = order % 2 == 1 && k == c.cols() - 1;
            EXPECT_TRUE(agree(c(kB1, k), firstOrder ? 1.0 : 2.0, same));
            EXPECT_TRUE(agree(c(kB2, k), firstOrder ? 0.0 : 1.0, same));
            EXPECT_EQ(c(kA2, k) == 0.0, firstOrder) << "order " << order << ", section " << k;
        }
    }
}

TEST(ButterworthSectionsTest, OrderOneIsTheBilinearFirstOrderSection) {
    for (const double cutOff : {0.0, 1e-6, 0.05, 0.5, 0.9, 1.0}) {
        const double t = std::tan(cutOff * kPi * 0.5);
        const MatrixXd c = designed(cutOff, 1);
        EXPECT_TRUE(agree(c(kA1, 0), (1.0 - t) / (1.0 + t), same)) << cutOff;
        EXPECT_TRUE(agree(c(kGain, 0), t / (1.0 + t), same)) << cutOff;
    }
}

TEST(ButterworthSectionsTest, HalfTheBandTakesA1OfPairsToZero) {
    for (const int order : {2, 3, 10}) {
        const MatrixXd c = designed(0.5, order);
        // tan(pi / 4) is one unit in the last place below 1 in double arithmetic, so t2 - 1 is 2.2e-16; the
        // division by at least 2 and the factor 2 leave no more of it.
        for (int k = 0; k < order / 2; ++k)
            EXPECT_TRUE(agree(c(kA1, k), 0.0, law(2.3e-16))) << "order " << order << ", section " << k;
    }
}

TEST(ButterworthSectionsTest, TheNyquistFrequencyIsVeryLargeButFinite) {
    for (int order = 1; order <= 10; ++order) {
        const MatrixXd c = designed(1.0, order);
        EXPECT_TRUE(c.array().isFinite().all()) << "order " << order;
    }
    EXPECT_TRUE(agree(designed(1.0, 1)(kGain, 0), 1.0, withinRel(1e-15)));
}

TEST(ButterworthSectionsTest, WholeTurnsComeOffTheAngle) {
    // A cut-off of 4 is one turn exactly and stays; beyond it the rest of the turn counts.
    EXPECT_TRUE(agree(designed(4.0, 2)(kGain, 0), designed(0.0, 2)(kGain, 0), law(1e-30)));
    for (const double sign : {1.0, -1.0}) {
        const double angle = sign * 4.5 * kPi * 0.5;
        const double t = std::tan(angle - kTwoPi * std::trunc(angle / kTwoPi));
        EXPECT_TRUE(agree(designed(sign * 4.5, 1)(kGain, 0), t / (1.0 + t), same));
    }
    EXPECT_TRUE(std::isnan(designed(kInf, 1)(kGain, 0)));
    EXPECT_TRUE(std::isnan(designed(kNaN, 2)(kGain, 0)));
}

TEST(ButterworthComputerTest, AgreesWithTheTextbook) {
    for (const ButterworthFigures& row : kButterworthFigures) {
        ButterworthComputer low = computerOf(row.cutOff, row.order);
        ButterworthComputer high = computerOf(row.cutOff, row.order, true);
        std::size_t checked = 0;
        for (int n = 0; checked < kButterworthSteps.size(); ++n) {
            const double x = figureSignal(n);
            const double lowPassed = stepped(low, matrix({{x}}))(0);
            const double highPassed = stepped(high, matrix({{x}}))(0);
            ASSERT_TRUE(agree(highPassed, x - lowPassed, same));
            if (n != kButterworthSteps[checked]) continue;
            // Figures of 1e-2 and more; smaller ones are sums of terms of that size, so that is the floor.
            EXPECT_TRUE(agree(lowPassed, row.output[checked], withinRel(1e-12, 1e-2)))
                << "order " << row.order << " at " << row.cutOff << ", step " << n;
            ++checked;
        }
    }
}

TEST(ButterworthComputerTest, OrderOneIsTheRecursionInOneLine) {
    ButterworthComputer computer = computerOf(0.2, 1);
    const double t = std::tan(0.2 * kPi * 0.5);
    const double a1 = (1.0 - t) / (1.0 + t);
    const double g = t / (1.0 + t);
    double before = 0.75 / (1.0 - a1 - 0.0);
    for (const double u : {0.75, -1.0, 3.5, 0.0, 1e-3}) {
        const double w = u + a1 * before;
        EXPECT_TRUE(agree(stepped(computer, matrix({{u}}))(0), g * (before + w), same));
        before = w;
    }
}

TEST(ButterworthComputerTest, AConstantPassesFromTheFirstOutputOn) {
    for (int order = 1; order <= 10; ++order)
        for (const double cutOff : {1e-3, 0.05, 0.5, 0.999}) {
            ButterworthComputer low = computerOf(cutOff, order);
            ButterworthComputer high = computerOf(cutOff, order, true);
            const MatrixXd input = matrix({{1.5, -2.0}, {0.0, 1e6}});
            const MatrixXd first = stepped(low, input);
            for (int n = 0; n < 50; ++n) {
                // The slowest design divides by 1 - a1 - a2 of about 1e-5, which holds ten digits.
                EXPECT_TRUE(agree(stepped(low, input), first, withinRel(1e-9)))
                    << "order " << order << " at " << cutOff;
                EXPECT_TRUE(agree(stepped(low, input), input, withinRel(1e-9)))
                    << "order " << order << " at " << cutOff;
                // The largest input, 1e6, to the same nine digits.
                EXPECT_TRUE(agree(stepped(high, input), MatrixXd::Zero(2, 2), law(1e-3)))
                    << "order " << order << " at " << cutOff;
            }
        }
}

TEST(ButterworthComputerTest, OrderZeroIsABypassInBothModes) {
    for (const bool highPass : {false, true}) {
        ButterworthComputer computer = computerOf(0.1, 0, highPass);
        for (const MatrixXd& input : {matrix({{1, -0.0, kNaN}}), matrix({{kInf}, {2}}), MatrixXd(0, 3)})
            EXPECT_TRUE(agree(stepped(computer, input), input, same));
    }
}

TEST(ButterworthComputerTest, AStartAfterABypassIsDueAsBefore) {
    ButterworthComputer computer = computerOf(0.1, 0);
    computer.step(matrix({{5}}));
    computer.setParameters(0.1, 1);
    EXPECT_TRUE(agree(stepped(computer, matrix({{2}})), matrix({{2}}), withinRel(1e-15)));
}

TEST(ButterworthComputerTest, TheHighPassIsInputMinusLowPassAndSwitchesWithoutAStart) {
    ButterworthComputer computer = computerOf(0.3, 3);
    ButterworthComputer twin = computerOf(0.3, 3);
    for (int n = 0; n < 20; ++n) {
        const MatrixXd input = matrix({{figureSignal(n), figureSignal(n + 9)}});
        computer.setHighPass(n % 3 == 0);
        const MatrixXd low = stepped(twin, input);
        EXPECT_TRUE(agree(stepped(computer, input), n % 3 == 0 ? MatrixXd(input - low) : low, same)) << n;
    }
}

TEST(ButterworthComputerTest, ZeroCutOffIsNotFiniteUntilTheNextStart) {
    for (const int order : {1, 2, 5}) {
        ButterworthComputer computer = computerOf(0.0, order);
        for (int n = 0; n < 3; ++n)
            EXPECT_FALSE(std::isfinite(stepped(computer, matrix({{1}}))(0))) << "order " << order;
        computer.setParameters(0.1, order);
        EXPECT_TRUE(agree(stepped(computer, matrix({{1}}))(0), 1.0, withinRel(1e-13)));
    }
}

TEST(ButterworthComputerTest, AnotherShapeStartsAnew) {
    ButterworthComputer computer = computerOf(0.1, 2);
    computer.step(matrix({{1, 2, 3}}));
    computer.step(matrix({{-4, 9, 0}}));
    const MatrixXd square = matrix({{1, 2}, {3, 4}});
    ButterworthComputer fresh = computerOf(0.1, 2);
    EXPECT_TRUE(agree(stepped(computer, square), stepped(fresh, square), same));
    // As many elements in another shape are another shape, too.
    const MatrixXd column = matrix({{5}, {6}, {7}, {8}});
    ButterworthComputer other = computerOf(0.1, 2);
    EXPECT_TRUE(agree(stepped(computer, column), stepped(other, column), same));
}

TEST(ButterworthComputerTest, AnEmptySampleGivesAnEmptyOutput) {
    ButterworthComputer computer = computerOf(0.1, 4);
    for (const MatrixXd& input :
         {MatrixXd(0, 0), MatrixXd(0, 5), MatrixXd(2, 0), matrix({{1}}), MatrixXd(0, 0)})
        EXPECT_EQ(stepped(computer, input).rows() * 100 + computer.output().cols(),
                  input.rows() * 100 + input.cols());
}

TEST(ButterworthComputerTest, NonFiniteNumbersStayInTheirElement) {
    for (Eigen::Index count = 1; count <= 17; ++count) {
        ButterworthComputer computer = computerOf(0.2, 4);
        ButterworthComputer alone = computerOf(0.2, 4);
        for (int n = 0; n < 30; ++n) {
            const double x = figureSignal(n);
            MatrixXd input = MatrixXd::Constant(1, count, x);
            for (Eigen::Index i = 0; i < count; i += 3)
                input(i) = i % 2 == 0 ? kNaN : n == 3 ? kInf : x;
            const MatrixXd out = stepped(computer, input);
            const double wanted = stepped(alone, matrix({{x}}))(0);
            for (Eigen::Index i = 0; i < count; ++i) {
                const bool isFinite = i % 3 != 0 || (i % 2 != 0 && n < 3);
                EXPECT_EQ(std::isfinite(out(i)), isFinite) << count << " elements, step " << n << ", " << i;
                EXPECT_TRUE(!isFinite || agree(out(i), wanted, same)) << count << ", step " << n << ", " << i;
            }
        }
    }
}

TEST(ButterworthComputerTest, ARequestStartsAnewFromThePresentInput) {
    ButterworthComputer computer = computerOf(0.1, 3);
    for (int n = 0; n < 10; ++n)
        computer.step(matrix({{figureSignal(n)}}));
    computer.requestInit();
    ButterworthComputer fresh = computerOf(0.1, 3);
    for (int n = 0; n < 10; ++n)
        EXPECT_TRUE(agree(stepped(computer, matrix({{figureSignal(n + 3)}})),
                          stepped(fresh, matrix({{figureSignal(n + 3)}})), same));
}

TEST(ButterworthComputerTest, ASteadyStepAllocatesNothing) {
    for (const int order : {0, 1, 2, 7, 10, 14}) {
        ButterworthComputer computer = computerOf(0.1, order);
        const MatrixXd input = MatrixXd::Ones(3, 5);
        computer.step(input);
        const AllocationCounter counter;
        for (int n = 0; n < 100; ++n)
            computer.step(input);
        EXPECT_EQ(counter.count(), 0u) << "order " << order;
    }
}

/// Orders for which the compiler unrolls and orders beyond; samples that fill registers, groups of eight and
/// neither.
TEST(ButterworthComputerTest, LongTracesAgreeWithThePlainCascadeToTheBit) {
    std::mt19937_64 random(11);
    std::uniform_real_distribution<double> number(-10.0, 10.0);
    for (int order = 1; order <= 13; ++order)
        for (const auto& [rows, cols] : {std::pair{1, 1},
                                         {2, 1},
                                         {1, 3},
                                         {2, 2},
                                         {5, 1},
                                         {2, 3},
                                         {7, 1},
                                         {8, 1},
                                         {3, 3},
                                         {5, 2},
                                         std::pair{11, 1},
                                         {4, 3},
                                         {1, 13},
                                         {2, 7},
                                         {3, 5},
                                         {4, 4},
                                         {17, 1},
                                         {3, 13},
                                         {1, 67}}) {
            const double cutOff = 0.05 * order;
            const bool highPass = (order + rows) % 2 == 0;
            ButterworthComputer computer = computerOf(cutOff, order, highPass);
            std::vector<PlainCascade> plain;
            MatrixXd input(rows, cols);
            MatrixXd wanted(rows, cols);
            for (int n = 0; n < 60; ++n) {
                for (Eigen::Index i = 0; i < input.size(); ++i) {
                    input(i) = number(random);
                    if (n == 0) plain.emplace_back(cutOff, order, input(i));
                    const double low = plain[static_cast<std::size_t>(i)].step(input(i));
                    wanted(i) = highPass ? input(i) - low : low;
                }
                ASSERT_TRUE(agree(stepped(computer, input), wanted, same))
                    << "order " << order << ", " << rows << " by " << cols << ", step " << n;
            }
        }
}

TEST(ButterworthComputerTest, ManyRowsAreAsManySteps) {
    std::mt19937 random(16);
    std::normal_distribution<double> noise;
    for (const int order : {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 14}) // beyond 10 no kernel is unrolled
        for (Eigen::Index columns = 1; columns <= 21; ++columns) {
            ButterworthComputer single = computerOf(0.13, order, columns % 2 == 0);
            ButterworthComputer atOnce = computerOf(0.13, order, columns % 2 == 0);
            const MatrixXd rows = MatrixXd::NullaryExpr(60, columns, [&] { return noise(random); });
            MatrixXd wanted = rows;
            MatrixXd got = rows;
            for (Eigen::Index row = 0; row < rows.rows(); ++row)
                wanted.row(row) = stepped(single, rows.row(row));
            EXPECT_FALSE(atOnce.getIsUnderWay(columns));
            got.row(0) = stepped(atOnce, rows.row(0));
            EXPECT_TRUE(atOnce.getIsUnderWay(columns));
            EXPECT_FALSE(atOnce.getIsUnderWay(columns + 1));
            atOnce.stepRows(rows.row(1).data(), got.row(1).data(), 1);
            atOnce.stepRows(rows.row(2).data(), got.row(2).data(), 40);
            EXPECT_TRUE(agree(atOnce.output(), got.row(41), same));
            got.row(42) = stepped(atOnce, rows.row(42));
            atOnce.stepRows(got.row(43).data(), got.row(43).data(), 17); // over what it reads
            ASSERT_TRUE(agree(got, wanted, same)) << "order " << order << ", " << columns << " columns";
        }
}

TEST(ButterworthComputerTest, MayFilterItsOwnOutputInEveryShape) {
    for (Eigen::Index count = 1; count <= 20; ++count)
        for (const bool highPass : {false, true}) {
            ButterworthComputer computer = computerOf(0.1, 3, highPass);
            ButterworthComputer twin = computerOf(0.1, 3, highPass);
            MatrixXd input = MatrixXd::Constant(1, count, 2.0);
            for (int n = 0; n < 5; ++n) {
                for (Eigen::Index i = 0; i < count; ++i)
                    input(i) += figureSignal(n + static_cast<int>(i));
                computer.step(input);
                const MatrixXd copy = stepped(twin, input);
                computer.step(computer.output());
                EXPECT_TRUE(agree(computer.output(), stepped(twin, copy), same)) << count << " elements";
            }
        }
}
