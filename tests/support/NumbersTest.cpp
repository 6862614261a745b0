// SPDX-License-Identifier: MIT
#include "tests/support/Numbers.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace Support;

namespace {

struct Row {
    const char* name;
    double got;
    double wanted;
    Tolerance tolerance;
    bool agrees;
};
} // namespace

TEST(NumbersTest, EachToleranceTellsWhatItShould) {
    const double next = std::nextafter(1.0, 2.0);
    const Row rows[] = {
        {.name = "same: equal", .got = 0.1, .wanted = 0.1, .tolerance = same, .agrees = true},
        {.name = "same: neighbours", .got = next, .wanted = 1.0, .tolerance = same, .agrees = false},
        {.name = "same: zeros of both signs", .got = -0.0, .wanted = 0.0, .tolerance = same, .agrees = false},
        {.name = "same: NaN of either sign", .got = -kNaN, .wanted = kNaN, .tolerance = same, .agrees = true},
        {.name = "same: NaN and a number", .got = kNaN, .wanted = 1.0, .tolerance = same, .agrees = false},
        {.name = "ulp: neighbours", .got = next, .wanted = 1.0, .tolerance = withinUlp(1), .agrees = true},
        {.name = "ulp: two apart",
         .got = std::nextafter(next, 2.0),
         .wanted = 1.0,
         .tolerance = withinUlp(1),
         .agrees = false},
        {.name = "ulp: across zero", .got = -0.0, .wanted = 0.0, .tolerance = withinUlp(1), .agrees = true},
        {.name = "relative: inside",
         .got = 1e6 + 1e-7,
         .wanted = 1e6,
         .tolerance = withinRel(1e-12),
         .agrees = true},
        {.name = "relative: outside",
         .got = 1e6 + 1e-5,
         .wanted = 1e6,
         .tolerance = withinRel(1e-12),
         .agrees = false},
        {.name = "relative: the floor holds near zero",
         .got = 1e-13,
         .wanted = 0.0,
         .tolerance = withinRel(1e-12),
         .agrees = true},
        {.name = "relative: infinities",
         .got = kInf,
         .wanted = -kInf,
         .tolerance = withinRel(1.0),
         .agrees = false},
        {.name = "relative: infinity and a number",
         .got = kInf,
         .wanted = 1.0,
         .tolerance = withinRel(1.0),
         .agrees = false},
        {.name = "printed: rounds alike",
         .got = 0.12341,
         .wanted = 0.12344,
         .tolerance = printed(4),
         .agrees = true},
        {.name = "printed: rounds apart",
         .got = 0.12351,
         .wanted = 0.12344,
         .tolerance = printed(4),
         .agrees = false},
        {.name = "law: inside", .got = 1.5, .wanted = 1.0, .tolerance = law(0.5), .agrees = true},
        {.name = "law: outside", .got = 1.6, .wanted = 1.0, .tolerance = law(0.5), .agrees = false},
    };
    for (const Row& row : rows)
        EXPECT_EQ(agrees(row.got, row.wanted, row.tolerance), row.agrees) << row.name;
}

TEST(NumbersTest, AFailureNamesElementAndBothNumbers) {
    const auto result = agree(matrix({{1, 2}, {3, 4}}), matrix({{1, 2}, {3, 5}}), same);
    EXPECT_FALSE(result);
    EXPECT_STREQ(result.message(), "element (1, 1): got 4, wanted 5, tolerance same");
}

TEST(NumbersTest, ShapesMustAgreeEvenWhenEmpty) {
    EXPECT_FALSE(agree(Quillmere::Core::MatrixXd(0, 3), Quillmere::Core::MatrixXd(3, 0), same));
    EXPECT_TRUE(agree(Quillmere::Core::MatrixXd(0, 3), Quillmere::Core::MatrixXd(0, 3), same));
}

TEST(NumbersTest, TracesOfUnequalLengthOrValueDiffer) {
    using Trace = std::vector<Quillmere::Core::MatrixXd>;
    const Trace wanted{matrix({{1}}), matrix({{2}})};
    EXPECT_FALSE(agree(Trace{matrix({{1}})}, wanted, same));
    EXPECT_TRUE(agree(wanted, wanted, same));
    const auto result = agree(Trace{matrix({{1}}), matrix({{3}})}, wanted, same);
    EXPECT_FALSE(result);
    EXPECT_STREQ(result.message(), "step 1: element (0, 0): got 3, wanted 2, tolerance same");
}
