// SPDX-License-Identifier: MIT

/// What the check for fused multiply-adds must find.
double fused(double a, double b, double c) {
    return __builtin_fma(a, b, c);
}
