// SPDX-License-Identifier: MIT
#pragma once

#include "design/PoleZeroDesigner.h"

/// The Chebyshev family of type I: the pass band ripples by `ripple` decibels (below 0), the edge is steeper
/// for it. Its prototypes' poles stand on an ellipse: the unit circle's, real parts times sinh(y), imaginary
/// parts times cosh(y), with y = asinh(1 / sqrt(10^(-ripple / 10) - 1)) / order. A ripple of 0 or above has
/// no solution and isn't checked.
class ChebyshevDesigner : public PoleZeroDesigner {
public:
    ChebyshevDesigner(std::int32_t designMode, std::int32_t prototypeOrder, bool useMatchedZ, double low,
                      double passRipple, double high);

    /// Takes effect at the next `step`.
    void setParameters(std::int32_t designMode, std::int32_t prototypeOrder, bool useMatchedZ, double low,
                       double passRipple, double high);

protected:
    void computePoles() override;

    double ripple; ///< decibels, negative
};
