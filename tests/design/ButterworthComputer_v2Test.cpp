// SPDX-License-Identifier: MIT
#include "design/ButterworthComputer_v2.h"

#include "design/ButterworthSections.h"
#include "design/Constants.h"
#include "tests/support/Allocations.h"
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <utility>
#include <vector>

using Quillmere::Core::MatrixXd;

using namespace Design;
using namespace Support;

namespace {

/// One element at order 1, as one line.
struct PlainElement {
    double x1;
    double y1;

    double step(double cutOff, double u) {
        const double t = std::tan(cutOff * kPi * 0.5);
        y1 = (1.0 - t) / (1.0 + t) * y1 + t / (1.0 + t) * (x1 + u);
        x1 = u;
        return y1;
    }
};

MatrixXd stepped(ButterworthComputer_v2& computer, const MatrixXd& input) {
    computer.step(input);
    return computer.output();
}

double stepped(ButterworthComputer_v2& computer, double input) {
    return stepped(computer, matrix({{input}}))(0);
}

} // namespace

TEST(ButterworthComputer_v2Test, StartsOnItsFirstInput) {
    ButterworthComputer_v2 computer;
    EXPECT_TRUE(agree(computer.getCutOff(), 0.05, same));
    EXPECT_EQ(computer.getOrder(), 1);
    EXPECT_FALSE(computer.getHighPass());
    const MatrixXd input = matrix({{1, -2.5}, {0, 1e6}});
    const MatrixXd first = stepped(computer, input);
    EXPECT_TRUE(agree(first, input, withinUlp(1)));
    for (int n = 0; n < 100; ++n)
        EXPECT_TRUE(agree(stepped(computer, input), input, withinRel(1e-14)));
}

TEST(ButterworthComputer_v2Test, TheHighPassIsInputMinusLowPassAndSwitchesWithoutAStart) {
    ButterworthComputer_v2 computer;
    computer.setHighPass(true);
    EXPECT_TRUE(computer.getHighPass());
    EXPECT_TRUE(agree(stepped(computer, matrix({{1, 2, 3}})), matrix({{0, 0, 0}}), law(1e-15)));
    ButterworthComputer_v2 twin;
    twin.step(matrix({{1, 2, 3}}));
    for (const double x : {4.0, -1.0, 0.5}) {
        const MatrixXd input = matrix({{x, x + 1, x * x}});
        const MatrixXd low = stepped(twin, input);
        EXPECT_TRUE(agree(stepped(computer, input), MatrixXd(input - low), same));
    }
    computer.setHighPass(false);
    EXPECT_TRUE(agree(stepped(computer, matrix({{7, 8, 9}})), stepped(twin, matrix({{7, 8, 9}})), same));
}

TEST(ButterworthComputer_v2Test, OrderZeroIsABypassThatStoresTheCutOff) {
    for (const bool highPass : {false, true}) {
        ButterworthComputer_v2 computer;
        computer.setParameters(0.1, 0);
        computer.setHighPass(highPass);
        for (const MatrixXd& input : {matrix({{1, -0.0, kNaN}}), matrix({{kInf}, {2}}), MatrixXd(0, 3)})
            EXPECT_TRUE(agree(stepped(computer, input), input, same));
        computer.setCutOff(0.7, false, false);
        EXPECT_TRUE(agree(computer.getCutOff(), 0.7, same));
        EXPECT_TRUE(agree(stepped(computer, 5.0), 5.0, same));
    }
}

TEST(ButterworthComputer_v2Test, ANewCutOffMeetsTheRunningState) {
    ButterworthComputer_v2 computer;
    computer.setParameters(0.2, 1);
    PlainElement plain{1.0, 1.0};
    EXPECT_TRUE(agree(stepped(computer, 1.0), plain.step(0.2, 1.0), same));
    EXPECT_TRUE(agree(stepped(computer, 3.0), plain.step(0.2, 3.0), same));
    computer.setCutOff(0.6, false, false);
    EXPECT_TRUE(agree(stepped(computer, -1.0), plain.step(0.6, -1.0), same));
    computer.setCutOff(0.01, false, true);
    EXPECT_TRUE(agree(stepped(computer, 2.0), plain.step(0.01, 2.0), same));
}

TEST(ButterworthComputer_v2Test, ANewCutOffMayAskForAStart) {
    ButterworthComputer_v2 computer;
    stepped(computer, 1.0);
    stepped(computer, 3.0);
    computer.setCutOff(0.6, true, false);
    PlainElement plain{-1.0, -1.0};
    EXPECT_TRUE(agree(stepped(computer, -1.0), plain.step(0.6, -1.0), same));
    computer.setCutOff(0.7, true, false);
    computer.setCutOff(0.8, false, false); // a start that is due stays due
    plain = {4.0, 4.0};
    EXPECT_TRUE(agree(stepped(computer, 4.0), plain.step(0.8, 4.0), same));
}

TEST(ButterworthComputer_v2Test, TheFourArgumentsMayCallOffAStart) {
    ButterworthComputer_v2 computer;
    computer.setParameters(0.2, 1);
    PlainElement plain{1.0, 1.0};
    stepped(computer, 1.0);
    plain.step(0.2, 1.0);
    computer.requestInit();
    computer.setParameters(0.9, 1, false, false);
    EXPECT_TRUE(agree(computer.getCutOff(), 0.9, same));
    EXPECT_TRUE(agree(stepped(computer, 5.0), plain.step(0.2, 5.0), same)) << "no redesign, no start";
    computer.setParameters(0.9, 1, true, false);
    plain = {2.0, 2.0};
    EXPECT_TRUE(agree(stepped(computer, 2.0), plain.step(0.9, 2.0), same));
}

TEST(ButterworthComputer_v2Test, TheSameCutOffChangesNothing) {
    ButterworthComputer_v2 computer;
    computer.setParameters(0.3, 1, true, true);
    stepped(computer, 1.0);
    stepped(computer, 2.0);
    computer.setCutOff(0.3, true, false);
    ButterworthComputer_v2 twin;
    twin.setParameters(0.3, 1);
    stepped(twin, 1.0);
    stepped(twin, 2.0);
    EXPECT_TRUE(agree(stepped(computer, 4.0), stepped(twin, 4.0), same)) << "no start";
    // `memorize` stayed on as well: coming back to a cut-off allocates no entry.
    computer.setCutOff(0.4, false, true);
    const AllocationCounter counter;
    computer.setCutOff(0.3, false, true);
    EXPECT_EQ(counter.count(), 0u);
}

TEST(ButterworthComputer_v2Test, ACutOffMetBeforeComesFromTheCache) {
    ButterworthComputer_v2 computer;
    computer.setParameters(0.3, 1, true, true);
    stepped(computer, 1.0);
    for (const double cutOff : {0.4, 0.5, 0.6})
        computer.setCutOff(cutOff, false, true);
    PlainElement plain{1.0, 1.0};
    plain.step(0.3, 1.0);
    {
        const AllocationCounter counter;
        for (const double cutOff : {0.4, 0.3, 0.6, 0.5, 0.4})
            computer.setCutOff(cutOff, false, true);
        EXPECT_EQ(counter.count(), 0u) << "nothing new is kept";
    }
    EXPECT_TRUE(agree(stepped(computer, 3.0), plain.step(0.4, 3.0), same));
    // A start with the cache on keeps the entries.
    computer.setCutOff(0.5, true, true);
    stepped(computer, 2.0);
    const AllocationCounter counter;
    computer.setCutOff(0.6, false, true);
    EXPECT_EQ(counter.count(), 0u);
}

TEST(ButterworthComputer_v2Test, ThousandsOfCachedCutOffsAreKeptApart) {
    ButterworthComputer_v2 computer;
    ButterworthComputer_v2 twin;
    computer.setParameters(0.3, 1, true, true);
    twin.setParameters(0.3, 1);
    for (int round = 0; round < 3; ++round)
        for (int n = 1; n <= 2000; ++n) {
            const double cutOff = 0.0005 * (n * 7 % 2001);
            computer.setCutOff(cutOff, false, true);
            twin.setCutOff(cutOff, false, false);
            const double u = n % 5 - 2.0;
            ASSERT_TRUE(agree(stepped(computer, u), stepped(twin, u), same)) << round << ", " << cutOff;
        }
}

TEST(ButterworthComputer_v2Test, ACachedEntryIsUsedAndNotComputedAnew) {
    // The key leaves the order out, so an entry of order 2, which has one section too, shows under order 1.
    ButterworthComputer_v2 computer;
    computer.setParameters(0.3, 2, true, true);
    stepped(computer, 1.0);
    computer.setParameters(0.3, 1, true, true);
    ButterworthComputer_v2 ofOrder2;
    ofOrder2.setParameters(0.3, 2);
    for (const double u : {1.0, 4.0, -2.0})
        EXPECT_TRUE(agree(stepped(computer, u), stepped(ofOrder2, u), same)) << u;
}

TEST(ButterworthComputer_v2Test, TheSameCutOffLeavesTheCacheOn) {
    ButterworthComputer_v2 computer;
    computer.setParameters(0.3, 1, true, true);
    stepped(computer, 1.0);
    computer.setCutOff(0.4, false, true);
    computer.setCutOff(0.3, false, true);
    computer.setCutOff(0.3, true, false); // had it switched the cache off, the start below would empty it
    computer.requestInit();
    stepped(computer, 1.0);
    const AllocationCounter counter;
    computer.setCutOff(0.4, false, true);
    EXPECT_EQ(counter.count(), 0u);
}

TEST(ButterworthComputer_v2Test, AStartWithoutTheCacheEmptiesIt) {
    ButterworthComputer_v2 computer;
    computer.setParameters(0.3, 1, true, true);
    stepped(computer, 1.0);
    computer.setCutOff(0.4, false, true);
    computer.setCutOff(0.5, true, false);
    stepped(computer, 1.0);
    const AllocationCounter counter;
    computer.setCutOff(0.4, false, true);
    EXPECT_GT(counter.count(), 0u) << "the entry has to be made again";
}

TEST(ButterworthComputer_v2Test, ANotANumberCutOffIsNeverAKey) {
    ButterworthComputer_v2 computer;
    computer.setParameters(0.3, 1, true, true);
    stepped(computer, 1.0);
    computer.setCutOff(0.4, false, true);
    const AllocationCounter counter;
    computer.setCutOff(kNaN, false, true);
    computer.setCutOff(kNaN, false, true);
    EXPECT_EQ(counter.count(), 0u);
    EXPECT_TRUE(std::isnan(stepped(computer, 1.0)));
    computer.setCutOff(0.4, true, true);
    PlainElement plain{2.0, 2.0};
    EXPECT_TRUE(agree(stepped(computer, 2.0), plain.step(0.4, 2.0), same));
}

TEST(ButterworthComputer_v2Test, ZeroCutOffHoldsTheOutput) {
    ButterworthComputer_v2 computer;
    computer.setParameters(0.0, 1);
    for (const double input : {3.0, -8.0, 1e9})
        EXPECT_TRUE(agree(stepped(computer, input), 3.0, same));
}

TEST(ButterworthComputer_v2Test, AHigherOrderIsNoCascade) {
    for (const bool highPass : {false, true}) {
        ButterworthComputer_v2 computer;
        computer.setParameters(0.3, 5);
        computer.setHighPass(highPass);
        MatrixXd c;
        const int last = designButterworthSections(c, 0.3, 5) - 1;
        double x1 = 1.0;
        double y1 = 1.0;
        for (const double u : {1.0, 4.0, -2.0, 0.5}) {
            y1 = c(kA1, last) * y1 + c(kGain, last) * (x1 + u);
            x1 = u;
            const double wanted = highPass ? u - y1 : y1;
            const MatrixXd out = stepped(computer, matrix({{u, u, u}}));
            EXPECT_TRUE(agree(out, matrix({{wanted, wanted, wanted}}), same)) << highPass;
        }
    }
}

TEST(ButterworthComputer_v2Test, AnotherShapeStartsAnewWhateverWasSaid) {
    ButterworthComputer_v2 computer;
    computer.setParameters(0.2, 1, false, false);
    for (const MatrixXd& input :
         {matrix({{1, 2, 3}}), matrix({{4, 5}, {6, 7}}), matrix({{8}, {9}, {10}, {11}}), MatrixXd(0, 2),
          matrix({{1, 2, 3, 4, 5}})}) {
        ButterworthComputer_v2 fresh;
        fresh.setParameters(0.2, 1);
        EXPECT_TRUE(agree(stepped(computer, input), stepped(fresh, input), same));
    }
}

TEST(ButterworthComputer_v2Test, StatesThatDoNotFitAreNeverSteppedOn) {
    struct Row {
        const char* name;
        void (*prepare)(ButterworthComputer_v2&);
        MatrixXd input;
        int order;
    };
    const Row rows[] = {
        {.name = "from a bypass that was there from the start",
         .prepare =
             [](ButterworthComputer_v2& computer) {
                 computer.setParameters(0.2, 0, false, false);
                 computer.step(matrix({{1, 2}}));
                 computer.setParameters(0.2, 1, false, false);
             },
         .input = matrix({{3, 4}}),
         .order = 1},
        {.name = "another shape slept through in a bypass",
         .prepare =
             [](ButterworthComputer_v2& computer) {
                 computer.setParameters(0.2, 1);
                 computer.step(matrix({{1, 2}}));
                 computer.setParameters(0.2, 0, false, false);
                 computer.step(matrix({{1, 2, 3, 4, 5}}));
                 computer.setParameters(0.2, 1, false, false);
             },
         .input = matrix({{3, 4, 5, 6, 7}}),
         .order = 1},
        {.name = "more rows, slept through",
         .prepare =
             [](ButterworthComputer_v2& computer) {
                 computer.setParameters(0.2, 1);
                 computer.step(matrix({{1, 2}}));
                 computer.setParameters(0.2, 0, false, false);
                 computer.step(matrix({{1, 2}, {3, 4}, {5, 6}}));
                 computer.setParameters(0.2, 1, false, false);
             },
         .input = matrix({{3, 4}, {5, 6}, {7, 8}}),
         .order = 1},
        {.name = "as many elements in another shape, slept through",
         .prepare =
             [](ButterworthComputer_v2& computer) {
                 computer.setParameters(0.2, 1);
                 computer.step(matrix({{1, 2}}));
                 computer.setParameters(0.2, 0, false, false);
                 computer.step(matrix({{1}, {2}}));
                 computer.setParameters(0.2, 1, false, false);
             },
         .input = matrix({{3}, {4}}),
         .order = 1},
        {.name = "as many rows as before, after a sample with more in a bypass",
         .prepare =
             [](ButterworthComputer_v2& computer) {
                 computer.setParameters(0.2, 1);
                 computer.step(matrix({{1, 2}}));
                 computer.setParameters(0.2, 0, false, false);
                 computer.step(matrix({{1, 2}, {3, 4}}));
                 computer.setParameters(0.2, 1, false, false);
             },
         .input = matrix({{3, 4}}),
         .order = 1},
        {.name = "as many columns as before, after a sample with more in a bypass",
         .prepare =
             [](ButterworthComputer_v2& computer) {
                 computer.setParameters(0.2, 1);
                 computer.step(matrix({{1, 2}}));
                 computer.setParameters(0.2, 0, false, false);
                 computer.step(matrix({{1, 2, 3}}));
                 computer.setParameters(0.2, 1, false, false);
             },
         .input = matrix({{3, 4}}),
         .order = 1},
        {.name = "a cut-off designed in a bypass",
         .prepare =
             [](ButterworthComputer_v2& computer) {
                 computer.setParameters(0.5, 1, true, true);
                 computer.step(matrix({{1, 2}}));
                 computer.setParameters(0.5, 0, false, true);
                 computer.setCutOff(0.2, false, true);
                 computer.setParameters(0.2, 1, false, true);
             },
         .input = matrix({{3, 4}}),
         .order = 1},
        {.name = "an entry cached under another order",
         .prepare =
             [](ButterworthComputer_v2& computer) {
                 computer.setParameters(0.2, 5, true, true);
                 computer.step(matrix({{1, 2}}));
                 computer.setParameters(0.2, 1, true, true);
             },
         .input = matrix({{3, 4}}),
         .order = 1},
        {.name = "more sections without a start",
         .prepare =
             [](ButterworthComputer_v2& computer) {
                 computer.setParameters(0.5, 1);
                 computer.step(matrix({{1, 2}}));
                 computer.setParameters(0.5, 6, false, false);
                 computer.setCutOff(0.2, false, false);
             },
         .input = matrix({{3, 4}}),
         .order = 6},
    };
    for (const Row& row : rows) {
        ButterworthComputer_v2 computer;
        row.prepare(computer);
        ButterworthComputer_v2 fresh;
        fresh.setParameters(0.2, row.order);
        EXPECT_TRUE(agree(stepped(computer, row.input), stepped(fresh, row.input), same)) << row.name;
        const MatrixXd next = row.input * 2.0;
        EXPECT_TRUE(agree(stepped(computer, next), stepped(fresh, next), same)) << row.name;
    }
}

TEST(ButterworthComputer_v2Test, AnOrderThatFitsRunsOnItsOldCoefficients) {
    ButterworthComputer_v2 computer;
    computer.setParameters(0.2, 1);
    PlainElement plain{1.0, 1.0};
    EXPECT_TRUE(agree(stepped(computer, 1.0), plain.step(0.2, 1.0), same));
    // Through a bypass and back with no start: the states slept and go on.
    computer.setParameters(0.2, 0, false, false);
    EXPECT_TRUE(agree(stepped(computer, 50.0), 50.0, same));
    computer.setParameters(0.2, 1, false, false);
    EXPECT_TRUE(agree(stepped(computer, 4.0), plain.step(0.2, 4.0), same));
    // The order grows with no start: still one section at the old cut-off.
    computer.setParameters(0.9, 7, false, false);
    EXPECT_EQ(computer.getOrder(), 7);
    EXPECT_TRUE(agree(stepped(computer, -3.0), plain.step(0.2, -3.0), same));
}

TEST(ButterworthComputer_v2Test, MayFilterItsOwnOutput) {
    ButterworthComputer_v2 computer;
    ButterworthComputer_v2 twin;
    stepped(computer, matrix({{1, 2, 3}}));
    stepped(twin, matrix({{1, 2, 3}}));
    computer.step(matrix({{4, 5, 6}}));
    const MatrixXd copy = stepped(twin, matrix({{4, 5, 6}}));
    computer.step(computer.output());
    EXPECT_TRUE(agree(computer.output(), stepped(twin, copy), same));
}

TEST(ButterworthComputer_v2Test, ASteadyStepAllocatesNothing) {
    ButterworthComputer_v2 computer;
    computer.setParameters(0.1, 1, false, true);
    const MatrixXd input = MatrixXd::Ones(3, 5);
    const double cutOffs[] = {0.1, 0.2, 0.3};
    const auto round = [&] {
        for (const double cutOff : cutOffs) {
            computer.setCutOff(cutOff, false, true);
            computer.step(input);
        }
    };
    round();
    round();
    const AllocationCounter counter;
    for (int n = 0; n < 100; ++n)
        round();
    EXPECT_EQ(counter.count(), 0u);
}

TEST(ButterworthComputer_v2Test, LongTracesAgreeWithTheRecursionToTheBit) {
    std::mt19937_64 random(5);
    std::uniform_real_distribution<double> number(-10.0, 10.0);
    std::uniform_int_distribution<int> dice(0, 9);
    for (const auto& [rows, cols] : {std::pair{1, 1},
                                     {2, 1},
                                     {1, 3},
                                     {2, 2},
                                     {5, 1},
                                     {2, 3},
                                     {7, 1},
                                     {8, 1},
                                     {3, 3},
                                     {2, 5},
                                     {11, 1},
                                     {3, 4},
                                     {1, 13},
                                     {7, 2},
                                     {5, 3},
                                     {4, 4},
                                     {3, 13},
                                     {1, 67}}) {
        ButterworthComputer_v2 computer;
        computer.setParameters(0.2, 1);
        computer.setHighPass(cols % 2 == 0);
        std::vector<PlainElement> plain;
        MatrixXd input(rows, cols);
        MatrixXd wanted(rows, cols);
        double cutOff = 0.2;
        for (int n = 0; n < 300; ++n) {
            bool start = n == 0;
            if (dice(random) == 0) {
                cutOff = 0.1 * dice(random);
                const bool reinit = dice(random) == 0 && cutOff != computer.getCutOff();
                start = start || reinit;
                computer.setCutOff(cutOff, reinit, dice(random) < 5);
            }
            if (start) plain.clear();
            for (Eigen::Index i = 0; i < input.size(); ++i) {
                input(i) = number(random);
                if (start) plain.push_back({input(i), input(i)});
                wanted(i) = plain[static_cast<std::size_t>(i)].step(cutOff, input(i));
                if (cols % 2 == 0) wanted(i) = input(i) - wanted(i);
            }
            ASSERT_TRUE(agree(stepped(computer, input), wanted, same)) << "step " << n;
        }
    }
}
