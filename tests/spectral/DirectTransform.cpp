// SPDX-License-Identifier: MIT
#include "tests/spectral/DirectTransform.h"

#include <cmath>
#include <cstddef>
#include <limits>
#include <numbers>

namespace Support {

namespace {
// The reference must not share the rounding of what it judges.
static_assert(std::numeric_limits<long double>::digits >= 64);

struct Wide {
    long double re = 0.0L;
    long double im = 0.0L;
};

/// exp(-2*pi*i*m/n) for m = 0 .. n-1.
std::vector<Wide> rootsOfUnity(std::size_t n) {
    std::vector<Wide> roots(n);
    for (std::size_t m = 0; m < n; ++m) {
        const long double angle = 2.0L * std::numbers::pi_v<long double> * static_cast<long double>(m) /
                                  static_cast<long double>(n);
        roots[m] = {std::cos(angle), -std::sin(angle)};
    }
    return roots;
}

std::vector<long double> halfComplex(const std::vector<Wide>& bins, std::size_t n) {
    std::vector<long double> result{bins[0].re};
    for (std::size_t k = 1; 2 * k <= n; ++k) {
        result.push_back(bins[k].re);
        if (2 * k < n) result.push_back(bins[k].im);
    }
    return result;
}
} // namespace

std::vector<long double> directTransform(const std::vector<double>& x) {
    const std::size_t n = x.size();
    const std::vector<Wide> roots = rootsOfUnity(n);
    std::vector<Wide> bins(n / 2 + 1);
    for (std::size_t k = 0; k < bins.size(); ++k) {
        Wide sum;
        for (std::size_t j = 0, m = 0; j < n; ++j) {
            sum.re += x[j] * roots[m].re;
            sum.im += x[j] * roots[m].im;
            m += k;
            if (m >= n) m -= n;
        }
        bins[k] = sum;
    }
    return halfComplex(bins, n);
}

std::vector<long double> directTransform(const std::vector<double>& x, std::size_t rows,
                                         std::size_t columns) {
    const std::size_t n = rows * columns;
    const std::vector<Wide> roots = rootsOfUnity(n);
    // inner[l][c] = sum over r of x[columns * r + c] * root^(columns * r * l), turned by root^(c * l).
    std::vector<Wide> inner(n);
    for (std::size_t l = 0; l < rows; ++l)
        for (std::size_t c = 0; c < columns; ++c) {
            Wide sum;
            for (std::size_t r = 0; r < rows; ++r) {
                const Wide& root = roots[columns * (r * l % rows)];
                sum.re += x[columns * r + c] * root.re;
                sum.im += x[columns * r + c] * root.im;
            }
            const Wide& root = roots[c * l];
            inner[l * columns + c] = {sum.re * root.re - sum.im * root.im,
                                      sum.re * root.im + sum.im * root.re};
        }
    std::vector<Wide> bins(n / 2 + 1);
    for (std::size_t k = 0; k < bins.size(); ++k) {
        const Wide* row = &inner[k % rows * columns];
        Wide sum;
        for (std::size_t c = 0; c < columns; ++c) {
            const Wide& root = roots[rows * (c * (k / rows) % columns)];
            sum.re += row[c].re * root.re - row[c].im * root.im;
            sum.im += row[c].re * root.im + row[c].im * root.re;
        }
        bins[k] = sum;
    }
    return halfComplex(bins, n);
}

} // namespace Support
