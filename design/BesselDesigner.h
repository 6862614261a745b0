// SPDX-License-Identifier: MIT
#pragma once

#include "design/PoleZeroDesigner.h"

/// The Bessel family: the flattest group delay. Its prototypes are the left-half-plane roots of the reverse
/// Bessel polynomials, scaled for -3 dB at angular frequency 1. Requires: orders 1 to 10.
class BesselDesigner : public PoleZeroDesigner {
public:
    using PoleZeroDesigner::PoleZeroDesigner;

protected:
    void computePoles() override;
};
