// SPDX-License-Identifier: MIT
#pragma once

/// Elliptic integrals and functions, after the routines of the same names in Moshier's Cephes Mathematical
/// Library (S. L. Moshier, "Methods and Programs for Mathematical Functions", 1989), without their error
/// reports. The parameter m is the square of the modulus k.
namespace Design {

/// Half an ulp of 1: where a series or a mean has nothing more to give.
inline constexpr double kMachineEpsilon = 1.1102230246251565e-16;

/// The complete integral of the first kind K, of the complementary parameter: `ellpk(x)` is K(1 - x). At 0
/// the largest double, below 0 not-a-number.
double ellpk(double x);

/// The incomplete integral of the first kind F(phi | m), by descending Landen transformations.
double ellik(double phi, double m);

/// The Jacobian elliptic functions of one argument.
struct JacobiElliptic {
    double sn;
    double cn;
    double dn;
    double phi; ///< the amplitude
    int code;   ///< -1 for a parameter outside 0 to 1, when the four values are 0.0; else 0
};

/// sn, cn, dn and the amplitude of `u` at parameter `m`. Kept as is: from m = 0.9999999999 on, one term of
/// the series has the inverse hyperbolic sine of u where the published series has the hyperbolic sine.
JacobiElliptic ellpj(double u, double m);

/// The modulus k from the nome q, by theta series. 1 for a nome so near 1 that the series would not end.
double cay(double q);

/// The arcsine; arguments beyond -1 and 1, where rounding can lead, count as those.
double guardedArcsine(double x);

} // namespace Design
