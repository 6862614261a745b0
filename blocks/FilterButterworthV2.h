// SPDX-License-Identifier: MIT
#pragma once

#include "blocks/BlockPrototypeBase.h"
#include "design/ButterworthDesigner.h"

/// Filters every element of a sample with a Butterworth filter of order 1 to 10, the shape with the flattest
/// pass band.
///
/// Low-pass, high-pass, band-pass or band-stop. Pins, settings, what is remembered and what is sent when:
/// `BlockPoleZeroBase`. The design: `PoleZeroDesigner`, `ButterworthDesigner`. Of the three Butterworth
/// blocks this is the one with band shapes, a true high-pass and published coefficients; the cascade of
/// sections that obeys its order is `FilterButterworth`.
///
/// Kept as is: the filter looks back one sample only, whatever the order, so from order 2 on its dynamics are
/// those of a first-order filter; a constant still settles where the design says (`DirectFormDesigner`).
class FilterButterworthV2 final : public BlockPrototypeBase {
public:
    static constexpr const char* kTypeName = "FilterButterworthV2";

    explicit FilterButterworthV2(const std::string& instanceName);
    ~FilterButterworthV2() override;

    const char* getTypeName() const override { return kTypeName; }

private:
    ButterworthDesigner designer{Design::kLowPass, 1, true, 0.05, 0.1};
};
