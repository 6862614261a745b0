// SPDX-License-Identifier: MIT
#pragma once

#include <vector>

/// The discrete Fourier transform by its definition, in extended precision: what `FFTPack` is held against.
namespace Support {

/// X[k] = sum over j of x[j] * exp(-2*pi*i*j*k/n), in the half-complex order of `FFTPack`, by direct
/// summation. Every angle is 2*pi*(j*k mod n)/n with the product taken modulo n in integers, so no angle
/// drifts; time n squared.
std::vector<long double> directTransform(const std::vector<double>& x);

/// The same for n = rows * columns in two direct summations, one over the rows and one over the columns, with
/// the exact angle between them (j = columns * r + c, k = l + rows * m): time n * (rows + columns), for
/// lengths whose square is out of reach.
std::vector<long double> directTransform(const std::vector<double>& x, std::size_t rows, std::size_t columns);

} // namespace Support
