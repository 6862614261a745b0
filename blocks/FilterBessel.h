// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/BlockPrototypeBase.h"
#include "design/BesselDesigner.h"

/// Filters every element of a sample with a Bessel filter of order 1 to 10, the shape that keeps its delay
/// most even.
///
/// Low-pass, high-pass, band-pass or band-stop; the design is -3 dB at the cut-off of a low-pass. Pins,
/// settings, what is remembered and what is sent when: `BlockPoleZeroBase`. The design: `PoleZeroDesigner`,
/// `BesselDesigner`.
///
/// Kept as is: the filter looks back one sample only, whatever the order, so from order 2 on its dynamics are
/// those of a first-order filter; a constant still settles where the design says (`DirectFormDesigner`).
class FilterBessel final : public BlockPrototypeBase {
public:
    static constexpr const char* kTypeName = "FilterBessel";

    explicit FilterBessel(const std::string& instanceName);
    ~FilterBessel() override;

    const char* getTypeName() const override { return kTypeName; }

private:
    BesselDesigner designer{Design::kLowPass, 1, true, 0.05, 0.1};
};
