// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/BlockPoleZeroBase.h"
#include "design/ChebyshevDesigner.h"

/// Filters every element of a sample with a Chebyshev filter of type I and order 1 to 10 in four band shapes,
/// for a pass band that ripples by "Ripple" decibels (below 0). Pins, settings, state and what is sent when:
/// `BlockPoleZeroBase`. The design: `PoleZeroDesigner`, `ChebyshevDesigner`. Kept as is: it looks back one
/// sample only, whatever the order (`DirectFormDesigner`).
class FilterChebyshev final : public BlockPoleZeroBase {
public:
    static constexpr const char* kTypeName = "FilterChebyshev";

    explicit FilterChebyshev(const std::string& instanceName);
    ~FilterChebyshev() override;

    const char* getTypeName() const override { return kTypeName; }

private:
    RangeProperty<double> ripple;
    ValueProperty<bool> matchedZ;
    CommandProperty resetCommand;

    void passParameters(std::int32_t designCode) override;
    void onRipple();

    ChebyshevDesigner designer{Design::kLowPass, 1, true, 0.05, -0.5, 0.1};
};
