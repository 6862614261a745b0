// SPDX-License-Identifier: MIT
#pragma once

#include "framework/transport/MatrixXd.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

/// How numbers are compared in tests. Every comparison names its tolerance; `same` is the one to reach for.
namespace Support {

inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
inline constexpr double kInf = std::numeric_limits<double>::infinity();

struct Tolerance {
    enum class Kind { Same, Ulp, Relative, Printed, Law };
    Kind kind;
    double bound;
    double floor;
};

/// The same bits, any NaN being equal to any NaN. The only one for shapes, time stamps, comparisons and
/// arithmetic whose order is fixed.
inline constexpr Tolerance same{Tolerance::Kind::Same, 0.0, 0.0};

/// At most `n` (1 to 4) representable numbers apart: for one library function between the two.
Tolerance withinUlp(int n);

/// |got - wanted| at most `bound` times the larger of |wanted| and `floor`: for recursions, designs and
/// transforms.
Tolerance withinRel(double bound, double floor = 1.0);

/// Equal when rounded to `digits` significant digits: for figures from a paper or another tool.
Tolerance printed(int digits);

/// |got - wanted| at most `bound`: for physics, the bound derived in a comment beside the call.
Tolerance law(double bound);

/// Whether two numbers agree. Non-finite numbers agree only with their like, under every tolerance.
bool agrees(double got, double wanted, Tolerance tolerance);

/// `agrees` as an assertion: `EXPECT_TRUE(agree(got, wanted, same)) << row.name;`. A failure prints 17
/// digits.
testing::AssertionResult agree(double got, double wanted, Tolerance tolerance);

/// The same for matrices: shape first, then every element; a failure names the first element that differs.
testing::AssertionResult agree(const Quillmere::Core::MatrixXd& got, const Quillmere::Core::MatrixXd& wanted,
                               Tolerance tolerance);

/// The same for traces: a failure names the step.
testing::AssertionResult agree(const std::vector<Quillmere::Core::MatrixXd>& got,
                               const std::vector<Quillmere::Core::MatrixXd>& wanted, Tolerance tolerance);

/// A matrix from its rows: `matrix({{1, 2}, {3, 4}})`; `matrix({})` is 0 by 0.
Quillmere::Core::MatrixXd matrix(std::initializer_list<std::initializer_list<double>> rows);

/// A number with the 17 digits that tell every double from its neighbours.
std::string digits17(double value);

} // namespace Support
