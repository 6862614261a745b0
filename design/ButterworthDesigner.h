// SPDX-License-Identifier: MIT
#pragma once

#include "design/PoleZeroDesigner.h"

/// The Butterworth family: the flattest pass band. Its prototypes' poles stand on the left half of the unit
/// circle.
class ButterworthDesigner : public PoleZeroDesigner {
public:
    using PoleZeroDesigner::PoleZeroDesigner;

protected:
    void computePoles() override;
};
