// SPDX-License-Identifier: MIT
#include "tests/support/Numbers.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <stdexcept>

namespace Support {

namespace {
using Quillmere::Core::MatrixXd;

/// The doubles in their order, as integers: neighbours are one apart, and both zeros are 0.
std::int64_t place(double value) {
    const auto bits = std::bit_cast<std::int64_t>(value);
    return bits < 0 ? std::numeric_limits<std::int64_t>::min() - bits : bits;
}

std::uint64_t distance(double a, double b) {
    const std::int64_t left = place(a);
    const std::int64_t right = place(b);
    return left > right ? static_cast<std::uint64_t>(left) - static_cast<std::uint64_t>(right)
                        : static_cast<std::uint64_t>(right) - static_cast<std::uint64_t>(left);
}

std::string rounded(double value, int digits) {
    char text[64];
    std::snprintf(text, sizeof text, "%.*e", digits - 1, value);
    return text;
}

std::string describe(Tolerance tolerance) {
    switch (tolerance.kind) {
    case Tolerance::Kind::Same:
        return "same";
    case Tolerance::Kind::Ulp:
        return "withinUlp(" + digits17(tolerance.bound) + ")";
    case Tolerance::Kind::Relative:
        return "withinRel(" + digits17(tolerance.bound) + ", floor " + digits17(tolerance.floor) + ")";
    case Tolerance::Kind::Printed:
        return "printed(" + digits17(tolerance.bound) + ")";
    case Tolerance::Kind::Law:
        return "law(" + digits17(tolerance.bound) + ")";
    }
    return "?";
}

std::string shape(const MatrixXd& m) {
    return std::to_string(m.rows()) + "-by-" + std::to_string(m.cols());
}
} // namespace

Tolerance withinUlp(int n) {
    if (n < 1 || n > 4) throw std::logic_error("withinUlp takes 1 to 4");
    return {Tolerance::Kind::Ulp, static_cast<double>(n), 0.0};
}
Tolerance withinRel(double bound, double floor) {
    return {Tolerance::Kind::Relative, bound, floor};
}
Tolerance printed(int digits) {
    return {Tolerance::Kind::Printed, static_cast<double>(digits), 0.0};
}
Tolerance law(double bound) {
    return {Tolerance::Kind::Law, bound, 0.0};
}

bool agrees(double got, double wanted, Tolerance tolerance) {
    if (std::isnan(got) || std::isnan(wanted)) return std::isnan(got) && std::isnan(wanted);
    if (tolerance.kind == Tolerance::Kind::Same)
        return std::bit_cast<std::uint64_t>(got) == std::bit_cast<std::uint64_t>(wanted);
    if (std::isinf(got) || std::isinf(wanted)) return got == wanted;
    switch (tolerance.kind) {
    case Tolerance::Kind::Same:
        break;
    case Tolerance::Kind::Ulp:
        return distance(got, wanted) <= static_cast<std::uint64_t>(tolerance.bound);
    case Tolerance::Kind::Relative:
        return std::fabs(got - wanted) <= tolerance.bound * std::max(std::fabs(wanted), tolerance.floor);
    case Tolerance::Kind::Printed: {
        const int digits = static_cast<int>(tolerance.bound);
        return rounded(got, digits) == rounded(wanted, digits);
    }
    case Tolerance::Kind::Law:
        return std::fabs(got - wanted) <= tolerance.bound;
    }
    return false;
}

testing::AssertionResult agree(double got, double wanted, Tolerance tolerance) {
    if (agrees(got, wanted, tolerance)) return testing::AssertionSuccess();
    return testing::AssertionFailure() << "got " << digits17(got) << ", wanted " << digits17(wanted)
                                       << ", tolerance " << describe(tolerance);
}

testing::AssertionResult agree(const MatrixXd& got, const MatrixXd& wanted, Tolerance tolerance) {
    if (got.rows() != wanted.rows() || got.cols() != wanted.cols())
        return testing::AssertionFailure() << "got a " << shape(got) << " matrix, wanted " << shape(wanted);
    for (Eigen::Index r = 0; r < got.rows(); ++r)
        for (Eigen::Index c = 0; c < got.cols(); ++c) {
            const auto result = agree(got(r, c), wanted(r, c), tolerance);
            if (!result)
                return testing::AssertionFailure()
                       << "element (" << r << ", " << c << "): " << result.message();
        }
    return testing::AssertionSuccess();
}

testing::AssertionResult agree(const std::vector<MatrixXd>& got, const std::vector<MatrixXd>& wanted,
                               Tolerance tolerance) {
    for (std::size_t step = 0; step < std::min(got.size(), wanted.size()); ++step) {
        const auto result = agree(got[step], wanted[step], tolerance);
        if (!result) return testing::AssertionFailure() << "step " << step << ": " << result.message();
    }
    if (got.size() != wanted.size())
        return testing::AssertionFailure() << "got " << got.size() << " samples, wanted " << wanted.size();
    return testing::AssertionSuccess();
}

MatrixXd matrix(std::initializer_list<std::initializer_list<double>> rows) {
    const auto cols = rows.size() == 0 ? 0 : rows.begin()->size();
    MatrixXd result(static_cast<Eigen::Index>(rows.size()), static_cast<Eigen::Index>(cols));
    Eigen::Index index = 0;
    for (const auto& row : rows) {
        if (row.size() != cols) throw std::logic_error("matrix: rows of unequal length");
        for (const double value : row)
            result(index++) = value;
    }
    return result;
}

std::string digits17(double value) {
    char text[64];
    std::snprintf(text, sizeof text, "%.17g", value);
    return text;
}

} // namespace Support
