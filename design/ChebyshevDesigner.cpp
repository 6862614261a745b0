// SPDX-License-Identifier: MIT
#include "design/ChebyshevDesigner.h"

#include <cmath>

ChebyshevDesigner::ChebyshevDesigner(std::int32_t designMode, std::int32_t prototypeOrder, bool useMatchedZ,
                                     double low, double passRipple, double high)
    : PoleZeroDesigner(designMode, prototypeOrder, useMatchedZ, low, high), ripple(passRipple) {}

void ChebyshevDesigner::setParameters(std::int32_t designMode, std::int32_t prototypeOrder, bool useMatchedZ,
                                      double low, double passRipple, double high) {
    ripple = passRipple;
    PoleZeroDesigner::setParameters(designMode, prototypeOrder, useMatchedZ, low, high);
}

void ChebyshevDesigner::computePoles() {
    numSPoles = 0;
    appendCirclePoles();

    const double rip = std::pow(10.0, ripple / -10.0);
    const double eps = std::sqrt(rip - 1.0);
    const double x = 1.0 / eps;
    const double y = std::log(std::sqrt(1.0 + x * x) + x) / order; // asinh(1 / eps), written out
    for (std::size_t i = 0; i < static_cast<std::size_t>(numSPoles); ++i)
        sPoles[i] = {sPoles[i].re * std::sinh(y), sPoles[i].im * std::cosh(y)};
}
