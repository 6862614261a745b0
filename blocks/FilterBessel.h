// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/BlockPrototypeBase.h"
#include "design/BesselDesigner.h"

/// Filters every element of a sample with a Bessel filter of order 1 to 10 in four band shapes. Pins,
/// settings, state and what is sent when: `BlockPoleZeroBase`. The design: `PoleZeroDesigner`,
/// `BesselDesigner`. Kept as is: it looks back one sample only, whatever the order (`DirectFormDesigner`).
class FilterBessel final : public BlockPrototypeBase {
public:
    static constexpr const char* kTypeName = "FilterBessel";

    explicit FilterBessel(const std::string& instanceName);
    ~FilterBessel() override;

    const char* getTypeName() const override { return kTypeName; }

private:
    BesselDesigner designer{Design::kLowPass, 1, true, 0.05, 0.1};
};
